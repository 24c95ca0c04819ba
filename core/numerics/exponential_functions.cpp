// SPDX-License-Identifier: MIT
// E1 by three approximations, each for its range of arguments, and the auxiliary tables built on pairs of them.
#include "numerics/exponential_functions.h"

#include "ground/message_poll.h"
#include "numerics/elementary_functions.h"

#include <cmath>

static constexpr int IntegralUnits = 100;  // of a poll
static constexpr int TableUnits = 200;

static constexpr double RangeLimit = 4.0;
static constexpr double SmallestArgument = 1e-06;
static constexpr double ValueAtZero = 1e38;
static constexpr double NaturalOfTen = 2.302585092994045;
static constexpr double SmallestTerm = 1e-06;

// Three different values of Euler's constant, each in its own formula, on purpose: results depend on them.
static constexpr double EulerOfPolynomial = 0.57721566;
static constexpr double EulerOfSeries = 0.577215664901533;
static constexpr double EulerOfPairs = 0.577215;

// In 4/x, for x above 4.
static constexpr double LargeArgument[] = {0.24999999,   -0.062498588, 0.031208561,   -0.022951979, 0.020412099,
                                           -0.017555779, 0.011723273,  -0.0049362007, 0.00094427614};

// In x, for x from -4 to 4.
static constexpr double SmallArgument[] = {-1.0,           0.25,          -0.05555552,    0.010416662,    -0.0016666906,
                                           0.00023148392,  -2.833759e-05, 3.099604e-06,   -3.0726221e-07, 2.763583e-08,
                                           -2.1915699e-09, 1.6826592e-10, -1.5798675e-11, 1.0317602e-12};

template <int Count> static double Horner(const double (&coefficients)[Count], double x) {
    double value = coefficients[Count - 1];
    for (int i = Count - 2; i >= 0; --i) {
        value = value * x + coefficients[i];
    }
    return value;
}

static double LargeE1(double x) {
    const double y = RangeLimit / x;
    return Exponential(-x) * y * Horner(LargeArgument, y);
}

static double SmallE1(double x) {
    if (std::fabs(x) < SmallestArgument) {
        return ValueAtZero;
    }
    return -(DecimalLogarithm(std::fabs(x)) * NaturalOfTen) - x * Horner(SmallArgument, x) - EulerOfPolynomial;
}

// The series of Ei. Its terms overflow from about x = -709 on; then the sum is infinite and the series is at its
// end.
static double NegativeE1(double x) {
    const double a = std::fabs(x);
    double term = a;
    double k = 1.0;
    double sum = NaturalLogarithm(a) + EulerOfSeries + a;
    while (std::fabs(term) > SmallestTerm && std::isfinite(sum)) {
        const double next = k + 1.0;
        term = term * a / (next / k * next);
        sum += term;
        k = next;
    }
    return -sum;
}

void ExponentialIntegralE1(double x, double* result) {
    if (x > RangeLimit) {
        *result = LargeE1(x);
    } else if (x + RangeLimit >= 0.0) {
        *result = SmallE1(x);
    } else {
        *result = NegativeE1(x);
    }
    PollMessages(IntegralUnits);
}

static double ValueOfE1(double x) {
    double value;
    ExponentialIntegralE1(x, &value);
    return value;
}

double ExponentialPairPlus(double a, double b) {
    if (std::fabs(b) >= SmallestArgument) {
        const double grow = Exponential(a - b);
        const double fall = Exponential(b - a);
        return grow * ValueOfE1(2.0 * a) + fall * NaturalLogarithm(std::fabs(b / a)) + fall * ValueOfE1(2.0 * b);
    }
    return Exponential(a) * ValueOfE1(2.0 * a) - (NaturalLogarithm(2.0 * a) + EulerOfPairs) * Exponential(-a);
}

double ExponentialPairMinus(double a, double b) {
    if (std::fabs(b) >= SmallestArgument) {
        const double grow = Exponential(a - b);
        const double fall = Exponential(b - a);
        return grow * ValueOfE1(2.0 * a) - fall * NaturalLogarithm(std::fabs(b / a)) - fall * ValueOfE1(2.0 * b);
    }
    return Exponential(a) * ValueOfE1(2.0 * a) + (NaturalLogarithm(2.0 * a) + EulerOfPairs) * Exponential(-a);
}

// Gp and Gm are the values of the pair functions, u = 1/(a - b), e = e^(-a).
static void FillTableP(const double* y, int order, double gp, double gm, double u, double e, double* p) {
    p[0] = u * gm;
    if (order < 1) {
        return;
    }
    p[1] = (y[0] * e + gp - p[0]) * u;
    if (order == 1) {
        return;
    }
    double d = y[0] - y[1];
    p[2] = (gm - 2.0 * p[1] - d * e) * u;
    double s = 1.0;
    for (int k = 3; k <= order; ++k) {
        d += s * y[k - 1];
        const double g = k % 2 == 0 ? gm : gp;
        p[k] = (s * d * e + g - k * p[k - 1]) * u;
        s = -s;
    }
}

static void FillTableQ(const double* x, double gp, double gm, double u, double b, double* q) {
    const double cp = Exponential(b) + Exponential(-b);
    const double cm = Exponential(b) - Exponential(-b);
    q[0] = u * gm;
    q[1] = (q[0] - cm * x[0] - gp) * u;
    q[2] = (2.0 * q[1] + gm - cp * x[0] - cm * x[1]) * u;
    q[3] = (3.0 * q[2] - gp - cp * x[1] - cm * (x[0] + x[2])) * u;
    q[4] = (4.0 * q[3] + gm - cp * (x[0] + x[2]) - cm * (x[1] + x[3])) * u;
    q[5] = (5.0 * q[4] - gp - cp * (x[1] + x[3]) - cm * (x[0] + x[2] + x[4])) * u;
    q[6] = (6.0 * q[5] + gm - cp * (x[0] + x[2] + x[4]) - cm * (x[1] + x[3] + x[5])) * u;
    q[7] = (7.0 * q[6] - gp - cp * (x[1] + x[3] + x[5]) - cm * (x[0] + x[2] + x[4] + x[6])) * u;
}

void ExponentialAuxiliaryTables(double a, double b, const double* tableX, const double* tableY, int order,
                                double* tableP, double* tableQ) {
    const double gp = ExponentialPairPlus(a, b);
    const double gm = ExponentialPairMinus(a, b);
    const double u = 1.0 / (a - b);
    FillTableP(tableY, order, gp, gm, u, Exponential(-a), tableP);
    FillTableQ(tableX, gp, gm, u, b, tableQ);
    PollMessages(TableUnits);
}
