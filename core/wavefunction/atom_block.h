// SPDX-License-Identifier: MIT
// The block of one atom in an orbital matrix.
#pragma once

#include "ground/run_state.h"

// Rows and columns by position in the atom: s at 0, px, py, pz at 1 to 3, then the d orbitals.
struct AtomBlock {
    double* Start;
    long long Stride;

    double& At(int row, int column) const { return Start[row * Stride + column]; }
    void SetAntisymmetric(int row, int column, double value) const {
        At(row, column) = value;
        At(column, row) = -value;
    }
};

// The block of the atom with these orbitals in matrix[N][N].
inline AtomBlock BlockOf(double* matrix, const OrbitalRange& range) {
    return {matrix + (range.First - 1) * (Run.Basis.OrbitalCount + 1LL), Run.Basis.OrbitalCount};
}
