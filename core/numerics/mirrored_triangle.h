// SPDX-License-Identifier: MIT
// Symmetric matrices of which one triangle was computed.
#pragma once

// Copies the triangle below the diagonal of matrix[n][n] to the one above it.
inline void MirrorLowerTriangle(double* matrix, long long n) {
    for (long long row = 0; row < n; ++row) {
        for (long long column = 0; column < row; ++column) {
            matrix[column * n + row] = matrix[row * n + column];
        }
    }
}
