// SPDX-License-Identifier: MIT
// The eigensolver beside the divide and conquer solver of a LAPACK, both in one thread on the same random matrix. The
// counter "ratio" is our time over theirs.
#include "numerics/eigensolver.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <map>
#include <random>
#include <vector>

extern "C" {
void dsyevd_(const char* job, const char* triangle, const int* n, double* matrix, const int* stride, double* values,
             double* work, const int* workLength, int* integerWork, const int* integerWorkLength, int* info);
void openblas_set_num_threads(int threads);
}

static std::map<int, double> LapackSeconds;  // shortest time by order

static std::vector<double> RandomMatrix(int n) {
    std::mt19937 generator(1);
    const std::size_t length = static_cast<std::size_t>(n);
    std::vector<double> matrix(length * length);
    for (std::size_t i = 0; i < length; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            matrix[i * length + j] = matrix[j * length + i] = static_cast<double>(generator()) / 2147483648.0 - 1.0;
        }
    }
    return matrix;
}

// Runs solve on a fresh copy of the matrix as often as the benchmark wants; returns the shortest time.
template <class Solver> static double Measure(benchmark::State& state, int n, const Solver& solve) {
    const std::vector<double> matrix = RandomMatrix(n);
    double best = 1e9;
    for (auto _ : state) {
        std::vector<double> copy = matrix;
        const auto start = std::chrono::steady_clock::now();
        solve(copy.data());
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        state.SetIterationTime(seconds);
        best = seconds < best ? seconds : best;
    }
    return best;
}

static void Lapack(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const int workLength = 1 + 6 * n + 2 * n * n + 64 * n;
    const int integerWorkLength = 3 + 5 * n;
    std::vector<double> values(static_cast<std::size_t>(n));
    std::vector<double> work(static_cast<std::size_t>(workLength));
    std::vector<int> integerWork(static_cast<std::size_t>(integerWorkLength));
    int info = 0;
    openblas_set_num_threads(1);
    LapackSeconds[n] = Measure(state, n, [&](double* matrix) {
        dsyevd_("V", "U", &n, matrix, &n, values.data(), work.data(), &workLength, integerWork.data(),
                &integerWorkLength, &info);
    });
}

static void Eigensolver(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    std::vector<double> values(static_cast<std::size_t>(n));
    std::vector<double> vectors(static_cast<std::size_t>(n) * static_cast<std::size_t>(n));
    const double best =
        Measure(state, n, [&](double* matrix) { SolveEigenproblem(matrix, vectors.data(), values.data(), n); });
    if (LapackSeconds[n] > 0.0) {
        state.counters["ratio"] = best / LapackSeconds[n];
    }
}

BENCHMARK(Lapack)->Arg(10)->Arg(30)->Arg(60)->Arg(100)->Arg(300)->Arg(924)->UseManualTime()->Unit(
    benchmark::kMillisecond);
BENCHMARK(Eigensolver)
    ->Arg(10)
    ->Arg(30)
    ->Arg(60)
    ->Arg(100)
    ->Arg(300)
    ->Arg(924)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
