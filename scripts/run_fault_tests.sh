#!/bin/sh
# SPDX-License-Identifier: MIT
# Builds the program and does to it what a machine can do: kills, stops, little memory, full disks, missing rights,
# files that vanish. Prints a table of what came of it; fails if the program broke a promise.
# Usage: sh scripts/run_fault_tests.sh [COUNT [OPTION ...]], COUNT kills and stops of each kind (default: 1000); options
# as tests/faults/run_fault_tests.py tells them. As root it mounts tiny disks too, where nobody else sees them.
set -eu
cd "$(dirname "$0")/.."
count=${1:-1000}
[ $# -eq 0 ] || shift
sh scripts/install_packages.sh g++ cmake ninja-build python3 util-linux
sh scripts/build_program.sh release
exec python3 tests/faults/run_fault_tests.py --program build/release/velkoran --count "$count" "$@"
