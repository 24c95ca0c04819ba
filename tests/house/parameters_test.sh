#!/bin/sh
# SPDX-License-Identifier: MIT
# The committed parameter files are what their table gives, and the check sees a file that isn't.
# Usage: sh parameters_test.sh PYTHON, the interpreter (default: python3).
set -eu
python=${1:-python3}
parameters=$(cd "$(dirname "$0")/../../parameters" && pwd)
"$python" "$parameters/make_parameters.py" --check

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for name in nmrtype.txt nmr_shft.abp nmr_cupl.abp; do
    cp "$parameters"/* "$work"
    echo >>"$work/$name"
    if "$python" "$work/make_parameters.py" --check 2>/dev/null; then
        echo "A changed $name was not noticed." >&2
        exit 1
    fi
done
