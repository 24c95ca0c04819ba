#!/bin/sh
# SPDX-License-Identifier: MIT
# Makes the folder with the parameter files of a whole run. A file `parameter_set`, in the folder of the run or else in
# the nearest one above it, says what to take: each line is the name of a folder of parameter_sets/, whose files replace
# those of the lines before, or `without FILE`. Where there is none, the files of parameters/published/ are taken. Those
# of `params` in the folder of the run come over them.
# Usage: sh parameter_folder.sh RUN_FOLDER FOLDER, which must not be there yet.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
run=$(cd "$1" && pwd)
mkdir "$2"

list=$run
while [ "$list" != / ] && [ ! -f "$list/parameter_set" ]; do
    list=$(dirname "$list")
done
if [ "$list" = / ]; then
    for file in nmrtype.txt nmr_shft.abp nmr_cupl.abp; do
        cp "$here/../../parameters/published/$file" "$2"
    done
else
    while read -r name file; do
        if [ "$name" = without ]; then
            rm "$2/$file"
        else
            cp "$here/parameter_sets/$name"/* "$2"
        fi
    done <"$list/parameter_set"
fi
if [ -d "$run/params" ]; then
    cp "$run/params"/* "$2"
fi
