// SPDX-License-Identifier: MIT
// The order of eigenvalues, some of which may not be numbers.
#include "numerics/eigensolver.h"
#include "numerics/eigensolver_work.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

// Of a diagonal matrix: nothing is left to do but to sort.
static std::vector<double> ValuesOf(const std::vector<double>& diagonal) {
    const int n = static_cast<int>(diagonal.size());
    EXPECT_EQ(ReserveEigensolverWork(n), 1);
    std::copy(diagonal.begin(), diagonal.end(), SolverWork.Diagonal);
    std::fill(SolverWork.Off, SolverWork.Off + n, 0.0);
    std::vector<double> values(diagonal.size());
    FindEigenvalues(values.data(), n, 1e-8);
    FreeEigensolverWork();
    return values;
}

TEST(TridiagonalValues, Ascend) {
    std::mt19937 random(5);
    for (const std::size_t n : {1u, 2u, 3u, 16u, 17u, 200u}) {
        std::vector<double> diagonal(n);
        for (double& value : diagonal) {
            value = static_cast<double>(random() % (2 * n)) - static_cast<double>(n);  // some are equal
        }
        std::vector<double> expected = diagonal;
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(ValuesOf(diagonal), expected);
        EXPECT_EQ(ValuesOf(expected), expected);
        EXPECT_EQ(ValuesOf({expected.rbegin(), expected.rend()}), expected);
    }
}

// On purpose exchanges alone put the values in order: a value moves only if it exceeds a later one of its pass, and
// what isn't a number exceeds nothing. By hand.
TEST(TridiagonalValues, NotANumberExceedsNothing) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<double> kept = ValuesOf({3, nan, 1, 2});
    EXPECT_EQ(kept[0], 3.0);
    EXPECT_TRUE(std::isnan(kept[1]));
    EXPECT_EQ(kept[2], 1.0);
    EXPECT_EQ(kept[3], 2.0);
    const std::vector<double> moved = ValuesOf({nan, 3, 1, 2});
    EXPECT_TRUE(std::isnan(moved[0]));
    EXPECT_EQ(moved[1], 1.0);
    EXPECT_EQ(moved[2], 2.0);
    EXPECT_EQ(moved[3], 3.0);
}
