#!/bin/sh
# SPDX-License-Identifier: MIT
# Runs the examples with each of the given programs; fails unless logs and results are the same bytes.
set -eu
cd "$(dirname "$0")/.."
top=$(mktemp -d)
trap 'rm -rf "$top"' EXIT
number=0
for program in "$@"; do
    number=$((number + 1))
    sh scripts/run_all_examples.sh "$PWD/$program" "$PWD/parameters" "$PWD/examples" "$top/$number"
    if ! diff -r "$top/1" "$top/$number"; then
        echo "compare_builds: $program differs from $1" >&2
        exit 1
    fi
done
echo "compare_builds: the results of $number builds are the same bytes"
