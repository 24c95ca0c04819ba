#!/bin/sh
# SPDX-License-Identifier: MIT
# The program loads no C++ library, which would take a front end that starts it thousands of times half a millisecond
# each. Algorithms of the standard library that take memory, like std::stable_sort, would need it.
# Usage: needed_libraries_test.sh PROGRAM
set -eu
if LC_ALL=C readelf -d "$1" | grep -E 'NEEDED.*(libstdc|libgcc|libc\+\+)'; then
    exit 1
fi
LC_ALL=C readelf -d "$1" | grep -q 'NEEDED.*libc\.so'
