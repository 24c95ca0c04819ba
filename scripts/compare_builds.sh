#!/bin/sh
# SPDX-License-Identifier: MIT
# Runs the examples with each of the given programs; fails unless logs and results are the same bytes.
set -eu
cd "$(dirname "$0")/.."
root=$PWD
top=$(mktemp -d)
trap 'rm -rf "$top"' EXIT
number=0
for program in "$@"; do
    number=$((number + 1))
    mkdir "$top/$number"
    cp -r examples/*/ parameters "$top/$number"
    for input in "$top/$number"/*/nmr*.in; do
        name=$(basename "$(dirname "$input")")
        case $input in *nmrspect.in) kind=2 ;; *) kind=1 ;; esac
        (cd "$top/$number" && "$root/$program" parameters "$name" "$kind" "$name/run.log")
        result=${input%.in}.out
        if [ ! -s "$result" ] || grep -q '^ERRMSG' "$result"; then
            echo "compare_builds: $program wrote no result of $name" >&2
            exit 1
        fi
    done
    if ! diff -r "$top/1" "$top/$number"; then
        echo "compare_builds: $program differs from $1" >&2
        exit 1
    fi
done
echo "compare_builds: the results of $number builds are the same bytes"
