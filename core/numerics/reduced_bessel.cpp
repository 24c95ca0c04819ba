// SPDX-License-Identifier: MIT
// Reduced modified Bessel functions by polynomial approximation and upward recurrence.
#include "numerics/reduced_bessel.h"

#include "ground/log.h"
#include "numerics/decaying_exponential.h"

#include <cmath>

static constexpr double HalfRoot = 0.70710678118654752;

static double Polynomial(const double* coefficients, int degree, double x) {
    double sum = coefficients[degree];
    for (int i = degree - 1; i >= 0; --i) {
        sum = sum * x + coefficients[i];
    }
    return sum;
}

// ln x for 0 < x <= 1, from x = m 2^k and the series of the inverse hyperbolic tangent.
static double LogarithmBelowOne(double x) {
    int exponent = 0;
    double fraction = std::frexp(x, &exponent);
    if (fraction < HalfRoot) {
        fraction *= 2.0;
        --exponent;
    }
    const double z = (fraction - 1.0) / (fraction + 1.0);  // below 0.172 in absolute value
    const double square = z * z;
    double sum = 0.0;
    for (int i = 21; i >= 1; i -= 2) {
        sum = sum * square + 1.0 / i;
    }
    return exponent * Ln2High + (2.0 * z * sum + exponent * Ln2Low);
}

// Abramowitz and Stegun 9.8.5 and 9.8.7, with 9.8.1 and 9.8.3 for the functions of the first kind.
static void SmallArgument(double x, double* k0, double* xk1) {
    static constexpr double FirstKind0[7] = {1.0, 3.5156229, 3.0899424, 1.2067492, 0.2659732, 0.0360768, 0.0045813};
    static constexpr double FirstKind1[7] = {0.5,        0.87890594, 0.51498869, 0.15084934,
                                             0.02658733, 0.00301532, 0.00032411};
    static constexpr double SecondKind0[7] = {-0.57721566, 0.42278420, 0.23069756, 0.03488590,
                                              0.00262698,  0.00010750, 0.00000740};
    static constexpr double SecondKind1[7] = {1.0,         0.15443144,  -0.67278579, -0.18156897,
                                              -0.01919402, -0.00110404, -0.00004686};
    const double logarithm = LogarithmBelowOne(0.5 * x);
    const double square = (x / 3.75) * (x / 3.75);
    const double half = 0.25 * x * x;
    *k0 = Polynomial(SecondKind0, 6, half) - logarithm * Polynomial(FirstKind0, 6, square);
    *xk1 = Polynomial(SecondKind1, 6, half) + x * x * logarithm * Polynomial(FirstKind1, 6, square);
}

// Abramowitz and Stegun 9.8.6 and 9.8.8.
static void LargeArgument(double x, double* k0, double* xk1) {
    static constexpr double Decay0[7] = {1.25331414, -0.07832358, 0.02189568, -0.01062446,
                                         0.00587872, -0.00251540, 0.00053208};
    static constexpr double Decay1[7] = {1.25331414,  0.23498619, -0.03655620, 0.01504268,
                                         -0.00780353, 0.00325614, -0.00068245};
    const double root = std::sqrt(x);
    const double exponential = DecayingExponential(x);
    *k0 = exponential / root * Polynomial(Decay0, 6, 2.0 / x);
    *xk1 = exponential * root * Polynomial(Decay1, 6, 2.0 / x);
}

void ReducedBesselPair(double x, double* k0, double* xk1) {
    *k0 = 0.0;
    *xk1 = 0.0;
    if (x <= 0.0) {
        LogAppend("x is negative in rk()");
    } else if (x < 2.0) {
        SmallArgument(x, k0, xk1);
    } else if (x < ReducedBesselLimit) {
        LargeArgument(x, k0, xk1);
    }
}

double ReducedBessel(int n, double x) {
    double before = 0.0;
    double current = 0.0;
    ReducedBesselPair(x, &before, &current);
    if (n == 0) {
        return before;
    }
    for (int i = 2; i <= n; ++i) {
        const double next = x * x * before + 2.0 * (i - 1) * current;
        before = current;
        current = next;
    }
    return current;
}
