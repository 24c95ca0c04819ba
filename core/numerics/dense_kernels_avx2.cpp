// SPDX-License-Identifier: MIT
// The dense kernels for 256-bit registers. This file has compile options of its own, so it must hold no inline
// function that another file could share.
#if defined(__x86_64__)
static constexpr int LaneCount = 4;    // numbers in a register
static constexpr int TileRows = 4;     // rows of a product in registers
static constexpr int TileVectors = 2;  // registers across a row of a product
static constexpr int SweepRows = 4;    // rows that a symmetric product takes at once

#include "numerics/dense_kernels_template.h"

const DenseKernels Avx2DenseKernels = KernelsOfThisSet;
#endif
