#!/bin/sh
# SPDX-License-Identifier: MIT
# Cross-compiles the Windows program and runs its tests under Wine, with the Linux build beside it. Where Wine can't be
# installed the program is built all the same, and the tests are reported as skipped.
set -eu
cd "$(dirname "$0")/.."
sh scripts/install_packages.sh g++ g++-mingw-w64-x86-64 cmake ninja-build python3
cmake --preset windows >/dev/null
cmake --build --preset windows
sh scripts/build_program.sh release
if ! sh scripts/install_packages.sh wine64 wine xvfb imagemagick; then
    echo "Wine can't be installed here. Skipped, not passed:"
    sed -n 's/^    def \(test_[a-z0-9_]*\).*/  \1/p' tests/windows/run_windows_tests.py
    exit 0
fi
mkdir -p build/windows-tests
python3 tests/windows/run_windows_tests.py build/windows build/release/velkoran build/windows-tests
