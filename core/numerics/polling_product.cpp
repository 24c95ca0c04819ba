// SPDX-License-Identifier: MIT
// Matrix products in blocks that stay in a cache: a piece of the right factor is packed once and meets all rows.
#include "numerics/polling_product.h"

#include "ground/message_poll.h"
#include "numerics/dense_kernels.h"

#include <algorithm>
#include <cstddef>

static constexpr int InnerBlock = 256;  // inner indices of a packed panel: 64 KB
static constexpr int PanelCount = 8;    // panels that are packed together: 512 KB, half of the second cache
static constexpr int RowBlock = 64;     // rows that meet all of them before the next rows: 128 KB of A
static constexpr int GroupColumns = PanelCount * PanelWidth;

alignas(64) static double Panels[PanelCount][InnerBlock * PanelWidth];

// Packs inner x columns numbers, row after row, since a row is in one piece in memory.
static void PackGroup(const double* source, std::size_t stride, int columns, int inner) {
    for (int k = 0; k < inner; ++k) {
        for (int j = 0; j < columns; j += PanelWidth) {
            PackPanel(source + static_cast<std::size_t>(k) * stride + j, stride, std::min(PanelWidth, columns - j), 1,
                      Panels[j / PanelWidth] + k * PanelWidth);
        }
    }
    PollMessages(columns * inner);
}

// The rows of the product with the packed panels.
static void MultiplyGroup(const double* a, std::size_t aStride, double* c, std::size_t cStride, int rows, int columns,
                          int inner, ProductMode mode) {
    for (int i = 0; i < rows; i += RowBlock) {
        const int rowCount = std::min(RowBlock, rows - i);
        const std::size_t row = static_cast<std::size_t>(i);
        for (int j = 0; j < columns; j += PanelWidth) {
            Kernels().MultiplyPanel(a + row * aStride, aStride, 1, Panels[j / PanelWidth],
                                    {c + row * cStride + j, cStride, ChunkLength}, rowCount,
                                    std::min(PanelWidth, columns - j), inner, mode);
        }
        PollMessages(rowCount * columns * inner);
    }
}

void PollingProduct(const double* a, int aStride, const double* b, int bStride, double* c, int cStride, int rows,
                    int columns, int inner) {
    const std::size_t bRow = static_cast<std::size_t>(bStride);
    for (int j = 0; j < columns; j += GroupColumns) {
        const int columnCount = std::min(GroupColumns, columns - j);
        int k = 0;
        do {  // once for inner = 0 as well: C is cleared
            const int innerCount = std::min(InnerBlock, inner - k);
            PackGroup(b + static_cast<std::size_t>(k) * bRow + j, bRow, columnCount, innerCount);
            MultiplyGroup(a + k, static_cast<std::size_t>(aStride), c + j, static_cast<std::size_t>(cStride), rows,
                          columnCount, innerCount, k == 0 ? OverwriteWithProduct : AddProduct);
            k += InnerBlock;
        } while (k < inner);
    }
}
