// SPDX-License-Identifier: MIT
// Matrix products that see a stop while they run.
#pragma once

// MultiplyMatrices in bands of rows, with a poll after each.
void PollingProduct(const double* a, int aStride, const double* b, int bStride, double* c, int cStride, int rows,
                    int columns, int inner);
