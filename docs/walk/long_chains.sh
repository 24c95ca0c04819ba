#!/bin/sh
# SPDX-License-Identifier: MIT
# Prints the couplings at the ends of stretched alkanes as a table: from 52.9 Angstrom on they are wrong, on purpose. To
# be run in a folder that has the program and parameters/, as in the root of a clone with a built program.
set -eu
work=$(mktemp -d chain_XXXXXX)
trap 'rm -rf "$work"' EXIT
echo "| Chain | Length, Angstrom | Last \`Difference\` | 1J(CH) of C1, Hz | Largest J between both ends, Hz |"
echo "|---|---:|---:|---:|---:|"
for carbons in 40 42 43 44; do
    # Tetrahedral angles, C-C 1.54 and C-H 1.09 Angstrom, the middle in the origin; the atoms of a group stand together.
    awk -v carbons="$carbons" '
        function Atom(element, x, y, z) {
            text = text sprintf("atom %d X %s %s - 0 %.6f %.6f %.6f 0\n", ++count, element, element, x, y, z)
        }
        BEGIN {
            along = sqrt(2 / 3); across = sqrt(1 / 3)  # of a bond, in the direction of the chain and across it
            for (i = 0; i < carbons; ++i) {
                side = i % 2 ? 1 : -1
                x = side * 1.54 * across / 2
                z = (i - (carbons - 1) / 2) * 1.54 * along
                Atom("C", x, 0, z)
                Atom("H", x + side * 1.09 * across, 1.09 * along, z)
                Atom("H", x + side * 1.09 * across, -1.09 * along, z)
                if (i == 0) Atom("H", x - side * 1.09 * across, 0, z - 1.09 * along)
                if (i == carbons - 1) Atom("H", x - side * 1.09 * across, 0, z + 1.09 * along)
            }
            print "SemiEmpiricalMethod = TNDO2\nSCFConvergenceLimit = 1e-6\nSCFIterationLimit = 200"
            print "CalculateShielding = no\nNMRSelectionBegin\n8"
            for (i = 1; i <= 4; ++i) print "mol 1 atom", i
            for (i = count - 3; i <= count; ++i) print "mol 1 atom", i
            printf "NMRSelectionEnd\nAtomsBegin\n%d\nmol 1\n%sAtomsEnd\n", count, text
        }' >"$work/nmrparam.in"
    rm -f "$work/run.log"
    build/release/velkoran parameters/published "$work" 1 "$work/run.log"
    difference=$(awk '/^Iteration/ { last = $NF } END { print last }' "$work/run.log")
    sed '1,/^COUPLING/d' "$work/nmrparam.out" | awk -v carbons="$carbons" -v difference="$difference" '
        NR == 1 { first = sprintf("%.1f, %.1f, %.1f", $2, $3, $4) }
        NR <= 4 { for (i = 5; i <= 8; ++i) if ($i ^ 2 > most ^ 2) most = $i }
        END {
            from_h_to_h = ((carbons - 1) * 1.54 + 2 * 1.09) * sqrt(2 / 3)
            printf "| n-C%dH%d | %.1f | %s ", carbons, 2 * carbons + 2, from_h_to_h, difference
            printf "| %s | %.1f |\n", first, most
        }'
done
