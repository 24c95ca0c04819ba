// SPDX-License-Identifier: MIT
// Takes the kernels of the instruction set in use.
#include "numerics/dense_kernels.h"

#include "numerics/instruction_set.h"

#include <algorithm>

const DenseKernels& Kernels() {
    static constexpr const DenseKernels* Sets[InstructionSetCount] = {
        &BaselineDenseKernels,
#if defined(__x86_64__)
        &Avx2DenseKernels,
        &Avx512DenseKernels,
#endif
    };
    return *Sets[InstructionSetInUse()];
}

void PackPanel(const double* source, std::size_t stride, int columns, int inner, double* panel) {
    for (int k = 0; k < inner; ++k) {
        const double* row = source + static_cast<std::size_t>(k) * stride;
        double* packed = panel + static_cast<std::size_t>(k) * PanelWidth;
        if (columns == PanelWidth) {
            std::copy(row, row + PanelWidth, packed);
        } else {
            std::copy(row, row + columns, packed);
            std::fill(packed + columns, packed + PanelWidth, 0.0);
        }
    }
}
