#!/bin/sh
# SPDX-License-Identifier: MIT
# A context is saved only where the C standard allows setjmp: as the whole condition of an if, alone, behind "!" or
# compared with 0. Anywhere else a compiler may do what it likes. Fails, with the lines, where one stands elsewhere.
set -eu
cd "$(dirname "$0")/../.."
saves() {
    grep -rnE --include='*.cpp' --include='*.h' '\b(SAVE_CONTEXT|_?setjmp) *\(' core tests
}
definition='#define SAVE_CONTEXT\(frame\) _?setjmp\(\(frame\)\.Context(, nullptr)?\)$'
condition='^[^:]*:[0-9]*: *if \(!?(SAVE_CONTEXT|setjmp)\([A-Za-z]*\)( == 0)?\) \{'
if [ "$(saves | grep -cE "$condition")" -lt 4 ]; then
    echo "place_of_setjmp: the contexts of the program aren't found" >&2
    exit 1
fi
if saves | grep -vE "$definition|$condition"; then
    echo "place_of_setjmp: these don't stand as the whole condition of an if" >&2
    exit 1
fi
