// SPDX-License-Identifier: MIT
// The dense kernels for 256-bit registers. This file has compile options of its own, so it must hold no
// inline function that another file could share.
#if defined(__x86_64__)
#define KernelSet Avx2
#define KernelTable Avx2Kernels
#define KernelName "avx2"
#define LaneCount 4    // numbers in a register
#define TileRows 4     // rows of a product in registers
#define TileVectors 2  // registers across a row of a product
#define SweepRows 4    // rows that a symmetric product takes at once
#include "numerics/dense_kernels_template.h"
#endif
