// SPDX-License-Identifier: MIT
// Reduced modified Bessel functions x^n K_n(x) for the three-centre quadrature of the shielding integrals, by the
// polynomial approximations of Abramowitz and Stegun 9.8.5 to 9.8.8, which are good to about 1e-7.
#pragma once

// From here on a function counts as 0.
inline constexpr double ReducedBesselLimit = 160.0;

// x^n K_n(x) for n >= 0. For x <= 0 a line goes to the log and the result is 0.
double ReducedBessel(int n, double x);

// K_0(x) and x K_1(x), the start of the recurrence, with the same limits and the same line in the log.
void ReducedBesselPair(double x, double* k0, double* xk1);

// rows[n][i] = x[i]^n K_n(x[i]) for n = 0 to 4 and i = 0 to count - 1; row n starts at rows + n * stride.
void ReducedBesselRows(const double* x, int count, double* rows, int stride);

// e^(-x) for 0 <= x < 700 to 1e-15 relative, by operations that give the same bytes on every processor (a library may
// choose another path, and so another last digit, where multiply-add exists).
double DecayingExponential(double x);
