// SPDX-License-Identifier: MIT
// Products of whole matrices that see a stop while they run.
#pragma once

// C = A * B, row-major: rows x inner, inner x columns, rows x columns, with the given distances of rows. Each number
// of C is the sum over the inner index, ascending from 0 with one accumulator. C overlaps neither A nor B. Polls
// between pieces of work; may not return.
void PollingProduct(const double* a, int aStride, const double* b, int bStride, double* c, int cStride, int rows,
                    int columns, int inner);
