#!/bin/sh
# SPDX-License-Identifier: MIT
# The documents show what the program gives, and the check sees one that doesn't, a dead link, a block without its
# command, a picture and a page that were changed, and a wrong version.
# Usage: sh documents_test.sh PYTHON PROGRAM
set -eu
python=$1
program=$2
root=$(cd "$(dirname "$0")/../.." && pwd)
"$python" "$root/docs/refresh_documents.py" --check --program "$program"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tar -C "$root" --exclude=./build --exclude=./.git -cf - . | tar -C "$work" -xf -

# MustSee FILE COMMAND: the check fails on a copy whose FILE was changed by the sed COMMAND.
MustSee() {
    sed -i "$2" "$work/$1"
    if cmp -s "$work/$1" "$root/$1"; then
        echo "documents_test: \"$2\" changes nothing in $1" >&2
        exit 1
    fi
    if "$python" "$work/docs/refresh_documents.py" --check --program "$program" >/dev/null 2>&1; then
        echo "documents_test: $1 after \"$2\" was not noticed" >&2
        exit 1
    fi
    cp "$root/$1" "$work/$1"
}

MustSee docs/first_walk.md '0,/^Results/s//Result/'
MustSee docs/walk/ethylene/nmrparam.in 's/1\.3305/1.3306/'
MustSee docs/method.md 's/(validation\.md)/(validations.md)/'
MustSee docs/contributing.md 's/^| validate .*//'
MustSee README.md '$a\\n    a block without a command'
# A picture is compared where the program that drew it is the same.
if grep -q "GNUPLOT $(gnuplot --version | cut -d ' ' -f 2-)" "$root/docs/pictures/ethanol.svg"; then
    MustSee docs/pictures/ethanol.svg 's/60 MHz/61 MHz/'
fi
MustSee benchmarks/results.json '0,/"version": "/s//&9./'
MustSee CITATION.cff 's/^version: .*/version: 9.9.9/'
