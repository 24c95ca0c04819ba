#!/bin/sh
# SPDX-License-Identifier: MIT
# The committed parameter files are what their table gives and have the hashes that stand beside them, and both checks
# see a file that isn't so.
# Usage: sh parameters_test.sh PYTHON, the interpreter (default: python3).
set -eu
python=${1:-python3}
root=$(cd "$(dirname "$0")/../.." && pwd)
files="nmrtype.txt nmr_shft.abp nmr_cupl.abp"
maker=parameters/published/make_parameters.py
"$python" "$root/$maker" --check

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -R "$root/parameters" "$root/python" "$work"

hashes_agree() {
    (cd "$1" && sha256sum --check --strict --status SHA256SUMS 2>/dev/null)
}

# Each folder of parameters: the hashes are those of its files, and show a change of each.
for folder in "$root"/parameters/*/; do
    name=$(basename "$folder")
    hashes_agree "$folder" || {
        echo "parameters/$name/SHA256SUMS isn't what sha256sum gives." >&2
        exit 1
    }
    while read -r _ file; do
        echo >>"$work/parameters/$name/$file"
        if hashes_agree "$work/parameters/$name"; then
            echo "parameters/$name/SHA256SUMS didn't notice a change of $file." >&2
            exit 1
        fi
        cp "$folder/$file" "$work/parameters/$name"
    done <"$folder/SHA256SUMS"
done

# The page of the published parameters shows these hashes.
while read -r hash file; do
    grep -q -F "| \`$file\` | \`$hash\` |" "$root/parameters/published/README.md" || {
        echo "parameters/published/README.md has another hash of $file." >&2
        exit 1
    }
done <"$root/parameters/published/SHA256SUMS"

for name in $files; do
    echo >>"$work/parameters/published/$name"
    if "$python" "$work/$maker" --check 2>/dev/null; then
        echo "A changed $name was not noticed." >&2
        exit 1
    fi
    cp "$root/parameters/published/$name" "$work/parameters/published"
done
