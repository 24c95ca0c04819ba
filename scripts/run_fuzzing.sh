#!/bin/sh
# SPDX-License-Identifier: MIT
# run_fuzzing.sh [SECONDS] [TARGET...]: fuzzes the readers and whole runs under the address, undefined-behaviour and
# leak sanitizers, each target of tests/fuzz/ for that processor time (60 if none is given), two at a time. Prints a
# line for each and fails if there is a finding. What was found stays in build/fuzz/: inputs that reached something new
# in corpus/, findings in findings/.
set -eu
cd "$(dirname "$0")/.."
seconds=60
case "${1:-}" in
    '' | *[!0-9]*) ;;
    *)
        seconds=$1
        shift
        ;;
esac
[ $# -gt 0 ] || set -- parameter_run spectrum_run parameter_input spectrum_input type_file shielding_file coupling_file
sh scripts/install_packages.sh clang libclang-rt-dev llvm cmake ninja-build libgtest-dev python3 librdkit-dev \
    libboost-dev

build=build/fuzz
sanitizers=address,undefined,leak,float-cast-overflow
flags="-O1 -g -fno-omit-frame-pointer -fsanitize=fuzzer-no-link,$sanitizers -fno-sanitize-recover=all"
CC=clang CXX=clang++ cmake -S . -B $build -G Ninja -DBUILD_TESTING=ON -DCMAKE_CXX_FLAGS="$flags" >/dev/null
# shellcheck disable=SC2046
nice cmake --build $build --target $(printf 'velkoran_fuzz_%s ' "$@") >/dev/null

# In memory where that can be: on a disk the cases would wait for their small files.
TMPDIR=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT
trap 'exit 130' INT TERM
touch "$TMPDIR/start"
# What a run asks for beyond 32 MB is refused, as on a full machine, and the refusals aren't listed.
export ASAN_OPTIONS=allocator_may_return_null=1:max_allocation_size_mb=32:detect_leaks=1:quarantine_size_mb=32
export UBSAN_OPTIONS=print_stacktrace=1

# The longest input of a target, and its words.
longest_input() {
    case $1 in
        type_file) echo 1000 ;;
        *_file | spectrum_*) echo 2600 ;;
        *) echo 3000 ;;
    esac
}
dictionary() {
    case $1 in
        *_file) echo parameter_file ;;
        spectrum_*) echo spectrum ;;
        *) echo parameter_input ;;
    esac
}

# The whole processor seconds of a subshell's children, from what "times" prints.
processor_seconds() {
    awk 'END { split($1 " " $2, t, /[ms ]+/); printf "%d\n", 60 * t[1] + t[2] + 60 * t[3] + t[4] }' "$1"
}

count_findings() {
    find $build/findings/"$1" -type f -newer "$TMPDIR/start" | wc -l
}

# libFuzzer's limit is wall time. Where the machine is shared it starts again for the processor time that is left, at
# the share of a processor that it had so far.
fuzz() {
    mkdir -p $build/corpus/"$1" $build/findings/"$1" $build/logs
    log=$build/logs/$1
    : >"$log"
    began=$(date +%s)
    used=0
    limit=$seconds
    while [ $((seconds - used)) -ge 1 ] && [ "$(count_findings "$1")" -eq 0 ]; do
        (
            nice -n 19 $build/tests/fuzz/velkoran_fuzz_"$1" -max_total_time="$limit" -timeout=60 -report_slow_units=60 \
                -max_len="$(longest_input "$1")" -dict=tests/fuzz/"$(dictionary "$1")".dict -print_final_stats=1 \
                -rss_limit_mb=4096 -malloc_limit_mb=4096 -artifact_prefix=$build/findings/"$1"/ \
                $build/corpus/"$1" tests/fuzz/corpus_"$1" 2>&1 | grep -v 'failed to allocate' >>"$log" || true
            times >"$TMPDIR/$1.times"
        )
        spent=$(processor_seconds "$TMPDIR/$1.times")
        used=$((used + spent))
        limit=$((1 + (seconds - used) * ($(date +%s) - began) / (used + 1)))
        grep -q '^stat::number_of_executed_units' "$log" || break
    done
    awk -v target="$1" -v wall=$(($(date +%s) - began)) -v cpu=$used -v findings="$(count_findings "$1")" '
        /^stat::number_of_executed_units/ { executions += $2 }
        match($0, /cov: [0-9]+/) { edges = substr($0, RSTART + 5, RLENGTH - 5) }
        match($0, /corp: [0-9]+/) { corpus = substr($0, RSTART + 6, RLENGTH - 6) }
        END {
            printf "%-16s %10d %8d %8d %7d %7d %8s\n", target, executions, wall, cpu, edges, corpus,
                (executions > 0 ? findings : "no run")
        }' "$log" >"$TMPDIR/$1.line"
}

lane() {
    for target in "$@"; do
        fuzz "$target"
    done
}

first=""
second=""
for target in "$@"; do
    if [ "${#first}" -gt "${#second}" ]; then
        second="$second $target"
    else
        first="$first $target"
    fi
done
# shellcheck disable=SC2086
lane $first &
# shellcheck disable=SC2086
lane $second
wait
echo "Target           executions  seconds      cpu   edges  corpus findings"
for target in "$@"; do
    cat "$TMPDIR/$target.line"
done
! grep -qv ' 0$' "$TMPDIR"/*.line
