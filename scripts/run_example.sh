#!/bin/sh
# SPDX-License-Identifier: MIT
# Builds the program, runs it on an example (default: methane) and shows its log and its result.
# Usage: sh scripts/run_example.sh [NAME], a folder of examples/.
set -eu
cd "$(dirname "$0")/.."
name=${1:-methane}
if [ -f "examples/$name/nmrspect.in" ]; then
    kind=2
    result=nmrspect.out
elif [ -f "examples/$name/nmrparam.in" ]; then
    kind=1
    result=nmrparam.out
else
    echo "There is no example \"$name\". The examples are:" $(ls examples | grep -v README) >&2
    exit 1
fi
sh scripts/install_packages.sh g++ cmake ninja-build
sh scripts/build_program.sh release
rm -rf "build/examples/$name" build/examples/parameters
mkdir -p build/examples
cp -r "examples/$name" parameters build/examples
# the composed paths of a run have at most 128 characters, so it starts where they are short
cd build/examples
../release/velkoran parameters/published "$name" "$kind" "$name/run.log"
echo "==== build/examples/$name/run.log"
cat "$name/run.log"
echo "==== build/examples/$name/$result"
cat "$name/$result"
case $(head -c 8 "$name/$result") in ERRMSG:*) exit 1 ;; esac
