// SPDX-License-Identifier: MIT
// Tests of the dense kernels: every implementation that the processor can run, against plain loops and against the
// baseline, byte by byte.
#include "numerics/dense_kernels.h"
#include "tests/unit/numerics/instruction_sets.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

namespace {

using Numbers = std::vector<double>;

Numbers RandomNumbers(std::size_t count, unsigned seed) {
    std::mt19937 generator(seed);
    Numbers numbers(count);
    for (double& number : numbers) {
        number = static_cast<double>(generator()) / 2147483648.0 - 1.0;
    }
    return numbers;
}

bool SameBytes(const Numbers& a, const Numbers& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

// Runs produce with each implementation and expects the same bytes from all. Returns the result of the baseline.
Numbers ExpectSameFromAll(const std::function<Numbers(const DenseKernels&)>& produce) {
    Numbers expected;
    WithEachInstructionSet([&](InstructionSet set) {
        const Numbers found = produce(Kernels());
        if (set == BaselineSet) {
            expected = found;
        }
        EXPECT_TRUE(SameBytes(found, expected)) << NameOf(set);
    });
    return expected;
}

// The subtracting product with a transposed left factor and a tiled place, as the reduction uses it: C - a b - a b ...
// in ascending order, so again without tolerance.
TEST(DenseKernels, SubtractedProductGoesIntoTiles) {
    constexpr int Inner = 10;
    constexpr int Columns = 24;
    const Numbers left = RandomNumbers(Inner * 8, 3);
    const Numbers right = RandomNumbers(Inner * Columns, 4);
    const Numbers start = RandomNumbers(8 * Columns, 5);
    Numbers panel(Inner * PanelWidth);
    PackPanel(right.data(), Columns, Columns, Inner, panel.data());
    Numbers expected = start;
    for (std::size_t i = 0; i < 8; ++i) {
        for (std::size_t j = 0; j < Columns; ++j) {
            for (std::size_t k = 0; k < Inner; ++k) {
                expected[j / 8 * 64 + i * 8 + j % 8] -= left[k * 8 + i] * right[k * Columns + j];
            }
        }
    }
    const Numbers found = ExpectSameFromAll([&](const DenseKernels& kernels) {
        Numbers tiles = start;
        kernels.MultiplyPanel(left.data(), 1, 8, panel.data(), {tiles.data(), 8, 64}, 8, Columns, Inner,
                              SubtractProduct);
        return tiles;
    });
    EXPECT_TRUE(SameBytes(found, expected));
}

// Scalar products in eight lanes with the documented tree, for lengths with and without a rest; written out here lane
// by lane, so without tolerance.
TEST(DenseKernels, DotHasFixedLanes) {
    for (const int length : {1, 7, 8, 9, 40, 43}) {
        constexpr int Rows = 11;
        const std::size_t stride = static_cast<std::size_t>(length) + 1;
        const Numbers rows = RandomNumbers(Rows * stride, 6);
        const Numbers vector = RandomNumbers(static_cast<std::size_t>(length), 7);
        Numbers expected(Rows);
        for (std::size_t r = 0; r < Rows; ++r) {
            double lane[8] = {};
            for (std::size_t j = 0; j < static_cast<std::size_t>(length); ++j) {
                lane[j % 8] += rows[r * stride + j] * vector[j];
            }
            expected[r] = ((lane[0] + lane[4]) + (lane[2] + lane[6])) + ((lane[1] + lane[5]) + (lane[3] + lane[7]));
        }
        const Numbers found = ExpectSameFromAll([&](const DenseKernels& kernels) {
            Numbers products(Rows);
            kernels.DotRows(rows.data(), stride, Rows, vector.data(), length, products.data());
            return products;
        });
        EXPECT_TRUE(SameBytes(found, expected)) << length;
    }
}

// vector + sum of factor * row, row after row: a plain loop, so without tolerance.
TEST(DenseKernels, RowsAreAddedInOrder) {
    for (const int count : {0, 1, 2, 3, 8, 13}) {
        constexpr int Length = 29;
        const Numbers rows = RandomNumbers(13 * Length, 8);
        const Numbers factors = RandomNumbers(13, 9);
        const Numbers start = RandomNumbers(Length, 10);
        Numbers expected = start;
        for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k) {
            for (std::size_t j = 0; j < Length; ++j) {
                expected[j] += factors[k] * rows[k * Length + j];
            }
        }
        const Numbers found = ExpectSameFromAll([&](const DenseKernels& kernels) {
            Numbers vector = start;
            kernels.AddRows(rows.data(), Length, count, factors.data(), vector.data(), Length);
            return vector;
        });
        EXPECT_TRUE(SameBytes(found, expected)) << count;
    }
}

// A symmetric product from its tiled lower triangle equals that of the whole matrix, near or far. Sums of 40 terms of
// order 1 have rounding errors below 40 * 40 * 1e-16.
TEST(DenseKernels, SymmetricProductFromTiles) {
    constexpr int TileRows = 5;
    constexpr int N = 8 * TileRows;
    const Numbers random = RandomNumbers(N * N, 11);
    const Numbers vector = RandomNumbers(N, 12);
    const auto element = [&](int i, int j) {
        return random[static_cast<std::size_t>(std::max(i, j) * N + std::min(i, j))];
    };
    Numbers triangle(32 * TileRows * (TileRows + 1));
    for (int g = 0; g < TileRows; ++g) {
        for (int k = 0; k < 64 * (g + 1); ++k) {
            triangle[static_cast<std::size_t>(32 * g * (g + 1) + k)] = element(8 * g + k / 8 % 8, k / 64 * 8 + k % 8);
        }
    }
    const auto product = [&](bool isFar) {
        return ExpectSameFromAll([&](const DenseKernels& kernels) {
            Numbers result(N, 0.0);
            kernels.MultiplySymmetric(triangle.data(), vector.data(), result.data(), 0, 0, TileRows, isFar);
            return result;
        });
    };
    const Numbers found = product(false);
    EXPECT_TRUE(SameBytes(product(true), found));
    for (int i = 0; i < N; ++i) {
        double sum = 0.0;
        for (int j = 0; j < N; ++j) {
            sum += element(i, j) * vector[static_cast<std::size_t>(j)];
        }
        EXPECT_NEAR(found[static_cast<std::size_t>(i)], sum, 2e-13);
    }
}

// Factors and solutions of shifted tridiagonal systems: the same from all implementations, and T - shift times a
// solution gives the right side back. The forward step is included, so the right side is the given one; the systems
// have condition numbers below 1e4, so 1e-11 is ample.
TEST(DenseKernels, LanesSolveTridiagonalSystems) {
    constexpr int N = 21;
    const Numbers diagonal = RandomNumbers(N, 13);
    Numbers off = RandomNumbers(N, 14);
    off[N - 1] = 0.0;
    const Numbers shifts = RandomNumbers(8, 15);
    const Numbers right = RandomNumbers(N * 8, 16);
    const Numbers found = ExpectSameFromAll([&](const DenseKernels& kernels) {
        Numbers memory(4 * N * 8);
        const LaneFactors factors = {&memory[0], &memory[N * 8], &memory[2 * N * 8], &memory[3 * N * 8]};
        Numbers solution = right;
        solution.resize(N * 8 + 8);
        kernels.FactorLanes(diagonal.data(), off.data(), shifts.data(), 1e-8, N, factors);
        kernels.SolveLanes(factors, N, 1, solution.data(), &solution[N * 8]);
        return solution;
    });
    for (std::size_t lane = 0; lane < 8; ++lane) {
        double largest = 0.0;
        for (std::size_t j = 0; j < N; ++j) {
            double value = (diagonal[j] - shifts[lane]) * found[j * 8 + lane];
            value += j > 0 ? off[j - 1] * found[(j - 1) * 8 + lane] : 0.0;
            value += j + 1 < N ? off[j] * found[(j + 1) * 8 + lane] : 0.0;
            EXPECT_NEAR(value, right[j * 8 + lane], 1e-11);
            largest = std::max(largest, std::fabs(found[j * 8 + lane]));
        }
        EXPECT_EQ(found[N * 8 + lane], largest);
    }
}

// Only a pivot that is at least as large as the coupling below it stays in place: one that can't be compared is
// interchanged, which Band marks.
TEST(DenseKernels, NotANumberIsInterchanged) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double diagonal[3] = {1.0, 2.0, 3.0};
    const double off[3] = {nan, 0.5, 0.0};
    const double shifts[8] = {};
    const Numbers bands = ExpectSameFromAll([&](const DenseKernels& kernels) {
        Numbers memory(4 * 3 * 8);
        const LaneFactors factors = {&memory[0], &memory[24], &memory[48], &memory[72]};
        kernels.FactorLanes(diagonal, off, shifts, 1e-8, 3, factors);
        return Numbers(factors.Band, factors.Band + 8);
    });
    for (const double band : bands) {
        EXPECT_EQ(band, 0.5);
    }
}

// The two products of the residual of a tridiagonal matrix, against a plain sum; 30 terms of order 1, so 1e-14 holds.
TEST(DenseKernels, ResidualProducts) {
    for (const int n : {1, 2, 8, 9, 10, 30}) {
        const Numbers diagonal = RandomNumbers(30, 17);
        const Numbers off = RandomNumbers(30, 18);
        const Numbers x = RandomNumbers(30, 19);
        const Numbers found = ExpectSameFromAll([&](const DenseKernels& kernels) {
            Numbers products(2);
            kernels.ResidualProducts(diagonal.data(), off.data(), 0.25, x.data(), n, products.data());
            return products;
        });
        double square = 0.0;
        double projection = 0.0;
        for (std::size_t j = 0; j < static_cast<std::size_t>(n); ++j) {
            double value = (diagonal[j] - 0.25) * x[j];
            value += j > 0 ? off[j - 1] * x[j - 1] : 0.0;
            value += j + 1 < static_cast<std::size_t>(n) ? off[j] * x[j + 1] : 0.0;
            square += value * value;
            projection += value * x[j];
        }
        EXPECT_NEAR(found[0], square, 1e-14);
        EXPECT_NEAR(found[1], projection, 1e-14);
    }
}

}  // namespace
