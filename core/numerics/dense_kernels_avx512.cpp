// SPDX-License-Identifier: MIT
// The dense kernels for 512-bit registers. This file has compile options of its own, so it must hold no
// inline function that another file could share.
#if defined(__x86_64__)
#define KernelSet Avx512
#define KernelTable Avx512Kernels
#define KernelName "avx512"
#define LaneCount 8    // numbers in a register
#define TileRows 4     // rows of a product in registers
#define TileVectors 4  // registers across a row of a product
#define SweepRows 8    // rows that a symmetric product takes at once
#include "numerics/dense_kernels_template.h"
#endif
