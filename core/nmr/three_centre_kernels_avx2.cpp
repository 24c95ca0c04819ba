// SPDX-License-Identifier: MIT
// The three-centre kernels for 256-bit registers. This file has compile options of its own, so it must hold no inline
// function that another file could share.
#if defined(__x86_64__)
static constexpr int LaneCount = 4;  // numbers in a register

#include "nmr/three_centre_kernels_template.h"

const ThreeCentreKernels Avx2ThreeCentreKernels = KernelsOfThisSet;
#endif
