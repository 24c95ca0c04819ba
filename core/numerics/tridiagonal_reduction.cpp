// SPDX-License-Identifier: MIT
// Householder reduction of a symmetric matrix to tridiagonal form, in panels.
// Householder, J. ACM 5 (1958) 339; Dongarra, Hammarling, Sorensen, J. Comput. Appl. Math. 27 (1989) 215.
#include "numerics/dense_kernels.h"
#include "numerics/eigensolver_work.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

static constexpr double SmallReflector = 1e-30;   // a reflector with a smaller h is left out
static constexpr double SmallMatrix = 1e-4;       // a matrix with no larger number has a smaller limit in proportion
static constexpr double WorkOfProduct = 2e6;      // multiplications of a symmetric product between two polls
static constexpr double CachedNumbers = 2 << 20;  // a triangle with no more is likely to stay in the last cache
static constexpr std::size_t TileSize = ChunkLength * ChunkLength;
static constexpr int Pairs = 2 * ReductionWidth;              // v and w of the columns of a panel
static constexpr int PanelChunks = PanelWidth / ChunkLength;  // chunks of a panel of the update
static constexpr int GroupChunks = 4 * PanelChunks;           // chunks of the panels that meet a tile row at once

static double* TileRow(double* triangle, int g) {
    return triangle + TileSize / 2 * static_cast<std::size_t>(g) * static_cast<std::size_t>(g + 1);
}

// The place of the tiled triangle: the memory of the vectors, which are not there yet, if it is large enough.
static double* PlaceOfTriangle(double* vectors, int n) {
    if (n <= SmallOrder) {
        return SolverWork.SmallTiles;
    }
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(vectors);
    return vectors + ((address + 63) / 64 * 64 - address) / sizeof(double);
}

// Copies the lower triangle into tiles of 8 x 8 numbers, those on the diagonal whole, padded with zeros; returns the
// greatest absolute value.
static double CopyTriangle(const double* matrix, int n, double* triangle) {
    const std::size_t stride = static_cast<std::size_t>(n);
    double greatest = 0.0;
    for (int i = 0; i < (n + ChunkLength - 1) / ChunkLength * ChunkLength; ++i) {
        const int g = i / ChunkLength;
        double* row = TileRow(triangle, g) + i % ChunkLength * ChunkLength;
        const double* source = matrix + static_cast<std::size_t>(i) * stride;
        const int whole = i < n ? g : 0;
        for (int chunk = 0; chunk < whole; ++chunk) {
            for (int j = 0; j < ChunkLength; ++j) {
                const double value = source[chunk * ChunkLength + j];
                row[static_cast<std::size_t>(chunk) * TileSize + static_cast<std::size_t>(j)] = value;
                greatest = std::max(greatest, std::fabs(value));
            }
        }
        for (int chunk = whole; chunk <= g; ++chunk) {
            for (int j = 0; j < ChunkLength; ++j) {
                const int column = chunk * ChunkLength + j;
                double value = 0.0;
                if (i < n && column < n) {
                    value = matrix[static_cast<std::size_t>(std::max(i, column)) * stride +
                                   static_cast<std::size_t>(std::min(i, column))];
                }
                row[static_cast<std::size_t>(chunk) * TileSize + static_cast<std::size_t>(j)] = value;
                greatest = std::max(greatest, std::fabs(value));
            }
        }
        CountSolverWork(4.0 * n);  // memory rather than arithmetic
    }
    return greatest;
}

static double* ReflectorRow(int k) {
    return SolverWork.Panel + static_cast<std::size_t>(2 * k) * SolverWork.PanelStride;
}

static double* PartnerRow(int k) {
    return ReflectorRow(k) + SolverWork.PanelStride;
}

// Copies the columns from first to first + width - 1 of the triangle into the reflector rows of the panel.
static void OpenPanel(double* triangle, int first, int width, int tileRows) {
    for (int g = first / ChunkLength; g < tileRows; ++g) {
        const double* tiles = TileRow(triangle, g);
        for (int k = 0; k < width; ++k) {
            const int chunk = (first + k) / ChunkLength;
            double* target = ReflectorRow(k) + g * ChunkLength;
            const double* source = tiles + static_cast<std::size_t>(chunk) * TileSize + (first + k) % ChunkLength;
            for (int r = 0; r < ChunkLength && chunk <= g; ++r) {
                target[r] = source[r * ChunkLength];
            }
        }
    }
}

// product := A v for the part of the matrix from column from on, as the triangle holds it.
static void MultiplyTriangle(const double* triangle, const double* v, double* product, int from, int tileRows) {
    const DenseKernels& kernels = Kernels();
    const int firstChunk = from / ChunkLength;
    const bool isFar = 0.5 * TileSize * (tileRows - firstChunk) * (tileRows - firstChunk) > CachedNumbers;
    std::fill(product + firstChunk * ChunkLength, product + tileRows * ChunkLength, 0.0);
    for (int g = firstChunk; g < tileRows;) {
        double work = 0.0;
        int end = g;
        while (end < tileRows && work < WorkOfProduct) {
            ++end;
            work += 2.0 * TileSize * (end - firstChunk);
        }
        kernels.MultiplySymmetric(triangle, v, product, firstChunk, g, end, isFar);
        CountSolverWork(work);
        g = end;
    }
}

// Brings column i of the panel, number k in it, up to date with the reflectors of the panel before it.
static void UpdateColumn(int i, int k, int length) {
    double factors[2 * ReductionWidth];
    const int from = i / ChunkLength * ChunkLength;
    for (int q = 0; q < k; ++q) {
        factors[2 * q] = -PartnerRow(q)[i];
        factors[2 * q + 1] = -ReflectorRow(q)[i];
    }
    Kernels().AddRows(SolverWork.Panel + from, SolverWork.PanelStride, 2 * k, factors, ReflectorRow(k) + from,
                      length - from);
    CountSolverWork(2.0 * k * (length - from));
}

// w := p - (v . p / 2 h) v with p = A v / h, where A is the triangle as updated by the reflectors of the panel.
static void FormPartner(const double* triangle, int i, int k, double h, int length) {
    const DenseKernels& kernels = Kernels();
    double products[2 * ReductionWidth];
    double factors[2 * ReductionWidth];
    const double* v = ReflectorRow(k);
    double* w = PartnerRow(k);
    const int from = (i + 1) / ChunkLength * ChunkLength;
    MultiplyTriangle(triangle, v, w, from, length / ChunkLength);
    kernels.DotRows(SolverWork.Panel + from, SolverWork.PanelStride, 2 * k, v + from, length - from, products);
    for (int q = 0; q < k; ++q) {
        factors[2 * q] = -products[2 * q + 1];
        factors[2 * q + 1] = -products[2 * q];
    }
    kernels.AddRows(SolverWork.Panel + from, SolverWork.PanelStride, 2 * k, factors, w + from, length - from);
    double sum = 0.0;
    kernels.DotRows(v + from, SolverWork.PanelStride, 1, w + from, length - from, &sum);
    const double reciprocal = 1.0 / h;
    const double half = sum / h / (2.0 * h);
    for (int j = i + 1; j < length; ++j) {
        w[j] = w[j] * reciprocal - half * v[j];
    }
    std::fill(w + i / ChunkLength * ChunkLength, w + i + 1, 0.0);
    CountSolverWork(4.0 * k * (length - from));
}

// Reduces column i, number k of the panel that starts at first, and keeps its reflector in row i of the matrix.
static void ReduceColumn(double* matrix, const double* triangle, int first, int k, int n, double limit) {
    const int i = first + k;
    const int length = (n + ChunkLength - 1) / ChunkLength * ChunkLength;
    double* v = ReflectorRow(k);
    UpdateColumn(i, k, length);
    SolverWork.Diagonal[i] = v[i];
    SolverWork.ReflectorScale[i] = 0.0;
    if (i >= n - 2) {
        SolverWork.Off[i] = i == n - 2 ? v[i + 1] : 0.0;
        std::fill(v + first, v + length, 0.0);
        std::fill(PartnerRow(k) + first, PartnerRow(k) + length, 0.0);
        return;
    }
    std::fill(v + first, v + i + 1, 0.0);
    std::fill(PartnerRow(k) + first, PartnerRow(k) + i + 1, 0.0);
    const int from = i / ChunkLength * ChunkLength;
    double sum = 0.0;
    Kernels().DotRows(v + from, SolverWork.PanelStride, 1, v + from, length - from, &sum);
    const double sigma = v[i + 1] < 0.0 ? -std::sqrt(sum) : std::sqrt(sum);
    SolverWork.Off[i] = -sigma;
    v[i + 1] += sigma;
    const double h = sigma * v[i + 1];
    if (std::fabs(h) >= limit) {
        SolverWork.ReflectorScale[i] = h;
        FormPartner(triangle, i, k, h, length);
    } else {
        std::fill(v + i + 1, v + length, 0.0);
        std::fill(PartnerRow(k) + i + 1, PartnerRow(k) + length, 0.0);
    }
    double* row = matrix + static_cast<std::size_t>(i) * static_cast<std::size_t>(n);
    std::fill(row + i / ReflectorWidth * ReflectorWidth, row + i + 1, 0.0);
    std::copy(v + i + 1, v + n, row + i + 1);
}

// Packs the panel for the update of what follows it, from tile row first on. Left factor: its columns in chunks, number
// k * 8 + r of tile row g at (g - first) * 8 * Pairs. Right factor: its columns in panels, with each v at the place of
// its w and the other way round.
static void PackPairs(int first, int tileRows) {
    for (int g = first; g < tileRows; ++g) {
        double* chunk = SolverWork.Reflectors + static_cast<std::size_t>(g - first) * ChunkLength * Pairs;
        for (int k = 0; k < Pairs; ++k) {
            const double* row = SolverWork.Panel + static_cast<std::size_t>(k) * SolverWork.PanelStride;
            std::copy(row + g * ChunkLength, row + (g + 1) * ChunkLength, chunk + k * ChunkLength);
        }
    }
    for (int chunk = first; chunk < tileRows; chunk += PanelChunks) {
        const int columns = std::min(PanelChunks, tileRows - chunk) * ChunkLength;
        double* packed = SolverWork.RowPanels + static_cast<std::size_t>(chunk - first) * ChunkLength * Pairs;
        for (int k = 0; k < ReductionWidth; ++k, packed += 2 * PanelWidth) {
            PackPanel(PartnerRow(k) + chunk * ChunkLength, 0, columns, 1, packed);
            PackPanel(ReflectorRow(k) + chunk * ChunkLength, 0, columns, 1, packed + PanelWidth);
        }
    }
}

// A -= V W' + W V' for the part of the triangle after the panel that starts at first column.
static void UpdateTriangle(double* triangle, int firstColumn, int tileRows) {
    const DenseKernels& kernels = Kernels();
    const int first = (firstColumn + ReductionWidth) / ChunkLength;
    PackPairs(first, tileRows);
    for (int group = first; group < tileRows; group += GroupChunks) {
        for (int g = group; g < tileRows; ++g) {
            const double* left = SolverWork.Reflectors + static_cast<std::size_t>(g - first) * ChunkLength * Pairs;
            double* tiles = TileRow(triangle, g);
            const int end = std::min(group + GroupChunks, g + 1);
            for (int chunk = group; chunk < end; chunk += PanelChunks) {
                const double* right =
                    SolverWork.RowPanels + static_cast<std::size_t>(chunk - first) * ChunkLength * Pairs;
                kernels.MultiplyPanel(left, 1, ChunkLength, right,
                                      {tiles + static_cast<std::size_t>(chunk) * TileSize, ChunkLength, TileSize},
                                      ChunkLength, std::min(PanelChunks, end - chunk) * ChunkLength, Pairs,
                                      SubtractProduct);
            }
            CountSolverWork(0.3 * Pairs * ChunkLength * ChunkLength * (end - group));
        }
    }
}

void ReduceToTridiagonal(double* matrix, double* vectors, int n) {
    double* triangle = PlaceOfTriangle(vectors, n);
    const double greatest = CopyTriangle(matrix, n, triangle);
    const double scale = std::min(1.0, greatest / SmallMatrix);
    const double limit = greatest > 0.0 ? SmallReflector * scale * scale : SmallReflector;
    const int tileRows = (n + ChunkLength - 1) / ChunkLength;
    for (int first = 0; first < n; first += ReductionWidth) {
        const int width = std::min(ReductionWidth, n - first);
        OpenPanel(triangle, first, width, tileRows);
        for (int k = 0; k < width; ++k) {
            ReduceColumn(matrix, triangle, first, k, n, limit);
        }
        if (first + ReductionWidth < n) {
            UpdateTriangle(triangle, first, tileRows);
        }
    }
}
