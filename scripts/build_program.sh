#!/bin/sh
# SPDX-License-Identifier: MIT
# Builds the program of a preset without the tests, which need GoogleTest.
# Usage: sh scripts/build_program.sh PRESET, in the root of the project.
set -eu
cmake --preset "$1" -DBUILD_TESTING=OFF >/dev/null
cmake --build --preset "$1" --target velkoran
