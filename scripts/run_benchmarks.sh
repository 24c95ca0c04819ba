#!/bin/sh
# SPDX-License-Identifier: MIT
# Builds and runs the benchmarks: whole runs of the program, single steps of a parameter run, and the eigensolver beside
# a LAPACK.
set -eu
cd "$(dirname "$0")/.."
sh scripts/install_packages.sh g++ cmake ninja-build libbenchmark-dev libopenblas-dev
cmake --preset benchmark >/dev/null
cmake --build --preset benchmark
build/benchmark/benchmarks/eigensolver_benchmark
build/benchmark/benchmarks/spectrum_benchmark
build/benchmark/benchmarks/parameter_benchmark
build/benchmark/benchmarks/wavefunction_benchmark
