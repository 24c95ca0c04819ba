// SPDX-License-Identifier: MIT
// The dense kernels for what every processor of the platform has, without which no other file could run. Two numbers
// share a register.
static constexpr int LaneCount = 2;    // numbers in a register
static constexpr int TileRows = 2;     // rows of a product in registers
static constexpr int TileVectors = 2;  // registers across a row of a product
static constexpr int SweepRows = 2;    // rows that a symmetric product takes at once

#include "numerics/dense_kernels_template.h"

const DenseKernels BaselineDenseKernels = KernelsOfThisSet;
