#!/bin/sh
# SPDX-License-Identifier: MIT
# What every command begins with, in the root of the project: looks whether it can work in this place, and installs the
# Debian packages named as arguments that aren't there yet. Where it can't, it says why in one sentence.
set -eu

stop() {
    echo "install_packages: $*" >&2
    exit 1
}

# The project, what was built before, perhaps by root, and the folder of temporary files.
for folder in "$PWD" "$PWD/build" "${TMPDIR:-/tmp}"; do
    case $folder in
        *[[:space:]]*) stop "the path \"$folder\" holds a blank, and the program takes no such paths" ;;
        "$PWD/build") [ -e "$folder" ] || continue ;;
    esac
    [ -w "$folder" ] || stop "$(id -un) can't write into $folder"
done

missing=""
for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing="$missing $package"
done
[ -n "$missing" ] || exit 0
as_root=""
if [ "$(id -u)" -ne 0 ]; then
    as_root=sudo
    # it asks for a password only where somebody can type one
    sudo -n true 2>/dev/null || { (: </dev/tty) 2>/dev/null && command -v sudo >/dev/null && sudo true; } ||
        stop "these Debian packages are missing, and $(id -un) can't install them without sudo:$missing"
fi
# shellcheck disable=SC2086
{ $as_root apt-get update -q &&
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing; } ||
    stop "apt-get couldn't install these Debian packages:$missing"
