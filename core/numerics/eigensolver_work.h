// SPDX-License-Identifier: MIT
// What the stages of the eigensolver share: its work arrays, and the prototypes of the stages. For the eigensolver's
// own source files.
#pragma once

#include <cstddef>

constexpr int ReductionWidth = 32;   // columns that are reduced before the rest of the matrix is updated
constexpr int ReflectorWidth = 64;   // reflectors that are applied together in the back-transformation
constexpr int VectorBlock = 128;     // eigenvectors that are back-transformed together
constexpr int SmallTriangle = 1024;  // numbers of the tiled triangle of an order of at most SmallOrder
constexpr int SmallOrder = 40;       // up to here the tiled triangle has a place of its own

// The work arrays. All lie in Memory and start at multiples of 64 bytes; they are valid for orders up to Capacity,
// from ReserveEigensolverWork until FreeEigensolverWork. P is Capacity rounded up to whole chunks of eight.
struct EigensolverWork {
    int Capacity;             // largest order, where there is a block
    double* Memory;           // the block that holds all arrays; null while nothing is allocated
    std::size_t PanelStride;  // distance of the rows of Panel, an odd number of chunks
    double* Diagonal;         // [P] diagonal of the tridiagonal matrix
    double* Off;              // [P] number j couples j and j + 1; the last one is 0
    double* Band;             // [P] copy of Off that the QR iteration works on
    double* ReflectorScale;   // [P] h of each reflector I - v v'/h; 0 for a step without one
    double* Quotient;         // [P] x'Tx of the tridiagonal T, for the vectors x found so far
    double* Residual;         // [P] norm of (T - Quotient) x, with the noise of its rounding
    double* Spare;            // [P] the best vector of several attempts
    double* Panel;            // [2 ReductionWidth][PanelStride] v and w of each column of a panel, in turn
    double* SmallTiles;       // [SmallTriangle] tiled triangle of a small matrix
    double* Reflectors;       // [ReflectorWidth / 32][P][32] reflectors of a block, in columns; before, [P / 8][64][8]
                              // the rows of Panel in chunks
    double* RowPanels;        // [P / 32 rounded up][ReflectorWidth][32] reflectors of a block, in panels of their rows;
                              // before, the rows of Panel in panels
    double* Gram;             // [ReflectorWidth][ReflectorWidth] scalar products of the reflectors of a block
    double* BlockFactor;      // [ReflectorWidth][ReflectorWidth] T of the block I - V T V'
    double* BlockPanels;      // [ReflectorWidth / 32][ReflectorWidth][32] the transpose of T, in panels
    double* Overlap;          // [P][ReflectorWidth] products of vectors and reflectors
    double* Combination;      // [VectorBlock][ReflectorWidth] Overlap times the transpose of T
    double* LaneReciprocal;   // [P][8] see LaneFactors, with the three that follow
    double* LaneUpper;        // [P][8]
    double* LaneBand;         // [P][8]
    double* LaneMultiplier;   // [P][8]
    double* LaneVectors;      // [P][8] eight vectors of the inverse iteration side by side
};

extern EigensolverWork SolverWork;

// Counts multiplications and polls once enough have come together; may not return.
void CountSolverWork(double multiplications);

// Stage 1: Diagonal and Off from the lower triangle of matrix[n][n]. The reflectors replace the matrix: row i holds
// that of column i, from i + 1 on. vectors[n][n] is scratch memory.
void ReduceToTridiagonal(double* matrix, double* vectors, int n);

// Stage 2: values[n], ascending, of the tridiagonal matrix; norm and tolerance from TridiagonalNorm.
void FindEigenvalues(double* values, int n, double tolerance);

// Stage 3: the eigenvectors of the tridiagonal matrix, in the rows of vectors[n][n].
void FindTridiagonalVectors(double* vectors, const double* values, int n, double norm, double tolerance);

// Turns eigenvectors of the tridiagonal matrix into those of the matrix, by the reflectors that stage 1 has left.
void TransformBack(const double* matrix, double* vectors, int n);
