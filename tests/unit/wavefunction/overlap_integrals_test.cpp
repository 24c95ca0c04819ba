// SPDX-License-Identifier: MIT
// Overlap integrals in the frame of a pair: closed formulas from the literature, the agreement of the two ways to
// them, and the constants that they keep.
#include "wavefunction/overlap_integrals.h"

#include "integrals/auxiliary_functions.h"
#include "numerics/factorial.h"

#include <gtest/gtest.h>

#include <cmath>

// The closed forms hold 1/sqrt(3) and 1/480 with nine digits.
static constexpr double StoredFactors = 5e-9;

// An atom of the row of that shell.
static OverlapCentre CentreOf(int shell, double s, double p, double d) {
    return {shell == 1 ? 1 : shell == 2 ? 6 : 16, shell, {s, p, d}};
}

// Property: the closed forms are the general expansion. Set-up: both ways for all pairs of shells in both orders,
// unequal exponents, with |q| at or below 1e-6 or above 3 where both take the same B. Tolerance: the stored
// factors, relative to normalised orbitals, and the recursion's rounding.
TEST(OverlapIntegrals, ClosedFormsAgreeWithTheGeneralWay) {
    const double points[][3] = {{1.5, 1.5, 2.5}, {1.1, 2.7, 4.1}, {3.4, 0.9, 3.0}, {0.8, 0.8, 0.1}, {1.6, 1.6, 12.0}};
    for (const auto& point : points) {
        for (int na = 1; na <= 3; ++na) {
            for (int nb = 1; nb <= 3; ++nb) {
                const OverlapCentre i = CentreOf(na, point[0], point[0], 1.0);
                const OverlapCentre j = CentreOf(nb, point[1], point[1], 1.0);
                LocalOverlaps closed;
                LocalOverlaps general;
                OverlapClosedForm(i, j, point[2], &closed);
                OverlapGeneral(i, j, point[2], &general);
                for (int la = 0; la < na && la < 2; ++la) {
                    for (int lb = 0; lb < nb && lb < 2; ++lb) {
                        for (int m = 0; m <= la && m <= lb; ++m) {
                            EXPECT_NEAR(closed.Value[la][lb][m], general.Value[la][lb][m], StoredFactors)
                                << na << la << nb << lb << m << " " << point[0];
                        }
                    }
                }
            }
        }
    }
}

// The factors are kept with their nine digits on purpose: with exact ones the ratios would be 1 to rounding.
TEST(OverlapIntegrals, ClosedFormsHoldTheStoredFactors) {
    const double root = 0.5773502717125849 * 1.7320508075688772;
    const double ratios[3][3] = {{1.0, root, root}, {0.0, 1.0, 1.0}, {0.0, 0.0, 0.00208333333 * 480.0}};
    for (int na = 1; na <= 3; ++na) {
        for (int nb = na; nb <= 3; ++nb) {
            LocalOverlaps closed;
            LocalOverlaps general;
            OverlapClosedForm(CentreOf(na, 1.5, 1.5, 1.0), CentreOf(nb, 1.5, 1.5, 1.0), 2.5, &closed);
            OverlapGeneral(CentreOf(na, 1.5, 1.5, 1.0), CentreOf(nb, 1.5, 1.5, 1.0), 2.5, &general);
            EXPECT_NEAR(closed.Value[0][0][0] / general.Value[0][0][0], ratios[na - 1][nb - 1], 1e-13) << na << nb;
        }
    }
    LocalOverlaps closed;
    LocalOverlaps general;
    OverlapClosedForm(CentreOf(2, 1.5, 1.5, 1.0), CentreOf(2, 1.5, 1.5, 1.0), 2.5, &closed);
    OverlapGeneral(CentreOf(2, 1.5, 1.5, 1.0), CentreOf(2, 1.5, 1.5, 1.0), 2.5, &general);
    EXPECT_NEAR(closed.Value[0][1][0] / general.Value[0][1][0], root, 1e-13);
    EXPECT_NEAR(closed.Value[1][1][1] / general.Value[1][1][1], 1.0, 1e-13);
}

// Property: two 1s orbitals of one exponent, S = (1 + s + s^2/3) e^(-s) with s = zeta R; two of different
// exponents against the formula of Mulliken, Rieke, Orloff and Orloff. Tolerance: twelve digits of B(2, 0), and
// the digits that the sum of the second formula loses.
TEST(OverlapIntegrals, HydrogenHydrogen) {
    for (const double s : {0.1, 1.0, 2.4, 9.0}) {
        LocalOverlaps overlaps;
        OverlapClosedForm(CentreOf(1, 1.2, 0.0, 0.0), CentreOf(1, 1.2, 0.0, 0.0), s / 1.2, &overlaps);
        EXPECT_NEAR(overlaps.Value[0][0][0], (1.0 + s + s * s / 3.0) * std::exp(-s), 1e-12) << s;
    }
    const double a = 1.6;
    const double b = 0.9;
    const double r = 2.1;
    const double p = (a + b) * r / 2.0;
    const double t = (a - b) / (a + b);
    const double kappa = 0.5 * (t + 1.0 / t);
    const double closed = std::sqrt(1.0 - t * t) / (t * p) *
                          (-(1.0 - kappa) * (2.0 * (1.0 + kappa) + p * (1.0 + t)) * std::exp(-p * (1.0 + t)) +
                           (1.0 + kappa) * (2.0 * (1.0 - kappa) + p * (1.0 - t)) * std::exp(-p * (1.0 - t)));
    LocalOverlaps overlaps;
    OverlapClosedForm(CentreOf(1, a, 0.0, 0.0), CentreOf(1, b, 0.0, 0.0), r, &overlaps);
    EXPECT_NEAR(overlaps.Value[0][0][0], closed, 1e-13);
}

// Property: 2s-2s, 2s-2p sigma, 2p-2p sigma and pi of one exponent in closed form, with s = zeta R (Mulliken,
// Rieke, Orloff and Orloff 1949). Tolerance: the stored factors.
TEST(OverlapIntegrals, CarbonCarbonOfOneExponent) {
    for (const double s : {0.5, 2.0, 4.3, 8.0}) {
        LocalOverlaps overlaps;
        OverlapClosedForm(CentreOf(2, 1.6, 1.6, 0.0), CentreOf(2, 1.6, 1.6, 0.0), s / 1.6, &overlaps);
        const double e = std::exp(-s);
        const double s2 = s * s;
        const double ss = e * (1.0 + s + 4.0 / 9 * s2 + s2 * s / 9 + s2 * s2 / 45);
        const double sp = e * s * (1.0 + s + 7.0 / 15 * s2 + 2.0 / 15 * s2 * s) / (2.0 * std::sqrt(3.0));
        const double sigma = e * (-1.0 - s - s2 / 5 + 2.0 / 15 * s2 * s + s2 * s2 / 15);
        const double pi = e * (1.0 + s + 2.0 / 5 * s2 + s2 * s / 15);
        EXPECT_NEAR(overlaps.Value[0][0][0], ss, StoredFactors) << s;
        EXPECT_NEAR(overlaps.Value[0][1][0], sp, StoredFactors) << s;
        EXPECT_NEAR(overlaps.Value[1][0][0], sp, StoredFactors) << s;
        EXPECT_NEAR(overlaps.Value[1][1][0], sigma, StoredFactors) << s;
        EXPECT_NEAR(overlaps.Value[1][1][1], pi, StoredFactors) << s;
    }
}

// Property: at one place orbitals of one shell and exponent become orthonormal. Set-up: the shortest distance at
// which anything is computed. In frames that face each other the odd one of sigma pairs has the other sign.
// Tolerance: the stored and angular factors, and S = 1 - O(R^2).
TEST(OverlapIntegrals, ShortDistancesGoToUnity) {
    for (int n = 1; n <= 3; ++n) {
        LocalOverlaps overlaps;
        OverlapGeneral(CentreOf(n, 1.4, 1.4, 1.4), CentreOf(n, 1.4, 1.4, 1.4), 0.001, &overlaps);
        for (int l = 0; l < n; ++l) {
            for (int m = 0; m <= l; ++m) {
                const double sign = (l + m) % 2 == 0 ? 1.0 : -1.0;
                EXPECT_NEAR(overlaps.Value[l][l][m], sign, 4e-6) << n << l << m;
            }
        }
        OverlapClosedForm(CentreOf(n, 1.4, 1.4, 1.4), CentreOf(n, 1.4, 1.4, 1.4), 0.001, &overlaps);
        EXPECT_NEAR(overlaps.Value[0][0][0], 1.0, 4e-6) << n;
    }
}

TEST(OverlapIntegrals, SmallDExponentsCountAsThreeTenths) {
    for (const double d : {0.1, 0.3, -1.0, 0.0}) {
        LocalOverlaps small;
        LocalOverlaps limit;
        OverlapGeneral(CentreOf(3, 1.7, 1.6, d), CentreOf(3, 1.9, 1.8, d), 3.0, &small);
        OverlapGeneral(CentreOf(3, 1.7, 1.6, 0.3), CentreOf(3, 1.9, 1.8, 0.3), 3.0, &limit);
        for (int la = 0; la < 3; ++la) {
            EXPECT_EQ(small.Value[la][2][0], limit.Value[la][2][0]) << d;
            EXPECT_EQ(small.Value[2][la][0], limit.Value[2][la][0]) << d;
        }
        OverlapGeneral(CentreOf(3, 1.7, 1.6, 0.31), CentreOf(3, 1.9, 1.8, 0.3), 3.0, &limit);
        EXPECT_NE(small.Value[2][0][0], limit.Value[2][0][0]) << d;
    }
}

static double Binomial(int n, int k) {
    return k == 0 || k == n ? 1.0 : Binomial(n - 1, k - 1) + Binomial(n - 1, k);
}

static double Angular(int i, int m, int l) {
    if (i == 1) {
        return m == 0 && l == 2 ? -0.5 : 0.0;
    }
    const double table[3][3] = {{1.0, 1.0, 1.5}, {0.0, 1.0, 1.73205}, {0.0, 0.0, 1.224745}};
    return table[m][l];
}

static double PlainGeneral(int na, int la, int nb, int lb, int m, double zi, double zj, double r) {
    double a[AuxiliaryTableSize];
    double b[AuxiliaryTableSize];
    AuxiliaryIntegrals(a, b, (zi + zj) * r / 2, (zi - zj) * r / 2, 19);
    double total = 0.0;
    for (int i = 0; 2 * i <= la - m; ++i) {
        for (int j = 0; 2 * j <= lb - m; ++j) {
            const int powers[6] = {na - la + 2 * i, nb - lb + 2 * j, la - m - 2 * i, lb - m - 2 * j, m, m};
            int k[6] = {};
            for (bool more = true; more;) {
                double term = (k[1] + k[3] + m + k[4] + k[5]) % 2 == 0 ? 1.0 : -1.0;
                for (int f = 0; f < 6; ++f) {
                    term *= Binomial(powers[f], k[f]);
                }
                const int ofA = powers[0] + powers[1] + k[2] + k[3] + 2 * k[4] - k[0] - k[1];
                total +=
                    Angular(i, m, la) * Angular(j, m, lb) * term * a[ofA] * b[k[0] + k[1] + k[2] + k[3] + 2 * k[5]];
                more = false;
                for (int f = 0; f < 6 && !more; ++f) {
                    more = ++k[f] <= powers[f];
                    k[f] = more ? k[f] : 0;
                }
            }
        }
    }
    const double factorials = FactorialTable[2 * na] * FactorialTable[2 * nb];
    const double norm = std::sqrt((2 * la + 1) * (2 * lb + 1) * zi * zj / factorials);
    return norm * std::pow(r, na + nb + 1) * std::pow(zi, na) * std::pow(zj, nb) / std::pow(2.0, m + 1) * total;
}

// Property: the general integral with its sums as the method states them, term by term, all exponents different.
// The program expands the polynomial once. Tolerance: rounding of sums whose terms are up to 1e3 times the
// result.
TEST(OverlapIntegrals, TheExpansionIsThePlainSum) {
    const double points[][3] = {{1.3, 1.2, 2.0}, {2.1, 0.9, 3.0}, {0.7, 2.9, 1.7}, {2.6, 0.6, 2.4}};
    for (const auto& point : points) {
        for (int na = 1; na <= 3; ++na) {
            for (int nb = 1; nb <= 3; ++nb) {
                LocalOverlaps overlaps;
                OverlapGeneral(CentreOf(na, point[0], point[0], point[0]), CentreOf(nb, point[1], point[1], point[1]),
                               point[2], &overlaps);
                for (int la = 0; la < na; ++la) {
                    for (int lb = 0; lb < nb; ++lb) {
                        for (int m = 0; m <= la && m <= lb; ++m) {
                            const double plain = PlainGeneral(na, la, nb, lb, m, point[0], point[1], point[2]);
                            EXPECT_NEAR(overlaps.Value[la][lb][m], plain, 2e-13) << na << la << nb << lb << m;
                        }
                    }
                }
            }
        }
    }
}
