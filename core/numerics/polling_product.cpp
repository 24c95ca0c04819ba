// SPDX-License-Identifier: MIT
// Matrix products in bands.
#include "numerics/polling_product.h"

#include "ground/message_poll.h"
#include "numerics/dense_kernels.h"

#include <algorithm>

static constexpr long long BandWork = 1 << 25;  // multiplications between two polls
static constexpr int SmallestBand = 16;

void PollingProduct(const double* a, int aStride, const double* b, int bStride, double* c, int cStride, int rows,
                    int columns, int inner) {
    const long long rowWork = std::max(1LL, static_cast<long long>(columns) * inner);
    const int band =
        static_cast<int>(std::clamp<long long>(BandWork / rowWork, SmallestBand, std::max(rows, SmallestBand)));
    for (int row = 0; row < rows; row += band) {
        const int count = std::min(band, rows - row);
        MultiplyMatrices(a + static_cast<long long>(row) * aStride, aStride, b, bStride,
                         c + static_cast<long long>(row) * cStride, cStride, count, columns, inner);
        PollMessages(static_cast<int>(std::min<long long>(count * rowWork, BandWork)));
    }
}
