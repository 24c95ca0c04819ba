// SPDX-License-Identifier: MIT
// Loops over dense vectors and matrices, for the eigensolver and the exact spectrum. Each is built for several
// instruction sets (numerics/instruction_set.h); the order of every sum is fixed, so that all give the same bytes.
#pragma once

#include <cstddef>

constexpr int ChunkLength = 8;  // numbers that a sum takes side by side; paddings are multiples of it
constexpr int PanelWidth = 32;  // columns of the right factor that a matrix product takes at once

// How a product meets what its place holds.
enum ProductMode { OverwriteWithProduct, AddProduct, SubtractProduct };

// A place for the rows of a product. Number (i, j) is at Start[i * RowStride + (j / 8) * ChunkStride + j % 8]; a plain
// row-major matrix has a ChunkStride of ChunkLength.
struct ProductPlace {
    double* Start;
    std::size_t RowStride;
    std::size_t ChunkStride;
};

// The LU factors, with row interchanges, of eight shifted tridiagonal matrices of order n side by side: number j of
// matrix q is at j * 8 + q. Owned by the eigensolver, filled by FactorLanes, read by SolveLanes.
struct LaneFactors {
    double* Reciprocal;  // [n][8] reciprocals of the pivots
    double* Upper;       // [n][8] first superdiagonal
    double* Band;        // [n][8] second superdiagonal; not 0 where rows j and j + 1 were interchanged
    double* Multiplier;  // [n][8] what row j is multiplied by before it is added to row j + 1
};

// The kernels of one instruction set.
struct DenseKernels {
    // Rows of a product: place(i, j) (=, += or -=) sum over k of a[i * aRow + k * aInner] * panel[k * PanelWidth + j],
    // k ascending with one accumulator, which starts from 0 or from what the place holds. At most PanelWidth columns.
    void (*MultiplyPanel)(const double* a, std::size_t aRow, std::size_t aInner, const double* panel,
                          const ProductPlace& place, int rows, int columns, int inner, ProductMode mode);

    // result += A * vector for the tile rows firstRow to endRow - 1 of a symmetric matrix and their mirror images,
    // columns before the chunk firstChunk left out. Tile row g holds g + 1 tiles of 8 x 8 numbers, the last one whole,
    // and starts at triangle + 32 g (g + 1). vector and result are padded with zeros to whole chunks. A triangle that
    // is far, in no cache, is asked for ahead, which costs a twentieth of the time where it is near.
    void (*MultiplySymmetric)(const double* triangle, const double* vector, double* result, int firstChunk,
                              int firstRow, int endRow, bool isFar);

    // products[k] = rows[k] . vector for count rows. Sums run in eight lanes, number j in lane j % 8, which are
    // added as ((0 + 4) + (2 + 6)) + ((1 + 5) + (3 + 7)).
    void (*DotRows)(const double* rows, std::size_t stride, int count, const double* vector, int length,
                    double* products);

    // vector += sum over k of factors[k] * rows[k], k ascending.
    void (*AddRows)(const double* rows, std::size_t stride, int count, const double* factors, double* vector,
                    int length);

    // For a tridiagonal T, where off[j] couples j and j + 1, and y = (T - shift) x: products[0] = y . y and
    // products[1] = y . x, in eight lanes.
    void (*ResidualProducts)(const double* diagonal, const double* off, double shift, const double* x, int n,
                             double* products);

    // Factors T - shifts[q] for q = 0 to 7. A pivot below 1e-30 in absolute value becomes tolerance, and so does a
    // Band entry of an interchange.
    void (*FactorLanes)(const double* diagonal, const double* off, const double* shifts, double tolerance, int n,
                        const LaneFactors& factors);

    // Applies the multipliers and interchanges, if forward is not 0, and solves upward, in place in x[n][8];
    // largest[8] receives the greatest absolute value of each lane.
    void (*SolveLanes)(const LaneFactors& factors, int n, int forward, double* x, double* largest);
};

// One source file each.
extern const DenseKernels BaselineDenseKernels;
#if defined(__x86_64__)
extern const DenseKernels Avx2DenseKernels;
extern const DenseKernels Avx512DenseKernels;
#endif

// Those of the instruction set in use.
const DenseKernels& Kernels();

// Copies inner x columns numbers of a row-major matrix, at most PanelWidth columns, into a panel[inner][PanelWidth]
// whose further columns are zero.
void PackPanel(const double* source, std::size_t stride, int columns, int inner, double* panel);
