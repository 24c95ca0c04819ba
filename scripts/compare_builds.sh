#!/bin/sh
# SPDX-License-Identifier: MIT
# Runs the examples and all whole runs of the tests with each of the given programs; fails unless logs and results are
# the same bytes, those of refusals too.
set -eu
cd "$(dirname "$0")/.."
top=$(mktemp -d)
trap 'rm -rf "$top"' EXIT
number=0
for program in "$@"; do
    number=$((number + 1))
    mkdir "$top/$number"
    sh scripts/run_all_examples.sh "$PWD/$program" "$PWD/parameters/published" "$PWD/examples" "$top/$number/examples"
    sh scripts/run_all_cases.sh "$PWD/$program" "$top/$number/cases"
    if ! diff -r "$top/1" "$top/$number"; then
        echo "compare_builds: $program differs from $1" >&2
        exit 1
    fi
done
runs=$(find "$top/1" -name nmrparam.in -o -name nmrspect.in | wc -l)
echo "compare_builds: the logs and results of $runs runs are the same bytes from $number builds"
