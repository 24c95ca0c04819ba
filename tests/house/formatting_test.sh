#!/bin/sh
# SPDX-License-Identifier: MIT
# The sources have the format of clang-format and black, and lines of 120 characters at most.
# tests/house/generated_sources.txt names the C++ files that programs make, which have a format of their own.
# Usage: sh formatting_test.sh
set -eu
cd "$(dirname "$0")/../.."
generated=tests/house/generated_sources.txt
for tool in clang-format black; do
    command -v "$tool" >/dev/null || {
        echo "formatting: $tool isn't installed: sh scripts/install_packages.sh $tool" >&2
        exit 1
    }
done
while read -r source; do
    [ -f "$source" ] || {
        echo "formatting: $source of $generated isn't there" >&2
        exit 1
    }
done <"$generated"

status=0
find core frontend tests benchmarks -name '*.cpp' -o -name '*.h' | grep -vxFf "$generated" |
    xargs clang-format --dry-run --Werror || status=1
[ "$status" -eq 0 ] || echo "formatting: clang-format -i mends these C++ files" >&2
black --check --quiet . || {
    black --check . 2>&1 | grep '^would' >&2
    echo "formatting: black . mends these Python files" >&2
    status=1
}
# What neither tool breaks: long words, comments of scripts.
find [a-z]* -path build -prune -o \( -name '*.cpp' -o -name '*.h' -o -name '*.py' -o -name '*.sh' -o -name '*.cmake' \
    -o -name CMakeLists.txt \) -print | grep -vxFf "$generated" |
    xargs awk 'length > 120 { print FILENAME ":" FNR ": more than 120 characters"; found = 1 } END { exit found }' ||
    status=1
exit "$status"
