#!/bin/sh
# SPDX-License-Identifier: MIT
# Prints a picture of the spectrum of ethanol at 60 and at 400 MHz. To be run in a folder that has the program,
# examples/ and docs/, as in the root of a clone with a built program.
set -eu
work=$(mktemp -d ethanol_XXXXXX)
trap 'rm -rf "$work"' EXIT
for name in ethanol_60 ethanol_400; do
    cp -r "examples/$name" "$work"
    build/release/velkoran parameters/published "$work/$name" 2
done
gnuplot -c docs/pictures/ethanol.gp "$work/ethanol_60/nmrspect.out" 60 "$work/ethanol_400/nmrspect.out" 400
