#!/bin/sh
# SPDX-License-Identifier: MIT
# The committed parameter files are what their table gives, and the check sees a file that isn't.
# Usage: sh parameters_test.sh PYTHON, the interpreter (default: python3).
set -eu
python=${1:-python3}
root=$(cd "$(dirname "$0")/../.." && pwd)
"$python" "$root/parameters/make_parameters.py" --check

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -R "$root/parameters" "$root/python" "$work"
for name in nmrtype.txt nmr_shft.abp nmr_cupl.abp; do
    echo >>"$work/parameters/$name"
    if "$python" "$work/parameters/make_parameters.py" --check 2>/dev/null; then
        echo "A changed $name was not noticed." >&2
        exit 1
    fi
    cp "$root/parameters/$name" "$work/parameters"
done
