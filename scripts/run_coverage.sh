#!/bin/sh
# SPDX-License-Identifier: MIT
# Builds the program and its tests with coverage, runs the whole test suite, and writes docs/coverage.md: lines and
# branches of the program that no test runs, each group with its reason from tests/coverage/explanations.txt. Fails if
# a test fails, if lines or branches are covered by less than 95 %, or if a group has no reason.
set -eu
cd "$(dirname "$0")/.."
sh scripts/install_packages.sh g++ cmake ninja-build gcovr libgtest-dev python3 python3-mpmath python3-numpy \
    python3-scipy python3-rdkit librdkit-dev libboost-dev python3-yaml mandoc gnuplot-nox clang-format black
build=build/coverage
mkdir -p "$build"
g++ -std=c++20 -O1 -fPIC -fvisibility=hidden -c tests/coverage/coverage_end.cpp -o "$build/coverage_end.o"
end="$PWD/$build/coverage_end.o -Wl,--wrap=malloc,--wrap=_exit,--wrap=_Exit"
cmake -S . -B "$build" -G Ninja -DBUILD_TESTING=ON -DCMAKE_CXX_COMPILER=g++ -DCMAKE_BUILD_TYPE=None \
    -DCMAKE_CXX_FLAGS="-O0 -g --coverage" -DCMAKE_EXE_LINKER_FLAGS="$end" -DCMAKE_SHARED_LINKER_FLAGS="$end" >/dev/null
cmake --build "$build"
find "$build" -name '*.gcda' -delete
ctest --test-dir "$build" -j "$(nproc)" --output-on-failure

# Code of other platforms isn't compiled here, and the generated tables hold no code.
gcovr --root . "$build" --filter core/ --exclude-throw-branches \
    --exclude-unreachable-branches --json "$build/coverage.json"
python3 tests/coverage/coverage_report.py "$build/coverage.json" tests/coverage/explanations.txt docs/coverage.md
