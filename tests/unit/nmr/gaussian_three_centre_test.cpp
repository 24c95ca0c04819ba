// SPDX-License-Identifier: MIT
// Tests of the three-centre integrals by six Gaussians, and of the Boys function under them.
#include "ground/run_state.h"
#include "nmr/gaussian_three_centre.h"
#include "nmr/three_centre_integrals.h"
#include "numerics/boys_function.h"
#include "tests/reference/shielding/three_centre_references.inc"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

// The stored values have exact Boys functions; for two d orbitals the asymptotic form beyond the switch points shows.
static constexpr double ReferenceTolerance = 1e-8;
static constexpr double AsymptoticTolerance = 6e-8;
// The printed coefficients have nine digits; the fit itself is good to a few 1e-4 of the largest element.
static constexpr double FitTolerance = 3e-3;

namespace {

SlaterAtom MakeAtom(int shell, const double* zeta, const double* position) {
    return {shell, {zeta[0], zeta[1], zeta[2]}, shell == 1 ? 1 : shell == 2 ? 4 : 9, position, {}};
}

// F_m(t) by its series of positive terms.
double ExactBoys(int m, double t) {
    double term = 1.0 / (2 * m + 1);
    double sum = term;
    for (int i = 1; i < 200; ++i) {
        term *= 2.0 * t / (2 * m + 1 + 2 * i);
        sum += term;
    }
    return std::exp(-t) * sum;
}

const double SwitchPoints[9] = {16.3578, 17.4646, 15.2368, 16.0419, 16.8955, 17.7822, 15.8077, 16.5903, 17.3336};

}  // namespace

// Property: accurate to double precision up to each switch point. Reference: the series, whose terms are all positive.
TEST(BoysFunction, BelowTheSwitchPoints) {
    for (int m = 0; m <= 8; ++m) {
        EXPECT_EQ(BoysFunction(m, 0.0), 1.0 / (2 * m + 1));
        EXPECT_EQ(BoysFunction(m, 1e-15), 1.0 / (2 * m + 1));
        for (const double t : {2e-15, 1e-9, 0.01, 0.0624, 0.0626, 0.3, 1.0, 2.7, 5.55, 9.1, 12.34, 15.0, 15.2367,
                               15.8076, 16.3577, 16.8954, 17.3335, 17.7821}) {
            if (t < SwitchPoints[m]) {
                EXPECT_NEAR(BoysFunction(m, t) / ExactBoys(m, t), 1.0, 5e-14) << m << " " << t;
            }
        }
    }
}

// Property: beyond its switch point each order is exactly the first term of the asymptotic series, which leaves a step
// there: 1e-8 for m = 0 and 7e-3 for m = 8.
TEST(BoysFunction, AsymptoticFormBeyondTheSwitchPoints) {
    const double factors[9] = {0.5, 0.25, 0.375, 0.9375, 3.28125, 14.765625, 81.2109375, 527.87109375, 3959.033203125};
    for (int m = 0; m <= 8; ++m) {
        for (const double t : {SwitchPoints[m] + 1e-4, 17.9, 18.0, 30.0, 1e4}) {
            const double expected = factors[m] * std::sqrt(std::acos(-1.0) / t) / std::pow(t, m);
            EXPECT_NEAR(BoysFunction(m, t) / expected, 1.0, 1e-14) << m << " " << t;
        }
        EXPECT_NEAR(BoysFunction(m, SwitchPoints[m] + 1e-4) / ExactBoys(m, SwitchPoints[m] + 1e-4), 1.0, 8e-3);
    }
    EXPECT_GT(std::fabs(BoysFunction(8, 17.3337) / ExactBoys(8, 17.3337) - 1.0), 1e-3);
}

TEST(BoysFunction, OrdersTogether) {
    for (const double t : {0.0, 0.4, 8.0, 15.5, 16.0, 17.0, 17.6, 17.95, 40.0}) {
        double values[9];
        BoysFunctions(8, t, values);
        for (int m = 0; m <= 8; ++m) {
            EXPECT_NEAR(values[m] / BoysFunction(m, t), 1.0, 5e-14) << m << " " << t;
        }
    }
}

TEST(BoysFunction, HigherOrdersAreLogged) {
    const TemporaryDirectory directory;
    UseFilesIn(directory.Path);
    ::Run.Report.LogEnabled = 1;
    EXPECT_EQ(BoysFunction(9, 1.0), 0.0);
    EXPECT_NE(ReadText(::Run.Job.LogFilePath).find("m >  8 is not supported"), std::string::npos);
    ResetRun();
}

TEST(GaussianThreeCentre, StoredElements) {
    for (const ThreeCentreReference& row : GaussianReferences) {
        ThreeCentreTables tables = {};
        ThreeCentreIntegrals(MakeAtom(row.ShellB, row.ZetaB, row.B), MakeAtom(row.ShellC, row.ZetaC, row.C), row.A,
                             tables);
        const auto& table = row.Component < 0 ? tables.Gauge : tables.Magnetic[row.Component];
        const double tolerance = row.Bra >= 4 && row.Ket >= 4 ? AsymptoticTolerance : ReferenceTolerance;
        EXPECT_NEAR(table[row.Bra][row.Ket], row.Value, tolerance)
            << row.Component << " " << row.ShellB << row.Bra << " " << row.ShellC << row.Ket;
    }
}

// Property: L is antihermitian also between Gaussians, and the reverse gauge is the gauge of the exchanged atoms.
TEST(GaussianThreeCentre, ExchangeOfTheAtoms) {
    const double a[3] = {0.3, 2.2, -1.6};
    const double b[3] = {-1.5, 0.2, 0.9};
    const double c[3] = {1.4, -0.8, 0.1};
    const double zetaB[3] = {1.8, 1.6, 1.2};
    const double zetaC[3] = {1.6, 1.7, 1.1};
    for (int shell = 1; shell <= 3; ++shell) {
        const SlaterAtom atomB = MakeAtom(3, zetaB, b);
        const SlaterAtom atomC = MakeAtom(shell, zetaC, c);
        ThreeCentreTables tables = {};
        ThreeCentreTables exchanged = {};
        ThreeCentreIntegrals(atomB, atomC, a, tables);
        ThreeCentreIntegrals(atomC, atomB, a, exchanged);
        for (int i = 0; i < atomB.OrbitalCount; ++i) {
            for (int j = 0; j < atomC.OrbitalCount; ++j) {
                EXPECT_NEAR(tables.ReverseGauge[i][j], exchanged.Gauge[j][i], 1e-12);
                for (int k = 0; k < 3; ++k) {
                    EXPECT_NEAR(tables.Magnetic[k][i][j], -exchanged.Magnetic[k][j][i], 1e-12) << i << j << k;
                }
            }
        }
    }
}

// Property: for shells 1 and 2 the six Gaussians come close to the Slater orbitals of the quadrature.
TEST(GaussianThreeCentre, NearTheSlaterOrbitals) {
    const double a[3] = {0.3, 2.6, -1.6};
    const double b[3] = {-1.5, 0.2, 0.9};
    const double c[3] = {1.4, -0.8, 0.1};
    const double zetaB[3] = {1.625, 1.7, 0.0};
    const double zetaC[3] = {1.2, 1.3, 0.0};
    for (int shell = 1; shell <= 2; ++shell) {
        const SlaterAtom atomB = MakeAtom(2, zetaB, b);
        const SlaterAtom atomC = MakeAtom(shell, zetaC, c);
        ThreeCentreTables slater = {};
        ThreeCentreTables gaussian = {};
        ThreeCentreIntegrals(atomB, atomC, a, slater);
        GaussianThreeCentre(atomB, atomC, a, gaussian);
        for (int i = 0; i < atomB.OrbitalCount; ++i) {
            for (int j = 0; j < atomC.OrbitalCount; ++j) {
                EXPECT_NEAR(slater.Gauge[i][j], gaussian.Gauge[i][j], FitTolerance * 0.1);
                EXPECT_NEAR(slater.ReverseGauge[i][j], gaussian.ReverseGauge[i][j], FitTolerance * 0.1);
                for (int k = 0; k < 3; ++k) {
                    EXPECT_NEAR(slater.Magnetic[k][i][j], gaussian.Magnetic[k][i][j], FitTolerance * 0.1);
                }
            }
        }
    }
}

TEST(BoysFunction, NotANumberStaysOne) {
    double values[9] = {};
    BoysFunctions(8, std::numeric_limits<double>::quiet_NaN(), values);
    for (const double value : values) {
        EXPECT_TRUE(std::isnan(value));
    }
}
