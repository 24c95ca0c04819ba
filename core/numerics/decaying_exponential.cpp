// SPDX-License-Identifier: MIT
// The exponential of one number: the series of e^R up to R^13.
#include "numerics/decaying_exponential.h"

double DecayingExponential(double x) {
    const DecaySeries<double> s = ExpandDecay(x);
    const double third = (1.0 / 40320 + s.R * (1.0 / 362880)) + s.R2 * (1.0 / 3628800 + s.R * (1.0 / 39916800));
    const double fourth = 1.0 / 479001600 + s.R * (1.0 / 6227020800);
    const double power = s.Low + s.R4 * (s.Middle + s.R4 * (third + s.R4 * fourth));
    return ScaleDecay<unsigned long long>(power, s.Shifted);
}
