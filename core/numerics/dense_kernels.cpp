// SPDX-License-Identifier: MIT
// Takes the kernels of the instruction set in use, and drives the product of whole matrices for the
// eigensolver and the exact spectrum.
#include "numerics/dense_kernels.h"

#include "numerics/instruction_set.h"

#include <algorithm>
#include <cstdint>

static constexpr int InnerBlock = 256;  // inner indices of a packed panel: 64 KB
static constexpr int RowBlock = 256;    // rows that meet one panel: 512 KB of A, within the second cache

static double PanelBuffer[InnerBlock * PanelWidth + ChunkLength];  // one packed panel, to be aligned by hand

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

static double* AlignedPanel() {
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(PanelBuffer);
    const std::uintptr_t aligned = (address + 63) / 64 * 64;
    return PanelBuffer + (aligned - address) / sizeof(double);
}

void MultiplyMatrices(const double* a, int aStride, const double* b, int bStride, double* c, int cStride, int rows,
                      int columns, int inner) {
    const DenseKernels& kernels = Kernels();
    double* panel = AlignedPanel();
    const std::size_t aRow = static_cast<std::size_t>(aStride);
    const std::size_t bRow = static_cast<std::size_t>(bStride);
    const std::size_t cRow = static_cast<std::size_t>(cStride);
    int k = 0;
    do {  // once for inner = 0 as well: C is cleared
        const int innerCount = std::min(InnerBlock, inner - k);
        const ProductMode mode = k == 0 ? OverwriteWithProduct : AddProduct;
        for (int i = 0; i < rows; i += RowBlock) {
            const int rowCount = std::min(RowBlock, rows - i);
            for (int j = 0; j < columns; j += PanelWidth) {
                const int columnCount = std::min(PanelWidth, columns - j);
                PackPanel(b + static_cast<std::size_t>(k) * bRow + j, bRow, columnCount, innerCount, panel);
                const ProductPlace place = {c + static_cast<std::size_t>(i) * cRow + j, cRow, ChunkLength};
                kernels.MultiplyPanel(a + static_cast<std::size_t>(i) * aRow + k, aRow, 1, panel, place, rowCount,
                                      columnCount, innerCount, mode);
            }
        }
        k += InnerBlock;
    } while (k < inner);
}
