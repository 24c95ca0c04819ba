// SPDX-License-Identifier: MIT
// The potential of the second cloud at the first centre, corrected by what the first cloud's extent takes away: a
// finite sum over products of auxiliary integrals, from the generated coefficients.
#include "integrals/two_centre_coulomb.h"

#include "ground/message_poll.h"
#include "integrals/auxiliary_functions.h"
#include "integrals/coulomb_coefficients.h"
#include "numerics/elementary_functions.h"

static constexpr int ClassUnits = 200;  // of a poll

// Order of the auxiliary integrals of class (n1, n2). It is above the highest index in use, on purpose: it
// chooses how B is computed, and results depend on that.
static constexpr int ClassOrder[3][5] = {{7, 9, 10, 12, 14}, {0, 10, 13, 14, 16}, {0, 0, 14, 16, 18}};

// R J of class (1, 1), a polynomial in p and q with coefficients from products of the tables.
static double FirstShells(const double* a, const double* b, double p, double q) {
    const double p00 = a[0] * b[0];
    const double p01 = a[0] * b[1];
    const double p10 = a[1] * b[0];
    const double s1 = p01 + p10;
    const double s2 = a[0] * b[2] - a[2] * b[0];
    const double s3 = p01 - 3.0 * p10 + 4.0 * p00;
    const double power0 = 64.0 + q * q * q * (-4.0 * s1 - q * s2);
    const double power1 = -32.0 * p00 + q * (16.0 * (2.0 * p01 + p00) + q * (4.0 * s3 - q * (2.0 * s2)));
    const double power2 = -16.0 * p00 + q * (4.0 * s3);
    const double power3 = -4.0 * s1 + q * (2.0 * s2);
    return (power0 + p * (power1 + p * (power2 + p * (power3 + p * s2)))) / 64.0;
}

// R times the potential of the second cloud at the first centre; s is 2 zeta2 R.
static double PointCharge(const double* screening, int powers, double s) {
    double sum = screening[powers - 1];
    for (int k = powers - 2; k >= 0; --k) {
        sum = sum * s + screening[k];
    }
    return 1.0 - Exponential(-s) * sum;
}

// The double integral of total power n in xi and eta.
static double ProductSum(const double* products, const double* a, const double* b, int n) {
    double sum = 0.0;
    for (int j = 0; j <= n; ++j) {
        sum += products[j] * (a[n - j] * b[j]);
    }
    return sum;
}

// R J of every other class.
static double OtherShells(int n1, int n2, const double* a, const double* b, double s1, double s2) {
    const double* weights = CoulombWeights[n1 - 1][n2 - 2];
    double sum = 0.0;
    double power = PowerOf(s2, 2 * n2 + 1);
    for (int k = 0; k < 2 * n1; ++k) {
        sum += weights[k] * power * ProductSum(CoulombProducts[n2 - 2][k], a, b, 2 * n2 - 1 + k);
        power *= s1;
    }
    return PointCharge(CoulombScreening[n2 - 2], 2 * n2, s2) - sum;
}

double TwoCentreCoulomb(int n1, int n2, double zeta1, double zeta2, double distance) {
    double a[AuxiliaryTableSize];
    double b[AuxiliaryTableSize];
    const double p = distance * zeta1 + distance * zeta2;
    const double q = distance * zeta1 - distance * zeta2;
    AuxiliaryIntegrals(a, b, p, q, ClassOrder[n1 - 1][n2 - 1]);
    double product = 1.0;  // without table A every term but the point charges vanishes
    if (a[0] != 0.0) {
        product = n2 == 1 ? FirstShells(a, b, p, q)
                          : OtherShells(n1, n2, a, b, 2.0 * zeta1 * distance, 2.0 * zeta2 * distance);
    }
    PollMessages(ClassUnits);
    return product / distance;
}
