// SPDX-License-Identifier: MIT
// The three-centre kernels for what every processor of the platform has.
static constexpr int LaneCount = 2;  // numbers in a register

#include "nmr/three_centre_kernels_template.h"

const ThreeCentreKernels BaselineThreeCentreKernels = KernelsOfThisSet;
