#!/bin/sh
# SPDX-License-Identifier: MIT
# Builds and runs the benchmarks (whole runs of the program, single steps of a parameter run, and the eigensolver beside
# a LAPACK), keeps their results as benchmarks/results.json and writes docs/performance.md from them.
# Usage: sh scripts/run_benchmarks.sh [OPTION...], options of Google Benchmark such as --benchmark_min_time=0.05.
set -eu
cd "$(dirname "$0")/.."
sh scripts/install_packages.sh g++ cmake ninja-build python3 libbenchmark-dev libopenblas-dev
cmake --preset benchmark >/dev/null
cmake --build --preset benchmark
results=build/benchmark/results
rm -rf "$results"
mkdir "$results"
for name in eigensolver spectrum parameter wavefunction; do
    "build/benchmark/benchmarks/${name}_benchmark" --benchmark_out="$results/$name.json" \
        --benchmark_out_format=json "$@"
done
python3 benchmarks/make_performance.py --collect "$results" "--options=$*"
