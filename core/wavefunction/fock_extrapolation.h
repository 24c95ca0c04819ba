// SPDX-License-Identifier: MIT
// Direct inversion of the iterative subspace (Pulay 1980): the Fock matrix from a history of Fock matrices, by the
// commutators of each with its density.
#pragma once

// Matrices that the history holds.
inline constexpr int HistoryLength = 5;

// The state of the extrapolation between the iterations of one wavefunction.
struct FockExtrapolation {
    bool ResetHistory;                                    // the next call begins a new history
    int HistoryCount;                                     // matrices stored, at most HistoryLength
    int HistorySlot;                                      // 1-based slot of the newest
    double Matrix[HistoryLength + 1][HistoryLength + 1];  // dot products of the commutators, bordered
};

// Stores FockMatrix in the history and replaces it by the extrapolated one, where the history allows. Returns the
// commutator measure, which takes the place of the change of the density. Spoils FirstScratch.
double ExtrapolateFock(FockExtrapolation& state);

// Inverts matrix[order][order] in place by Gauss-Jordan elimination with full pivoting; its determinant, or 0, and the
// matrix unfinished, for a pivot below 1e-8.
double InvertSmallMatrix(double* matrix, int order);
