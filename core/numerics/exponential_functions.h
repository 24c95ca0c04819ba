// SPDX-License-Identifier: MIT
// The exponential integral E1, and the tables built on it that integrals with the inverse distance from one of
// the two centres need. All stored constants have 8 to 12 digits and are results as they stand. Nothing in the program
// calls them, as the pair integrals of the shielding came to be quadratures: they stay as the documented way to closed
// forms.
#pragma once

// *result = E1(x) for positive x, its continuation -Ei(|x|) for negative x, and 1e38 for |x| below 1e-6. The
// error is up to 1e-7 for x up to 4, and 1e-7 of the value beyond. Polls: it may not return.
void ExponentialIntegralE1(double x, double* result);

// With d = a - b:
//     plus:  e^d E1(2a) + e^(-d) ln|b/a| + e^(-d) E1(2b)
//     minus: e^d E1(2a) - e^(-d) ln|b/a| - e^(-d) E1(2b)
// and their limits for |b| below 1e-6. Both poll.
double ExponentialPairPlus(double a, double b);
double ExponentialPairMinus(double a, double b);

// From table X [entries 0 to 6] and table Y [entries 0 to order - 1] computes table P [entries 0 to order] and
// table Q [entries 0 to 7, whatever order is]. a and b must differ. Polls.
void ExponentialAuxiliaryTables(double a, double b, const double* tableX, const double* tableY, int order,
                                double* tableP, double* tableQ);
