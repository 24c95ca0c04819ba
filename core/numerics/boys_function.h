// SPDX-License-Identifier: MIT
// The Boys function F_m(t), the integral over u from 0 to 1 of u^(2m) e^(-t u^2), with the asymptotic form beyond a
// point of its own for each m. At that point the form is off by up to 7e-3 relative (m = 8), on purpose.
#pragma once

inline constexpr int LargestBoysOrder = 8;

// F_m(t) for m = 0 to 8 and t >= 0. Nothing but tests calls it: it stays as the one that states the limit of m. A
// higher m gives a line in the log and 0.
double BoysFunction(int m, double t);

// values[m] = F_m(t) for m = 0 to top, top at most 8.
void BoysFunctions(int top, double t, double* values);
