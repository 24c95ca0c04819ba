// SPDX-License-Identifier: MIT
// Coulomb integrals of Slater clouds against multi-precision values, closed formulas and limits.
#include "integrals/two_centre_coulomb.h"

#include "ground/run_state.h"
#include "integrals/auxiliary_functions.h"
#include "integrals/gamma_matrix.h"
#include "tests/unit/integrals/integral_reference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

static constexpr double Epsilon = 2.2e-16;

// What the cut series of B can take off an integral, Hartree.
static constexpr double SeriesTolerance = 5e-7;

// One line for each class: how far rounding may take it from its own formula. The fifth shell comes with the
// eleventh power of 2 zeta2 R, and its terms are the largest against their sum.
static constexpr struct {
    int N1;
    int N2;
    double Rounding;
} Classes[] = {
    {1, 1, 1e-14}, {1, 2, 1e-14}, {1, 3, 1e-14}, {1, 4, 1e-14}, {1, 5, 2e-13}, {2, 2, 1e-14},
    {2, 3, 1e-14}, {2, 4, 1e-14}, {2, 5, 2e-13}, {3, 3, 1e-14}, {3, 4, 1e-14}, {3, 5, 2e-13},
};

static double RoundingOf(int n1, int n2) {
    for (const auto& line : Classes) {
        if (line.N1 == n1 && line.N2 == n2) {
            return line.Rounding;
        }
    }
    return 0.0;
}

static double ValueOf(const CoulombRow& row) {
    return TwoCentreCoulomb(row.N1, row.N2, row.Zeta1, row.Zeta2, row.Distance);
}

// Property: each class is its formula with the branch of B that its own order selects. Set-up: |q| around every
// switch, short and long distances. The reference evaluates the formula term by term with 30 digits. Tolerance:
// by class, plus the 1/R that the extent of the clouds is taken from.
TEST(TwoCentreCoulomb, IsItsFormula) {
    for (const CoulombRow& row : CoulombRows) {
        const double tolerance = RoundingOf(row.N1, row.N2) + 8.0 * Epsilon / row.Distance;
        EXPECT_NEAR(ValueOf(row), row.Formula, tolerance)
            << row.N1 << row.N2 << " " << row.Zeta1 << " " << row.Zeta2 << " " << row.Distance;
    }
}

// Property: the repulsion of the two clouds. The reference averages the potential of one over spheres of the
// other, and so needs no elliptical coordinates. Tolerance: what the series leaves out.
TEST(TwoCentreCoulomb, IsTheRepulsionOfTheClouds) {
    for (const CoulombRow& row : CoulombRows) {
        EXPECT_NEAR(ValueOf(row), row.Exact, SeriesTolerance)
            << row.N1 << row.N2 << " " << row.Zeta1 << " " << row.Zeta2 << " " << row.Distance;
    }
}

// Known to nine digits, for zeta1 = 1.1, zeta2 = 1.45 and 2.3 bohr, and two hydrogen clouds at 2 bohr.
TEST(TwoCentreCoulomb, KnownValues) {
    const double hydrogen = 0.5 * (1.0 - (1.0 + 11.0 / 4 + 3.0 + 4.0 / 3) * std::exp(-4.0));
    EXPECT_NEAR(TwoCentreCoulomb(1, 1, 1.0, 1.0, 2.0), hydrogen, 1e-12);
    const struct {
        int N1;
        int N2;
        double Value;
    } known[] = {{1, 1, 0.413080642}, {1, 2, 0.389965631}, {1, 3, 0.354515212}, {2, 3, 0.319381437},
                 {3, 3, 0.280151122}, {2, 5, 0.255400596}, {3, 5, 0.235564180}};
    for (const auto& line : known) {
        EXPECT_NEAR(TwoCentreCoulomb(line.N1, line.N2, 1.1, 1.45, 2.3), line.Value, SeriesTolerance)
            << line.N1 << line.N2;
    }
}

// Property: two 1s clouds of one exponent, J = [1 - (1 + 11/8 s + 3/4 s^2 + 1/6 s^3) e^(-2s)]/R with s = zeta R
// (Roothaan 1951). Tolerance: B(2, 0) is stored with twelve digits.
TEST(TwoCentreCoulomb, ClosedFormOfEqualFirstShells) {
    for (const double zeta : {0.7, 1.2, 2.6}) {
        for (const double distance : {0.4, 1.4, 5.0, 20.0}) {
            const double s = zeta * distance;
            const double screening = 1.0 + s * (11.0 / 8 + s * (0.75 + s / 6));
            const double expected = (1.0 - screening * std::exp(-2.0 * s)) / distance;
            EXPECT_NEAR(TwoCentreCoulomb(1, 1, zeta, zeta, distance), expected, 1e-12) << zeta << " " << distance;
        }
    }
}

// At p = 100 table A is zero, and nothing but the point charges is left: on purpose not the potential of a
// diffuse cloud.
TEST(TwoCentreCoulomb, FarCloudsArePointCharges) {
    for (const auto& line : Classes) {
        EXPECT_EQ(TwoCentreCoulomb(line.N1, line.N2, 1.25, 1.25, 40.0), 1.0 / 40.0) << line.N1 << line.N2;
        EXPECT_EQ(TwoCentreCoulomb(line.N1, line.N2, 9.9, 0.1, 10.0), 0.1) << line.N1 << line.N2;
        const double near = TwoCentreCoulomb(line.N1, line.N2, 1.25, 1.2499, 39.99);
        EXPECT_NEAR(near, 1.0 / 39.99, 1e-13) << line.N1 << line.N2;
    }
    EXPECT_LT(TwoCentreCoulomb(3, 5, 9.8, 0.1, 10.0), 0.06);  // just below, the diffuse cloud is seen
}

TEST(TwoCentreCoulomb, TablesOfZeroGiveTheInverseDistance) {
    EXPECT_EQ(TwoCentreCoulomb(1, 1, 4e-07, 4e-07, 1.0), 1.0);
    EXPECT_EQ(TwoCentreCoulomb(2, 3, 4e-07, 4e-07, 1.0), 1.0);
}

// Property: which cloud is called the first is of no matter. Tolerance: rounding, as in the classes' own lines.
TEST(TwoCentreCoulomb, SwappingTwoCloudsOfOneShell) {
    for (int n = 1; n <= 3; ++n) {
        for (const double other : {1.3, 1.9, 2.4, 3.3}) {
            const double value = TwoCentreCoulomb(n, n, 1.1, other, 2.3);
            // two series that are cut at the same power, but in different formulas for n > 1
            EXPECT_NEAR(TwoCentreCoulomb(n, n, other, 1.1, 2.3), value, SeriesTolerance) << n << " " << other;
        }
    }
}

// Property: as the distance falls the integral goes to the one-centre integral, from below, by c R^2. Set-up: equal
// exponents, so that B has its limit values. Tolerance: the curvature, and 1/R of rounding.
TEST(TwoCentreCoulomb, ShortDistancesGoToOneCentre) {
    for (const auto& line : Classes) {
        const double limit = OneCentreCoulomb(line.N1, line.N2, 1.4, 1.4);
        const double near = TwoCentreCoulomb(line.N1, line.N2, 1.4, 1.4, 0.002);
        EXPECT_NEAR(near, limit, 1e-5) << line.N1 << line.N2;
        EXPECT_LT(TwoCentreCoulomb(line.N1, line.N2, 1.4, 1.4, 0.5), limit) << line.N1 << line.N2;
    }
}

TEST(TwoCentreCoulomb, TwoCallsGiveTheSameBytes) {
    for (const CoulombRow& row : CoulombRows) {
        const double first = ValueOf(row);
        EXPECT_EQ(ValueOf(row), first);
    }
}

// On purpose the order of a class is above the highest index in use: class (1,2) at |q| = 0.8 asks for order 9
// and gets the eight-term series, although recursion to the indices that it needs would be better by 1e-8.
TEST(TwoCentreCoulomb, TheOrderOfTheClassChoosesTheSeries) {
    const double exact = 0.38996563054189;
    const double value = TwoCentreCoulomb(1, 2, 1.1, 1.45, 2.3);
    EXPECT_GT(value - exact, 1e-8);
    EXPECT_LT(value - exact, 3e-8);
}

TEST(TwoCentreCoulomb, EveryClassPolls) {
    const int shift = ::Run.Report.PollShift;
    ::Run.Report.PollShift = 30;
    for (const auto& line : Classes) {
        for (const double distance : {2.0, 90.0}) {
            ::Run.Report.PollCounter = 0;
            TwoCentreCoulomb(line.N1, line.N2, 1.4, 1.1, distance);
            EXPECT_EQ(::Run.Report.PollCounter, 200) << line.N1 << line.N2;
        }
    }
    ::Run.Report.PollShift = shift;
    ::Run.Report.PollCounter = 0;
}

// Property: the repulsion of two clouds on one centre. The reference is a quadrature of the potential of one over
// the other. Tolerance: both parts of the bracket are up to (a + b)/a times their difference.
TEST(OneCentreCoulomb, IsTheRepulsionOfTheClouds) {
    for (const OneCentreRow& row : OneCentreRows) {
        EXPECT_NEAR(OneCentreCoulomb(row.N1, row.N2, row.Zeta1, row.Zeta2), row.Exact, 1e-13)
            << row.N1 << row.N2 << " " << row.Zeta1 << " " << row.Zeta2;
    }
}

// Closed values of equal exponents: 5/8 zeta of the first shell, 93/256 zeta of the second (Roothaan 1951).
TEST(OneCentreCoulomb, ClosedValues) {
    EXPECT_NEAR(OneCentreCoulomb(1, 1, 1.7, 1.7), 0.625 * 1.7, 1e-15);
    EXPECT_NEAR(OneCentreCoulomb(2, 2, 1.7, 1.7), 93.0 / 256 * 1.7, 1e-15);
}

TEST(OneCentreCoulomb, IsSymmetricInTheClouds) {
    for (int n1 = 1; n1 <= 3; ++n1) {
        for (int n2 = 1; n2 <= 3; ++n2) {
            EXPECT_NEAR(OneCentreCoulomb(n1, n2, 0.8, 1.9), OneCentreCoulomb(n2, n1, 1.9, 0.8), 1e-14) << n1 << n2;
        }
    }
}
