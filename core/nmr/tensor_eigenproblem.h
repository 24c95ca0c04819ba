// SPDX-License-Identifier: MIT
// Eigenvalues of a 3 by 3 shielding tensor by the closed cubic formula (Cardano).
#pragma once

// tensor[9], row-major, in ppm, not symmetric in general; eigenvalues[5]: lowest, middle and highest eigenvalue (real
// parts), isotropic value, anisotropy. Returns 1 always. Parts of the formula pass through single precision on purpose:
// printed values depend on it. An axial tensor whose unique value is the lowest can come out wrong.
int SolveTensorEigenproblem(const double* tensor, double* eigenvalues);
