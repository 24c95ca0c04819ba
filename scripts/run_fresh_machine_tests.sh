#!/bin/sh
# SPDX-License-Identifier: MIT
# Runs the commands of this project on fresh machines, without a terminal: each in a root of its own, with the Debian
# release of this machine and nothing installed. As root and with sudo a command has to pass; for a user without sudo,
# in a path with a blank and in a checkout of somebody else it has to stop with one sentence. Prints a row for each.
# Usage: sh scripts/run_fresh_machine_tests.sh [PATTERN], as root: only the rows that match, as "run_tests.sh | root ".
# Without a pattern the commands that take more than some minutes don't run through.
set -eu
cd "$(dirname "$0")/.."
asked=${1:-}
top=$PWD/build/fresh_machine

quick="scripts/run_example.sh
scripts/make_validation.sh --check
scripts/make_packages.sh
scripts/run_fixed_order_cost.sh
scripts/run_fault_tests.sh 1
scripts/run_windows_tests.sh
scripts/run_package_tests.sh"
long="scripts/run_fuzzing.sh 1
scripts/run_benchmarks.sh --benchmark_min_time=0.001
scripts/run_build_matrix.sh
scripts/run_valgrind.sh
scripts/run_coverage.sh
scripts/run_tests.sh
.ci/run"

fail() {
    echo "run_fresh_machine_tests: $*" >&2
    exit 1
}

[ "$(id -u)" -eq 0 ] || fail "only root can make the root of a fresh machine"
sh scripts/install_packages.sh debootstrap util-linux
mkdir -p "$top/logs" "$top/archives"
exec 9>"$top/lock"
flock -n 9 || fail "another one is at work here"

# The root that all begin with, from the mirrors that apt uses here, with one user.
if [ ! -d "$top/base" ]; then
    sources=$(apt-get indextargets --format "deb \$(REPO_URI) \$(CODENAME) \$(COMPONENT)" 'Created-By: Packages' \
        'Origin: Debian')
    mirror=$(echo "$sources" | awk 'NR == 1 { print $2 }')
    release=$(echo "$sources" | awk 'NR == 1 { print $3 }')
    rm -rf "$top/unfinished"
    debootstrap "$release" "$top/unfinished" "$mirror" >"$top/logs/debootstrap" 2>&1 ||
        fail "debootstrap failed, see $top/logs/debootstrap"
    echo "$sources" >"$top/unfinished/etc/apt/sources.list"
    echo "127.0.1.1 $(uname -n)" >>"$top/unfinished/etc/hosts"
    chroot "$top/unfinished" useradd --create-home --shell /bin/sh user
    mv "$top/unfinished" "$top/base"
fi

# Run with mounts and processes of its own, which end with it: the base with a layer over it that takes what is written.
# The packages that apt has fetched are kept for the next machine.
# shellcheck disable=SC2016
machine='
set -eu
top=$1 layer=$2 who=$3 command=$4
root=$layer/root
mount -t overlay overlay -o "lowerdir=$top/base,upperdir=$layer/upper,workdir=$layer/work" "$root"
mount --rbind /dev "$root/dev"
mount -t proc proc "$root/proc"
mount -t sysfs sysfs "$root/sys"
mount --bind "$top/archives" "$root/var/cache/apt/archives"
user=user
folder=/home/user/velkoran
case $who in
    root) user=root ;;
    "a path with a blank") folder="/home/user/my velkoran" ;;
    "user with sudo")
        { chroot "$root" apt-get update && chroot "$root" apt-get install -y sudo; } >/dev/null 2>&1
        echo "user ALL=(ALL) NOPASSWD: ALL" >"$root/etc/sudoers.d/user" ;;
esac
mkdir "$root$folder"
tar -C . --exclude=./build --exclude=./.git -cf - . | tar -C "$root$folder" -xf -
[ "$who" = "a checkout of root" ] || chroot "$root" chown -R "$user:" "$folder"
exec chroot "$root" su - "$user" -c "cd \"$folder\" && exec sh $command"
'

# run COMMAND WHO WORD: the command has to pass, or else to stop with one sentence that holds the word.
run() {
    row="| $1 | $2 |"
    echo "$row" | grep -q -e "$asked" || return 0
    if [ -z "$asked$3" ] && echo "$long" | grep -q -x -F "$1"; then
        echo "$row skipped, takes long | - |"
        return 0
    fi
    log=$top/logs/$(echo "$1 $2" | tr -c 'A-Za-z0-9._\n' _)
    rm -rf "$layer"
    mkdir "$layer" "$layer/root" "$layer/upper" "$layer/work"
    began=$(date +%s)
    status=0
    env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin unshare --mount --pid --fork --kill-child \
        sh -c "$machine" machine "$top" "$layer" "$2" "$1" >"$log" 2>&1 </dev/null &
    running=$!
    wait "$running" || status=$?
    running=""
    if [ -z "$3" ] && [ "$status" -eq 0 ]; then
        outcome=passed
    elif [ -n "$3" ] && [ "$status" -ne 0 ] && [ "$(wc -l <"$log")" -eq 1 ] && grep -q -e "$3" "$log"; then
        outcome="stopped with one sentence"
    else
        outcome="FAILED with status $status, see $log"
        failures=$((failures + 1))
    fi
    echo "$row $outcome | $(($(date +%s) - began)) |"
}

failures=0
layer=$top/layer
running=""
trap 'exit 130' INT TERM
trap '[ -z "$running" ] || kill -KILL "$running"; wait; rm -rf "$layer"' EXIT
echo "| Command | Who or where | Outcome | Seconds |"
echo "|---|---|---|---:|"
while read -r command; do
    run "$command" "user" "packages are missing"
    run "$command" "a path with a blank" "holds a blank"
    run "$command" "a checkout of root" "can't write"
    run "$command" "root" ""
    run "$command" "user with sudo" ""
done <<END
$quick
$long
END
[ "$failures" -eq 0 ] || fail "$failures rows failed"
