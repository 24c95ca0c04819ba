#!/bin/sh
# SPDX-License-Identifier: MIT
# Copies the inputs of all whole runs in tests/ into a new folder and runs a program on each, refusals too; fails where
# one doesn't end with code 0. The runs that were evaluated independently list all matrices, by level 4; the other ones
# stay as they are, since many of them are about the input itself. All paths are relative to the folder, so that those
# in messages are the same for each program. Left out are the seeds in tests/fuzz, which hold several files in one.
# Usage: sh scripts/run_all_cases.sh PROGRAM FOLDER, both with their whole paths.
set -eu
tests=$(cd "$(dirname "$0")/../tests" && pwd)
program=$1
mkdir "$2"
cd "$2"

# Runs every folder below $1 as a run of kind $2, with the line $3 in front of its input, if any.
run_group() {
    group=$(echo "$1" | tr / _)
    mkdir "$group"
    cp -r "$tests/$1"/*/ "$group"
    for folder in "$group"/*/; do
        folder=${folder%/}
        sh "$tests/support/parameter_folder.sh" "$tests/$1/${folder##*/}" "$folder/p"
        if [ -n "$3" ]; then
            sed -i "1i $3" "$folder/nmrparam.in"
        fi
        if ! "$program" "$folder/p" "$folder" "$2" "$folder/run.log" >"$folder/stdout" 2>&1; then
            echo "run_all_cases: $program failed in $folder" >&2
            exit 1
        fi
    done
}
run_group cases/spectrum 2 ""
run_group cases/regression 2 ""
run_group cases/parameter 1 ""
run_group reference/spectrum/cases 2 ""
run_group reference/wavefunction/cases 1 "LogPrintLevel = 4"
run_group reference/parameter/cases 1 "LogPrintLevel = 4"
