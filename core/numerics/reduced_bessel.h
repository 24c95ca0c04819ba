// SPDX-License-Identifier: MIT
// Reduced modified Bessel functions x^n K_n(x) for the three-centre quadrature of the shielding integrals, by the
// polynomial approximations of Abramowitz and Stegun 9.8.5 to 9.8.8, which are good to about 1e-7.
#pragma once

// From here on a function counts as 0.
inline constexpr double ReducedBesselLimit = 160.0;

// x^n K_n(x) for n >= 0. Nothing but tests calls it: it stays as the definition that the quadrature shortens, which
// carries the recurrence on in sums. For x <= 0 a line goes to the log and the result is 0.
double ReducedBessel(int n, double x);

// K_0(x) and x K_1(x), the start of the recurrence, with the same limits and the same line in the log.
void ReducedBesselPair(double x, double* k0, double* xk1);
