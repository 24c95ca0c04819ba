#!/bin/sh
# SPDX-License-Identifier: MIT
# Prints the shieldings of ethylene at several distances from the origin as a table. To be run in a folder that has the
# program, parameters/ and docs/, as in the root of a clone with a built program.
set -eu
work=$(mktemp -d ethylene_XXXXXX)
trap 'rm -rf "$work"' EXIT
echo "| Moved along x by, Angstrom | C1 | C2 | H1 | H3 |"
echo "|---:|---:|---:|---:|---:|"
for distance in 0 1 3 10 30 100; do
    awk -v distance="$distance" '$1 == "atom" { $8 = sprintf("%.6f", $8 + distance) } { print }' \
        docs/walk/ethylene/nmrparam.in >"$work/nmrparam.in"
    build/release/velkoran parameters/published "$work" 1
    awk -v distance="$distance" 'wanted { printf "| %s | %s | %s | %s | %s |\n", distance, $1, $2, $3, $5; exit }
        /^SHIELDING/ { wanted = 1 }' "$work/nmrparam.out"
done
