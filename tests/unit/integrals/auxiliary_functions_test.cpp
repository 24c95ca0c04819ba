// SPDX-License-Identifier: MIT
// The auxiliary functions against multi-precision values around every switch of method, and their limits.
#include "integrals/auxiliary_functions.h"

#include "ground/run_state.h"
#include "numerics/exponential_functions.h"
#include "numerics/factorial.h"
#include "tests/unit/integrals/integral_reference.h"

#include <gtest/gtest.h>

#include <cmath>

static constexpr double Epsilon = 2.2e-16;

// The rounding of the recursion: an error of B(n - 1) comes back n/|q| times, with that of the boundary terms
// added.
static double RecursionRounding(double q, int n) {
    const double size = std::fabs(q);
    const double boundary = 4.0 * Epsilon * std::exp(size);
    double bound = boundary / size;
    for (int k = 1; k <= n; ++k) {
        bound = (k * bound + boundary) / size;
    }
    return bound;
}

// The terms that a series leaves out, all of one parity and each at most a twentieth of the one before.
static double SeriesRemainder(double q, int n, int terms) {
    const int k = terms + (terms + n) % 2;
    return 1.06 * 2.0 * std::pow(std::fabs(q), k) / ((n + 1 + k) * FactorialTable[k]);
}

// Property: A(n, p) is the integral of t^n e^(-pt) from 1 on. Set-up: arguments up to both limits, low and high
// orders. The reference is a quadrature with 30 digits. Tolerance: all terms of the recursion are positive, so
// that each of the n steps adds a few roundings, and the exponential those of its argument.
TEST(AuxiliaryIntegrals, TableAIsTheIntegral) {
    for (const AuxiliaryARow& row : AuxiliaryARows) {
        double a[AuxiliaryTableSize];
        double b[AuxiliaryTableSize];
        AuxiliaryIntegrals(a, b, row.P, 0.0, row.N);
        EXPECT_NEAR(a[row.N] / row.Exact, 1.0, 3.0 * (row.N + 3) * Epsilon) << row.P << " " << row.N;
    }
}

// Property: B(n, q) is the branch that q and order choose, with all terms that it keeps and no more. Set-up: |q|
// on both sides of every switch, orders on both sides. The reference sums the same terms with 30 digits.
// Tolerance: rounding, grown by the recursion as integration by parts grows it; a series adds at most eight terms
// of up to e^|q|.
TEST(AuxiliaryIntegrals, TableBIsTheChosenBranch) {
    for (const AuxiliaryBRow& row : AuxiliaryBRows) {
        double a[AuxiliaryTableSize];
        double b[AuxiliaryTableSize];
        AuxiliaryIntegrals(a, b, 1.0, row.Q, row.Order);
        const bool limit = std::fabs(row.Q) <= 1e-06;
        const double rounding =
            limit || row.Terms > 0 ? 8.0 * Epsilon * std::exp(std::fabs(row.Q)) : RecursionRounding(row.Q, row.N);
        EXPECT_NEAR(b[row.N], row.Formula, rounding) << row.Q << " " << row.Order << " " << row.N;
    }
}

// Property: B(n, q) is the integral of t^n e^(-qt) from -1 to 1, to what the branch can do. The reference is a
// quadrature. Tolerance: the terms that the series leaves out, and the rounding of the recursion; twelve digits
// and the linear term at the limit values.
TEST(AuxiliaryIntegrals, TableBIsTheIntegral) {
    for (const AuxiliaryBRow& row : AuxiliaryBRows) {
        double a[AuxiliaryTableSize];
        double b[AuxiliaryTableSize];
        AuxiliaryIntegrals(a, b, 1.0, row.Q, row.Order);
        double tolerance = RecursionRounding(row.Q, row.N);
        if (std::fabs(row.Q) <= 1e-06) {
            tolerance = 1e-12 + std::fabs(row.Q);
        } else if (row.Terms > 0) {
            tolerance = SeriesRemainder(row.Q, row.N, row.Terms) + 8.0 * Epsilon * std::exp(std::fabs(row.Q));
        }
        EXPECT_NEAR(b[row.N], row.Exact, tolerance) << row.Q << " " << row.Order << " " << row.N;
    }
}

TEST(AuxiliaryIntegrals, LimitValuesAreTheStoredTwelveDigits) {
    double a[AuxiliaryTableSize];
    double b[AuxiliaryTableSize];
    AuxiliaryIntegrals(a, b, 1.0, 0.0, 4);
    const double expected[] = {2.0, 0.0, 0.666666666667, 0.0, 0.4, 0.0};
    for (int n = 0; n < 6; ++n) {
        EXPECT_EQ(b[n], expected[n]) << n;
    }
    AuxiliaryIntegrals(a, b, 1.0, -1e-06, 19);
    for (int n = 0; n < AuxiliaryTableSize; ++n) {
        EXPECT_EQ(b[n], n % 2 == 0 ? EvenMomentTable[n / 2] : 0.0) << n;
    }
    EXPECT_NE(EvenMomentTable[1], 2.0 / 3.0);  // on purpose not the quotient
}

TEST(AuxiliaryIntegrals, EntriesBeyondTheOrderAreZero) {
    for (const double q : {0.0, 0.3, 0.7, 1.5, 2.5, 5.0, -5.0}) {
        double a[AuxiliaryTableSize];
        double b[AuxiliaryTableSize];
        for (int n = 0; n < AuxiliaryTableSize; ++n) {
            a[n] = b[n] = 77.0;
        }
        AuxiliaryIntegrals(a, b, 2.0, q, 3);
        for (int n = 4; n < AuxiliaryTableSize; ++n) {
            EXPECT_EQ(a[n], 0.0) << q << " " << n;
            EXPECT_EQ(b[n], 0.0) << q << " " << n;
        }
        EXPECT_NE(a[3], 0.0) << q;
    }
}

TEST(AuxiliaryIntegrals, AnOrderOutOfRangeFillsTheTables) {
    for (const int order : {-1, 20, 25}) {
        double a[AuxiliaryTableSize];
        double b[AuxiliaryTableSize];
        double wholeA[AuxiliaryTableSize];
        double wholeB[AuxiliaryTableSize];
        AuxiliaryIntegrals(a, b, 2.0, 0.7, order);
        AuxiliaryIntegrals(wholeA, wholeB, 2.0, 0.7, 19);
        for (int n = 0; n < AuxiliaryTableSize; ++n) {
            EXPECT_EQ(a[n], wholeA[n]) << order << " " << n;
            EXPECT_EQ(b[n], wholeB[n]) << order << " " << n;
            EXPECT_NE(b[n], 0.0) << order << " " << n;
        }
    }
}

TEST(AuxiliaryIntegrals, ArgumentsOutOfRangeGiveZeroTables) {
    double a[AuxiliaryTableSize];
    double b[AuxiliaryTableSize];
    for (const double p : {100.0, 250.0, -100.0, 1e-06, 0.0, -1e-06}) {
        AuxiliaryIntegrals(a, b, p, 100.0, 19);
        for (int n = 0; n < AuxiliaryTableSize; ++n) {
            EXPECT_EQ(a[n], 0.0) << p << " " << n;
            EXPECT_EQ(b[n], 0.0) << p << " " << n;
        }
    }
    AuxiliaryIntegrals(a, b, 99.99, -100.0, 19);
    EXPECT_GT(a[19], 0.0);
    EXPECT_EQ(b[0], 0.0);
}

// Property: B(n, -q) is (-1)^n B(n, q). Set-up: one |q| for each method. Both signs run the same operations, so
// that the even entries are equal; tolerance of the odd ones: the order of two boundary terms.
TEST(AuxiliaryIntegrals, TheSignOfQDoesNotChangeTheBranch) {
    for (const double q : {0.3, 0.8, 1.7, 2.9, 3.5}) {
        double a[AuxiliaryTableSize];
        double plus[AuxiliaryTableSize];
        double minus[AuxiliaryTableSize];
        AuxiliaryIntegrals(a, plus, 1.0, q, 19);
        AuxiliaryIntegrals(a, minus, 1.0, -q, 19);
        for (int n = 0; n < AuxiliaryTableSize; ++n) {
            const double sign = n % 2 == 0 ? 1.0 : -1.0;
            EXPECT_NEAR(minus[n], sign * plus[n], 2.0 * RecursionRounding(q, n)) << q << " " << n;
        }
    }
}

TEST(PowerOf, ZeroStaysZeroForEveryPower) {
    EXPECT_EQ(PowerOf(0.0, 0), 0.0);  // on purpose not 1
    EXPECT_EQ(PowerOf(0.0, 3), 0.0);
    EXPECT_EQ(PowerOf(-0.0, -2), 0.0);
}

TEST(PowerOf, IntegerPowers) {
    EXPECT_EQ(PowerOf(2.0, -2), 0.25);
    EXPECT_EQ(PowerOf(3.0, 0), 1.0);
    EXPECT_EQ(PowerOf(-3.0, 5), -243.0);
    EXPECT_EQ(PowerOf(2.0, 62), 4611686018427387904.0);
    EXPECT_EQ(PowerOf(1.0, -2147483647 - 1), 1.0);
}

static double E1(double x) {
    double value = 0.0;
    ExponentialIntegralE1(x, &value);
    return value;
}

// Property: each of the three forms with its stored constants, Euler's constant among them. Set-up: points around
// both switches and around -0.372, the zero of the function. The reference evaluates the same form with 30
// digits. Tolerance: rounding of a sum whose largest terms are up to e^|x| for negative x, else about 20.
TEST(ExponentialIntegral, IsTheChosenForm) {
    for (const IntegralE1Row& row : IntegralE1Rows) {
        const double size = row.X > 4.0 ? std::fabs(row.Formula) : std::fmax(20.0, std::fabs(row.Formula));
        EXPECT_NEAR(E1(row.X), row.Formula, 64.0 * Epsilon * size) << row.X;
    }
}

// Property: E1, and -Ei(|x|) for negative x. The reference comes from multi-precision arithmetic. Tolerance: the
// stored constants have eight digits, and the series stops at terms of 1e-6. Just below 4 that is a relative
// error of 2e-5.
TEST(ExponentialIntegral, IsTheExponentialIntegral) {
    for (const IntegralE1Row& row : IntegralE1Rows) {
        const double size = std::fabs(row.Exact);
        const double tolerance = 1e-7 * (row.X > 4.0 ? size : std::fmax(1.0, 10.0 * size));
        EXPECT_NEAR(E1(row.X), row.Exact, tolerance) << row.X;
    }
}

TEST(ExponentialIntegral, NearZeroIsAConstant) {
    EXPECT_EQ(E1(1e-07), 1e38);
    EXPECT_EQ(E1(-1e-07), 1e38);
    EXPECT_EQ(E1(0.0), 1e38);
    EXPECT_LT(E1(1e-06), 14.0);
}

// The form in 4/x and the polynomial disagree by 8e-8 at the switch: the point 4.0 itself belongs to the
// polynomial.
TEST(ExponentialIntegral, FourBelongsToThePolynomial) {
    const double at = E1(4.0);
    const double below = E1(std::nextafter(4.0, 0.0));
    const double above = E1(std::nextafter(4.0, 5.0));
    EXPECT_NEAR(at, below, 1e-15);
    EXPECT_GT(std::fabs(above - at), 1e-8);
}

TEST(ExponentialIntegral, TheSeriesEndsWhereItOverflows) {
    EXPECT_EQ(E1(-1000.0), -HUGE_VAL);
    EXPECT_TRUE(std::isfinite(E1(-700.0)));
}

static int UnitsOf(void (*work)()) {
    const int shift = ::Run.Report.PollShift;
    ::Run.Report.PollShift = 30;
    ::Run.Report.PollCounter = 0;
    work();
    const int units = ::Run.Report.PollCounter;
    ::Run.Report.PollShift = shift;
    ::Run.Report.PollCounter = 0;
    return units;
}

TEST(ExponentialIntegral, EveryFormPolls) {
    EXPECT_EQ(UnitsOf([] { E1(5.0); }), 100);
    EXPECT_EQ(UnitsOf([] { E1(1.0); }), 100);
    EXPECT_EQ(UnitsOf([] { E1(0.0); }), 100);
    EXPECT_EQ(UnitsOf([] { E1(-9.0); }), 100);
    EXPECT_EQ(UnitsOf([] { ExponentialPairPlus(1.0, 0.5); }), 200);
    EXPECT_EQ(UnitsOf([] { ExponentialPairMinus(1.0, 0.0); }), 100);
}

// Property: both pair functions with the stored constants, their limit for small b with its own Euler constant of
// six digits. The reference evaluates the formula with 30 digits. Tolerance: rounding of terms of up to e^d
// E1(2b).
TEST(ExponentialPairs, AreTheFormula) {
    for (const ExponentialPairRow& row : ExponentialPairRows) {
        EXPECT_NEAR(ExponentialPairPlus(row.A, row.B), row.Plus, 1e-13) << row.A << " " << row.B;
        EXPECT_NEAR(ExponentialPairMinus(row.A, row.B), row.Minus, 1e-13) << row.A << " " << row.B;
    }
}

// Property: the two halves of a pair add up to 2 e^d E1(2a). Exact but for the rounding of terms up to 10.
TEST(ExponentialPairs, TheirSumHoldsOneTermOnly) {
    for (const double b : {0.7, 1e-06, 0.0, -0.4}) {
        const double a = 1.3;
        const double d = std::fabs(b) >= 1e-06 ? a - b : a;
        const double sum = ExponentialPairPlus(a, b) + ExponentialPairMinus(a, b);
        EXPECT_NEAR(sum, 2.0 * std::exp(d) * E1(2.0 * a), 1e-13) << b;
    }
}

// Table Q written out once more as the sums over all lower entries of X, of one parity each.
static double ExpectedQ(int k, const double* q, const double* x, double a, double b) {
    const double g = k % 2 == 0 ? ExponentialPairMinus(a, b) : -ExponentialPairPlus(a, b);
    double same = 0.0;
    double other = 0.0;
    for (int i = 0; i < k; ++i) {
        ((k - 1 - i) % 2 == 0 ? same : other) += x[i];
    }
    const double cp = 2.0 * std::cosh(b);
    const double cm = 2.0 * std::sinh(b);
    return ((k == 0 ? 0.0 : k * q[k - 1]) + g - cp * other - cm * same) / (a - b);
}

// The same for P: the alternating sum of Y, its sign changing with k.
static double ExpectedP(int k, const double* p, const double* y, double a, double b) {
    const double g = k % 2 == 0 ? ExponentialPairMinus(a, b) : ExponentialPairPlus(a, b);
    double sum = 0.0;
    for (int i = 0; i < k; ++i) {
        sum += (k - 1 - i) % 2 == 0 ? y[i] : -y[i];
    }
    return (sum * std::exp(-a) + g - (k == 0 ? 0.0 : k * p[k - 1])) / (a - b);
}

// Property: the recurrences of both tables. Set-up: unlike entries of X and Y, so that each missing or doubled
// one shows. The reference sums X and Y anew for each entry. Tolerance: rounding, grown up to 7!/(a - b)^7 times.
TEST(ExponentialTables, FollowTheirRecurrences) {
    const double x[7] = {0.31, -1.7, 2.3, 0.9, -0.77, 1.31, 0.05};
    const double y[7] = {0.83, 0.41, -1.1, 2.9, 0.35, -0.6, 1.9};
    for (const double b : {0.45, -1.2, 0.0}) {
        const double a = 1.7;
        double p[8];
        double q[8];
        ExponentialAuxiliaryTables(a, b, x, y, 7, p, q);
        for (int k = 0; k < 8; ++k) {
            EXPECT_NEAR(q[k], ExpectedQ(k, q, x, a, b), 1e-12 * (1.0 + std::fabs(q[k]))) << b << " " << k;
            EXPECT_NEAR(p[k], ExpectedP(k, p, y, a, b), 1e-12 * (1.0 + std::fabs(p[k]))) << b << " " << k;
        }
    }
}

TEST(ExponentialTables, TheOrderCountsForTableP) {
    const double x[7] = {1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0};
    const double y[4] = {1.0, 2.0, 3.0, 4.0};
    double whole[5];
    double q[8];
    ExponentialAuxiliaryTables(2.0, 0.5, x, y, 4, whole, q);
    for (int order = 0; order < 4; ++order) {
        double p[5] = {7.0, 7.0, 7.0, 7.0, 7.0};
        double sameQ[8];
        ExponentialAuxiliaryTables(2.0, 0.5, x, y, order, p, sameQ);
        for (int k = 0; k < 5; ++k) {
            EXPECT_EQ(p[k], k <= order ? whole[k] : 7.0) << order << " " << k;
        }
        EXPECT_EQ(sameQ[7], q[7]) << order;
    }
}
