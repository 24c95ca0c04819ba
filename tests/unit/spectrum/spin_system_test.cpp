// SPDX-License-Identifier: MIT
// Rounding and symmetrising of the spin system, factorials, multiplicities of composite spins.
#include "numerics/factorial.h"
#include "spectrum/spin_system.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

// A stored factorial differs from the true one by half a unit of its tenth digit at most.
static constexpr double StoredPrecision = 5e-10;

static std::vector<double> PreparedShifts(const std::vector<double>& shifts) {
    const std::size_t n = shifts.size();
    LoadSpinSystem(
        {std::vector<int>(n, 1), std::vector<int>(n, 1), shifts, std::vector<double>(n * n, 0.0), 100.0, 1e-7, 0});
    PrepareSpinSystem();
    return {::Run.Spins.ChemicalShifts, ::Run.Spins.ChemicalShifts + n};
}

// The decimal values are k * 0.001 in doubles, as the rounding defines them, not the nearest doubles of the
// decimals.
TEST(SpinSystem, RoundsShiftsToThousandths) {
    const std::vector<double> shifts = PreparedShifts({2.0004, -2.0006, 0.0005, -0.0005, 1.2345678, 0.00049, 7.0});
    const std::vector<double> expected = {2000 * 0.001, -2001 * 0.001, 1 * 0.001,   -1 * 0.001,
                                          1235 * 0.001, 0.0,           7000 * 0.001};
    EXPECT_EQ(shifts, expected);
}

TEST(SpinSystem, RoundingLeavesNoNegativeZero) {
    for (const double shift : PreparedShifts({-0.0, -0.0001, -0.00049999})) {
        EXPECT_EQ(shift, 0.0);
        EXPECT_FALSE(std::signbit(shift));
    }
}

TEST(SpinSystem, RoundsLargeNumbersWithinTheIntegersItGoesThrough) {
    EXPECT_TRUE(CanBeRounded(8.9e15));
    EXPECT_FALSE(CanBeRounded(-9.1e15));
    EXPECT_FALSE(CanBeRounded(std::nan("")));
    EXPECT_FALSE(CanBeRounded(INFINITY));
    EXPECT_NEAR(PreparedShifts({8.9e15})[0], 8.9e15, 2.0);
}

TEST(SpinSystem, RoundsCouplingsDiagonalIncluded) {
    LoadSpinSystem({{1, 1}, {1, 1}, {1, 2}, {3.00049, 2.0004, 9.0, -2.0006}, 100.0, 1e-7, 0});
    PrepareSpinSystem();
    EXPECT_EQ(::Run.Spins.CouplingMatrix[0], 3000 * 0.001);
    EXPECT_EQ(::Run.Spins.CouplingMatrix[1], 2000 * 0.001);
    EXPECT_EQ(::Run.Spins.CouplingMatrix[2], 2000 * 0.001);  // the upper triangle's
    EXPECT_EQ(::Run.Spins.CouplingMatrix[3], -2001 * 0.001);
}

TEST(SpinSystem, LowerTriangleHoldsLikeIsotopesOnly) {
    LoadSpinSystem({{1, 19, 1}, {1, 1, 1}, {1, 2, 3}, {0, 5, 7, 1, 0, 6, 2, 3, 0}, 100.0, 1e-7, 0});
    PrepareSpinSystem();
    const std::vector<double> expected = {0, 5000 * 0.001, 7000 * 0.001, 0, 0, 6000 * 0.001, 7000 * 0.001, 0, 0};
    EXPECT_EQ(std::vector<double>(::Run.Spins.CouplingMatrix, ::Run.Spins.CouplingMatrix + 9), expected);
}

TEST(SpinSystem, NoGroupsIsFatal) {
    TemporaryDirectory work;
    EXPECT_EQ(ExitCodeOfChild([&] {
                  UseFilesIn(work.Path);
                  LoadSpinSystem({{}, {}, {}, {}, 100.0, 1e-7, 0});
                  PrepareSpinSystem();
              }),
              0);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), "ERRMSG: Sorry, there is no NMR atom.\n");
}

// On purpose the stored values from 16! on have ten digits: results depend on them, and computing them is no
// mending.
TEST(Factorial, StoredValues) {
    static constexpr double Stored[] = {20922789890000.0, 355687428100000.0, 6402373706000000.0,
                                        1.216451004e17,   2.432902008e18,    5.109094217e19,
                                        1.124000728e21,   2.585201674e22,    6.204484017e23};
    double exact = 1.0;
    for (int n = 0; n <= 24; ++n) {
        exact *= n > 0 ? n : 1;
        if (n <= 15) {
            EXPECT_EQ(FactorialTable[n], exact) << n;
        } else {
            EXPECT_EQ(FactorialTable[n], Stored[n - 16]) << n;
            EXPECT_NE(FactorialTable[n], exact) << n;
            EXPECT_NEAR(FactorialTable[n] / exact, 1.0, StoredPrecision) << n;
        }
    }
}

TEST(Factorial, ContinuesByMultiplication) {
    EXPECT_EQ(Factorial(5), 120.0);
    EXPECT_EQ(Factorial(24), 6.204484017e23);
    EXPECT_EQ(Factorial(25), 6.204484017e23 * 25);
    EXPECT_EQ(Factorial(26), 6.204484017e23 * 25 * 26);
    EXPECT_TRUE(std::isfinite(Factorial(LargestGroup + 1)));
    EXPECT_NEAR(Factorial(170) / std::exp(std::lgamma(171.0)), 1.0, 1e-8);
}

TEST(GroupSpinMultiplicity, SmallGroups) {
    EXPECT_EQ(GroupSpinMultiplicity(0, 0), 1.0);
    EXPECT_EQ(GroupSpinMultiplicity(1, 1), 1.0);
    EXPECT_EQ(GroupSpinMultiplicity(2, 2), 1.0);
    EXPECT_EQ(GroupSpinMultiplicity(2, 0), 1.0);
    EXPECT_EQ(GroupSpinMultiplicity(3, 1), 2.0);
    EXPECT_EQ(GroupSpinMultiplicity(4, 2), 3.0);
    EXPECT_EQ(GroupSpinMultiplicity(4, 0), 2.0);
}

// Property: the number of ways to reach J is the number of states of projection J less that of projection J
// + 1. Set-up: binomials by Pascal's rule, exact in doubles up to n = 50. Right because each multiplet of
// spin J or more has one state of projection J. Tolerance: exact to the last digits below 16!, three stored
// factorials beyond.
TEST(GroupSpinMultiplicity, AgreesWithADirectCount) {
    std::vector<double> binomials = {1.0};
    for (int n = 1; n <= 40; ++n) {
        binomials.push_back(0.0);
        for (std::size_t k = binomials.size() - 1; k > 0; --k) {
            binomials[k] += binomials[k - 1];
        }
        for (int twoJ = n % 2; twoJ <= n; twoJ += 2) {
            const std::size_t down = static_cast<std::size_t>((n - twoJ) / 2);
            const double count = binomials[down] - (down > 0 ? binomials[down - 1] : 0.0);
            const double tolerance = n <= 15 ? 4e-16 : 3 * StoredPrecision;
            EXPECT_NEAR(GroupSpinMultiplicity(n, twoJ) / count, 1.0, tolerance) << n << " " << twoJ;
        }
    }
}

// Property: the multiplets exhaust the 2^n states of n nuclei. Right because 2J + 1 states belong to each.
// Tolerance: rounding below 16!, three stored factorials beyond.
TEST(GroupSpinMultiplicity, MultipletsExhaustTheStates) {
    for (int n = 0; n <= LargestGroup; ++n) {
        double states = 0.0;
        for (int twoJ = n; twoJ >= 0; twoJ -= 2) {
            states += GroupSpinMultiplicity(n, twoJ) * (twoJ + 1);
        }
        EXPECT_NEAR(states / std::ldexp(1.0, n), 1.0, n <= 15 ? 1e-14 : 3 * StoredPrecision) << n;
    }
}

TEST(DegeneracyOfWeight, AddsAHundredthAndCuts) {
    EXPECT_EQ(DegeneracyOfWeight(1.0), 1);
    EXPECT_EQ(DegeneracyOfWeight(1.995), 2);
    EXPECT_EQ(DegeneracyOfWeight(1.98), 1);
    EXPECT_EQ(DegeneracyOfWeight(2.0e10), INT_MAX);
}
