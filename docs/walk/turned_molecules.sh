#!/bin/sh
# SPDX-License-Identifier: MIT
# Prints shieldings of HCl and HF, turned about the y axis, as a table. To be run in a folder that has the program and
# parameters/, as in the root of a clone with a built program.
set -eu
work=$(mktemp -d turned_XXXXXX)
trap 'rm -rf "$work"' EXIT

# Run HEAVY DISTANCE DEGREES OPTIONS: an H and a HEAVY atom on a line through the origin.
Run() {
    {
        printf 'SCFConvergenceLimit = 1e-6\nSCFIterationLimit = 200\nCalculateCoupling = no\n%s\n' "$4"
        printf 'NMRSelectionBegin\n2\nmol 1 atom 1\nmol 1 atom 2\nNMRSelectionEnd\n'
        awk -v heavy="$1" -v distance="$2" -v degrees="$3" 'BEGIN {
            angle = degrees * atan2(0, -1) / 180
            x = distance / 2 * sin(angle)
            z = distance / 2 * cos(angle)
            printf "AtomsBegin\n2\nmol 1\natom 1 H H H - 0 %.6f 0 %.6f 0\n", -x, -z
            printf "atom 2 X %s %s - 0 %.6f 0 %.6f 0\nAtomsEnd\n", heavy, heavy, x, z
        }'
    } >"$work/nmrparam.in"
    build/release/velkoran parameters/published "$work" 1
}

# Shielding COLUMN: of the first or the second atom.
Shielding() {
    awk -v column="$1" 'wanted { print $column; exit } /^SHIELDING/ { wanted = 1 }' "$work/nmrparam.out"
}

echo "| Turned by | HCl: H | HCl with d orbitals: H | HF: F | HF: anisotropy of F |"
echo "|---:|---:|---:|---:|---:|"
for degrees in 0 30 60 90; do
    Run CL 1.2746 "$degrees" 'ComputeThreeCenterTerms = yes'
    plain=$(Shielding 1)
    Run CL 1.2746 "$degrees" 'ComputeThreeCenterTerms = yes
IncludeDOrbitalsForSecondRow = yes'
    with_d=$(Shielding 1)
    Run F 0.917 "$degrees" 'SemiEmpiricalMethod = TNDO2
CalculateShieldTensor = yes'
    anisotropy=$(sed '1,/^TENSOR/d' "$work/nmrparam.out" | awk 'NR == 4 { print $5 }')
    echo "| $degrees degrees | $plain | $with_d | $(Shielding 2) | $anisotropy |"
done
