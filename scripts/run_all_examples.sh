#!/bin/sh
# SPDX-License-Identifier: MIT
# Copies all examples into a new folder and runs a program on each, with the listings of level 4; fails where one leaves
# no result.
# Usage: sh scripts/run_all_examples.sh PROGRAM PARAMDIR EXAMPLES FOLDER, the first three with their whole paths.
set -eu
program=$1
parameters=$2
examples=$3
mkdir "$4"
cd "$4"
cp -r "$examples"/*/ .
sed -i '1i LogPrintLevel = 4' */nmrparam.in
for input in */nmr*.in; do
    name=$(dirname "$input")
    case $input in *nmrspect.in) kind=2 ;; *) kind=1 ;; esac
    "$program" "$parameters" "$name" "$kind" "$name/run.log"
    result=${input%.in}.out
    if [ ! -s "$result" ] || grep -q '^ERRMSG' "$result"; then
        echo "run_all_examples: $program wrote no result of $name" >&2
        exit 1
    fi
done
