#!/bin/sh
# SPDX-License-Identifier: MIT
# Prints the couplings of ethylene as a table beside the measured ones. To be run in a folder that has the program,
# parameters/ and docs/, as in the root of a clone with a built program.
set -eu
work=$(mktemp -d ethylene_XXXXXX)
trap 'rm -rf "$work"' EXIT
cp docs/walk/ethylene/nmrparam.in "$work"
build/release/velkoran parameters/published "$work" 1
sed '1,/^COUPLING/d' "$work/nmrparam.out" | awk '
    { for (column = 1; column <= NF; ++column) coupling[NR, column] = $column }
    function Row(name, a, b, measured) { printf "| %s | %.1f | %s |\n", name, coupling[a, b], measured }
    END {
        print "| Coupling | Computed | Measured |"
        print "|---|---:|---:|"
        Row("1J(CC)", 1, 2, "67.6")
        Row("1J(CH)", 1, 3, "156.2")
        Row("2J(CH)", 1, 5, "-2.4")
        Row("2J(HH)", 3, 4, "2.5")
        Row("3J(HH) cis", 3, 5, "11.6")
        Row("3J(HH) trans", 3, 6, "19.0")
    }'
