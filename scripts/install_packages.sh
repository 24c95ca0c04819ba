#!/bin/sh
# SPDX-License-Identifier: MIT
# Installs the Debian packages named as arguments that aren't there yet.
set -eu
missing=""
for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing="$missing $package"
done
[ -n "$missing" ] || exit 0
as_root=""
[ "$(id -u)" -eq 0 ] || as_root=sudo
export DEBIAN_FRONTEND=noninteractive
$as_root apt-get update -q
# shellcheck disable=SC2086
$as_root apt-get install -q -y --no-install-recommends $missing
