#!/bin/sh
# SPDX-License-Identifier: MIT
# Spoils inputs in ways that happen, and prints what the program says. To be run in a folder that has the program,
# parameters/ and docs/, as in the root of a clone with a built program.
set -eu

# Refuse CHANGE INPUT KIND [PARAMDIR]: applies a sed command to an input and prints the refusal of the run.
Refuse() {
    cp "docs/walk/$2" refused
    sed -i "$1" "refused/${2##*/}"
    build/release/velkoran "${4:-parameters/published}" refused "$3"
    head -n 1 refused/*.out
    rm refused/*
}

mkdir refused
trap 'rm -rf refused' EXIT
Refuse 's/ C2 C C / C2 Br Br /' ethylene/nmrparam.in 1
Refuse '1aTotalCharge = 1' ethylene/nmrparam.in 1
Refuse 's/1 d  5 s/1 x  5 s/' ethylene/nmrparam.in 1
Refuse 's/3  1 d  5 s/4  1 d  5 s/' ethylene/nmrparam.in 1
Refuse '/^mol 1 atom 6$/d' ethylene/nmrparam.in 1
Refuse '' ethylene/nmrparam.in 1 parameter
Refuse 's/5.77/3.95/; $s/0/1/' trichloroethane/nmrspect.in 2
Refuse 's/5.77 3.95/5.77/' trichloroethane/nmrspect.in 2
