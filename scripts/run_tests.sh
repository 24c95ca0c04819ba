#!/bin/sh
# SPDX-License-Identifier: MIT
# Builds the program three ways (optimised, unoptimised, with sanitizers), runs all tests on the first and the last,
# and compares the results of the examples and of all whole runs byte for byte between all three.
set -eu
cd "$(dirname "$0")/.."
sh scripts/install_packages.sh g++ cmake ninja-build libgtest-dev python3 python3-mpmath python3-numpy python3-scipy \
    python3-rdkit librdkit-dev libboost-dev python3-yaml mandoc gnuplot-nox clang-format black
for preset in debug release sanitize; do
    cmake --preset "$preset" -DBUILD_TESTING=ON >/dev/null
    cmake --build --preset "$preset"
done
sh scripts/compare_builds.sh build/release/velkoran build/debug/velkoran build/sanitize/velkoran
ctest --preset sanitize
ctest --preset release
