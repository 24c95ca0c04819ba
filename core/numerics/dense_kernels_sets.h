// SPDX-License-Identifier: MIT
// The implementations of the dense kernels, one source file each, for the choice among them.
#pragma once

#include "numerics/dense_kernels.h"

extern const DenseKernels BaselineKernels;  // what every processor of the platform has
#if defined(__x86_64__)
extern const DenseKernels Avx2Kernels;    // 256-bit registers
extern const DenseKernels Avx512Kernels;  // 512-bit registers
#endif
