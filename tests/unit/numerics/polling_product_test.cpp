// SPDX-License-Identifier: MIT
// Tests of the product of whole matrices: against a plain triple loop, byte by byte, and stops in its course.
#include "numerics/polling_product.h"

#include "ground/platform.h"
#include "ground/recovery_frame.h"
#include "ground/run_state.h"
#include "tests/support/test_support.h"
#include "tests/unit/numerics/instruction_sets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

namespace {

using Numbers = std::vector<double>;

constexpr double Untouched = 7.0;

Numbers RandomNumbers(int count, unsigned seed) {
    std::mt19937 generator(seed);
    Numbers numbers(static_cast<std::size_t>(count));
    for (double& number : numbers) {
        number = static_cast<double>(generator()) / 2147483648.0 - 1.0;
    }
    return numbers;
}

// Factors of a product with rows that are longer than the matrices, and the result of the plain loop.
struct Product {
    Product(int rows, int columns, int inner)
        : Rows(rows), Columns(columns), Inner(inner), A(RandomNumbers(rows * (inner + 3), 1)),
          B(RandomNumbers((inner + 1) * (columns + 1), 2)),
          Expected(static_cast<std::size_t>(rows * (columns + 2)), Untouched) {
        for (int i = 0; i < rows; ++i) {
            for (int j = 0; j < columns; ++j) {
                double sum = 0.0;
                for (int k = 0; k < inner; ++k) {
                    sum += A[static_cast<std::size_t>(i * (inner + 3) + k)] *
                           B[static_cast<std::size_t>(k * (columns + 1) + j)];
                }
                Expected[static_cast<std::size_t>(i * (columns + 2) + j)] = sum;
            }
        }
    }

    void MultiplyInto(Numbers& c) const {
        PollingProduct(A.data(), Inner + 3, B.data(), Columns + 1, c.data(), Columns + 2, Rows, Columns, Inner);
    }

    int Rows, Columns, Inner;
    Numbers A, B, Expected;
};

// Each number is one sum in ascending order, so there is no tolerance; what lies beside the result stays. The sizes lie
// below, at and above those of tiles (up to 4 rows), panels (32 columns), blocks of rows (64) and of inner indices
// (256) and groups of panels (256 columns).
TEST(PollingProduct, EqualsTripleLoop) {
    const int sizes[][3] = {{1, 1, 1},      {2, 3, 4},      {8, 8, 8},      {5, 33, 7},     {31, 32, 33},
                            {64, 65, 0},    {70, 70, 70},   {13, 41, 300},  {261, 9, 40},   {3, 100, 513},
                            {63, 255, 255}, {64, 256, 256}, {65, 257, 257}, {66, 289, 512}, {129, 31, 64},
                            {2, 520, 260},  {0, 5, 5},      {5, 0, 5}};
    for (const auto& size : sizes) {
        const Product product(size[0], size[1], size[2]);
        WithEachInstructionSet([&](InstructionSet set) {
            Numbers found(product.Expected.size(), Untouched);
            product.MultiplyInto(found);
            EXPECT_TRUE(std::equal(found.begin(), found.end(), product.Expected.begin(),
                                   [](double x, double y) { return std::memcmp(&x, &y, sizeof x) == 0; }))
                << NameOf(set) << ": " << size[0] << " x " << size[1] << " x " << size[2];
        });
    }
}

// A stop that waits is seen long before the end: once pieces of work are counted, when less than a tenth of the result
// is begun.
TEST(PollingProduct, SeesAStopInItsCourse) {
    ResetRun();
    const Product product(300, 600, 40);
    Numbers found(product.Expected.size(), Untouched);
    PostQuit();
    bool finished = false;
    RecoveryFrame frame;
    PushRecoveryFrame(frame);
    if (SAVE_CONTEXT(frame)) {
        PopRecoveryFrame(1);
    } else {
        product.MultiplyInto(found);
        finished = true;
        PopRecoveryFrame(1);
    }
    EXPECT_FALSE(finished);
    EXPECT_EQ(::Run.Process.QuitRequested, 1);
    EXPECT_LT(std::count_if(found.begin(), found.end(), [](double number) { return number != Untouched; }), 18000);
    ResetRun();
}

}  // namespace
