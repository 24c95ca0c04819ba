#!/bin/sh
# SPDX-License-Identifier: MIT
# Measures what the hardening of the release build costs. The other program is built without it, with the same
# optimisation.
set -eu
cd "$(dirname "$0")/.."
sh scripts/install_packages.sh g++ cmake ninja-build python3 valgrind
build=build/plain
cmake --preset release >/dev/null
cmake --build --preset release --target velkoran
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS="-O3 -DNDEBUG" -DBUILD_TESTING=OFF >/dev/null
cmake --build "$build" --target velkoran
python3 benchmarks/hardening_cost.py build/release/velkoran "$build/velkoran"
