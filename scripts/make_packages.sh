#!/bin/sh
# SPDX-License-Identifier: MIT
# Builds the program for Linux and for Windows and makes a package of each in build/packages/: a Debian package and a
# ZIP archive. Prints their names and contents.
set -eu
umask 022
cd "$(dirname "$0")/.."
sh scripts/install_packages.sh g++ g++-mingw-w64-x86-64 cmake ninja-build dpkg-dev file mandoc unzip
# the packages bear the date of the last commit, where git knows it
if date=$(git log -1 --format=%ct 2>/dev/null); then
    export SOURCE_DATE_EPOCH="$date"
fi
packages=$PWD/build/packages
rm -rf "$packages"
for preset in release windows; do
    sh scripts/build_program.sh "$preset"
    (cd "build/$preset" && cpack -D "CPACK_OUTPUT_FILE_PREFIX=$packages")
done
for package in "$packages"/*.deb; do
    echo "==== $package"
    dpkg-deb --info "$package"
    dpkg-deb --contents "$package"
done
for package in "$packages"/*.zip; do
    echo "==== $package"
    unzip -l "$package"
done
