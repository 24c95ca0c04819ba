// SPDX-License-Identifier: MIT
// Extrapolation of a density matrix from iteration to iteration.
#pragma once

// Extrapolates density[N][N] from PreviousDensity and DiagonalHistory, at iteration step (from 1), and stores the
// result there and in PreviousDensity; the diagonal is kept between lowest and highest. From step 3 on returns the
// largest change of a diagonal element; before, change as it is.
double ExtrapolateMatrix(double* density, int step, double lowest, double highest, double change);

// The same for the new total density in HalfDensity, whose diagonal holds populations.
double ExtrapolateDensity(int step, double densityChange);
