#!/bin/sh
# SPDX-License-Identifier: MIT
# Builds the program and writes docs/validation.md from its runs; fails if a published result isn't met.
# Usage: sh scripts/make_validation.sh [--check], which compares with the page instead.
set -eu
cd "$(dirname "$0")/.."
sh scripts/install_packages.sh g++ cmake ninja-build python3
sh scripts/build_program.sh release
python3 validation/make_validation.py --program build/release/velkoran "$@"
