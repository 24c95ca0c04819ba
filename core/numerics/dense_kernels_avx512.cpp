// SPDX-License-Identifier: MIT
// The dense kernels for 512-bit registers. This file has compile options of its own, so it must hold no inline
// function that another file could share.
#if defined(__x86_64__)
static constexpr int LaneCount = 8;    // numbers in a register
static constexpr int TileRows = 4;     // rows of a product in registers
static constexpr int TileVectors = 4;  // registers across a row of a product
static constexpr int SweepRows = 8;    // rows that a symmetric product takes at once

#include "numerics/dense_kernels_template.h"

const DenseKernels Avx512DenseKernels = KernelsOfThisSet;
#endif
