// SPDX-License-Identifier: MIT
// Symmetric matrices and their solutions as values, for the tests of the eigensolver.
#pragma once

#include "numerics/eigensolver.h"

#include "numerics/polling_product.h"
#include "tests/unit/numerics/instruction_sets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

using Numbers = std::vector<double>;

inline constexpr double Epsilon = 2.2e-16;
inline constexpr double OrthonormalityTolerance = 1e-10;   // what the solver promises
inline constexpr double DirectTolerance = 1000 * Epsilon;  // of the norm: values and vectors of well separated levels
inline constexpr double IteratedTolerance = 3e-8;  // of the norm: degenerate groups, by the solver's own tolerance

inline std::size_t At(int i, int j, int n) {
    return static_cast<std::size_t>(i) * static_cast<std::size_t>(n) + static_cast<std::size_t>(j);
}

inline Numbers Symmetric(int n, const std::function<double(int, int)>& element) {
    Numbers matrix(At(n, 0, n));
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j <= i; ++j) {
            matrix[At(i, j, n)] = matrix[At(j, i, n)] = element(i, j);
        }
    }
    return matrix;
}

// Numbers from -1 to 1, the same on every platform.
struct Random {
    std::mt19937 Generator;
    double operator()() { return static_cast<double>(Generator()) / 2147483648.0 - 1.0; }
};

struct Solution {
    Numbers Vectors;
    Numbers Values;
};

inline Solution Solve(Numbers matrix, int n) {
    Solution solution = {Numbers(At(n, 0, n)), Numbers(static_cast<std::size_t>(n))};
    SolveEigenproblem(matrix.data(), solution.Vectors.data(), solution.Values.data(), n);
    return solution;
}

inline double RowSumNorm(const Numbers& matrix, int n) {
    double norm = 0.0;
    for (int i = 0; i < n; ++i) {
        double sum = 0.0;
        for (int j = 0; j < n; ++j) {
            sum += std::fabs(matrix[At(i, j, n)]);
        }
        norm = std::max(norm, sum);
    }
    return norm;
}

inline double Orthonormality(const Numbers& vectors, int n) {
    Numbers columns(vectors.size());
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            columns[At(j, i, n)] = vectors[At(i, j, n)];
        }
    }
    Numbers products(vectors.size());
    PollingProduct(vectors.data(), n, columns.data(), n, products.data(), n, n, n, n);
    double worst = 0.0;
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            const double error = std::fabs(products[At(i, j, n)] - (i == j ? 1.0 : 0.0));
            worst = error <= worst ? worst : error;  // so that what isn't a number stays
        }
    }
    return worst;
}

// The largest norm of A x - value x.
inline double Residual(const Numbers& matrix, const Solution& solution, int n) {
    Numbers products(matrix.size());
    PollingProduct(solution.Vectors.data(), n, matrix.data(), n, products.data(), n, n, n, n);
    double worst = 0.0;
    for (int i = 0; i < n; ++i) {
        double sum = 0.0;
        for (int j = 0; j < n; ++j) {
            const double error =
                products[At(i, j, n)] - solution.Values[static_cast<std::size_t>(i)] * solution.Vectors[At(i, j, n)];
            sum += error * error;
        }
        worst = std::sqrt(sum) <= worst ? worst : std::sqrt(sum);
    }
    return worst;
}
