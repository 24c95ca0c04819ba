// SPDX-License-Identifier: MIT
// The dense kernels for what every processor of the platform has, without which no other file could run. Two numbers
// share a register.
#define KernelSet Baseline
#define KernelTable BaselineKernels
#define KernelName "baseline"
#define LaneCount 2    // numbers in a register
#define TileRows 2     // rows of a product in registers
#define TileVectors 2  // registers across a row of a product
#define SweepRows 2    // rows that a symmetric product takes at once
#include "numerics/dense_kernels_template.h"
