// SPDX-License-Identifier: MIT
// The way back from the eigenvectors of the tridiagonal form to those of the matrix: reflectors in blocks.
// Schreiber, Van Loan, SIAM J. Sci. Stat. Comput. 10 (1989) 53.
#include "numerics/dense_kernels.h"
#include "numerics/eigensolver_work.h"

#include <algorithm>

static constexpr int InnerBlock = 128;  // numbers of a vector that go through both products at once

// Copies the reflectors of a block, rows of the matrix, into columns, in panels.
static void TransposeReflectors(const double* rows, int n, int count, int length) {
    for (int panel = 0; panel * PanelWidth < count; ++panel) {
        const int inPanel = std::min(PanelWidth, count - panel * PanelWidth);
        double* target = SolverWork.Reflectors +
                         static_cast<std::size_t>(panel) * PanelWidth * static_cast<std::size_t>(SolverWork.Capacity);
        const double* source = rows + static_cast<std::size_t>(panel) * PanelWidth * static_cast<std::size_t>(n);
        for (int begin = 0; begin < length; begin += ChunkLength) {
            const int end = std::min(length, begin + ChunkLength);
            for (int k = 0; k < PanelWidth; ++k) {
                const double* row = source + static_cast<std::size_t>(k) * static_cast<std::size_t>(n);
                for (int j = begin; j < end; ++j) {
                    target[static_cast<std::size_t>(j) * PanelWidth + static_cast<std::size_t>(k)] =
                        k < inPanel ? row[j] : 0.0;
                }
            }
        }
    }
}

// Adds to target[rows][ReflectorWidth] the products of left[rows][inner] with numbers first to first + inner - 1 of the
// count reflectors in their panels; from number 0 on, target starts from 0.
static void MultiplyByReflectors(const double* left, std::size_t stride, int rows, int first, int inner, int count,
                                 double* target) {
    for (int panel = 0; panel * PanelWidth < count; ++panel) {
        const double* right = SolverWork.Reflectors + static_cast<std::size_t>(panel) * PanelWidth *
                                                          static_cast<std::size_t>(SolverWork.Capacity);
        Kernels().MultiplyPanel(left, stride, 1, right + static_cast<std::size_t>(first) * PanelWidth,
                                {target + panel * PanelWidth, ReflectorWidth, ChunkLength}, rows,
                                std::min(PanelWidth, count - panel * PanelWidth), inner,
                                first == 0 ? OverwriteWithProduct : AddProduct);
    }
}

// The upper triangular T with H(first) H(first + 1) ... = I - V T V', and its transpose in panels.
static void FormBlockFactor(const double* rows, int n, int first, int count, int length) {
    const std::size_t stride = static_cast<std::size_t>(n);
    for (int k = 0; k < length; k += InnerBlock) {
        MultiplyByReflectors(rows + k, stride, count, k, std::min(InnerBlock, length - k), count, SolverWork.Gram);
    }
    for (int i = 0; i < count; ++i) {
        const double h = SolverWork.ReflectorScale[first + i];
        const double scale = h == 0.0 ? 0.0 : 1.0 / h;
        for (int j = 0; j < i; ++j) {
            double sum = 0.0;
            for (int l = j; l < i; ++l) {
                sum += SolverWork.BlockFactor[j * ReflectorWidth + l] * SolverWork.Gram[l * ReflectorWidth + i];
            }
            SolverWork.BlockFactor[j * ReflectorWidth + i] = -scale * sum;
        }
        SolverWork.BlockFactor[i * ReflectorWidth + i] = scale;
    }
    for (int panel = 0; panel * PanelWidth < count; ++panel) {
        for (int l = 0; l < count; ++l) {
            for (int k = 0; k < PanelWidth; ++k) {
                const int row = panel * PanelWidth + k;
                SolverWork.BlockPanels[(panel * ReflectorWidth + l) * PanelWidth + k] =
                    row <= l ? SolverWork.BlockFactor[row * ReflectorWidth + l] : 0.0;
            }
        }
    }
}

// Copies the reflectors of a block into panels of their rows.
static void PackReflectors(const double* rows, int n, int count, int length) {
    for (int j = 0; j < length; j += PanelWidth) {
        PackPanel(rows + j, static_cast<std::size_t>(n), std::min(PanelWidth, length - j), count,
                  SolverWork.RowPanels + static_cast<std::size_t>(j) * ReflectorWidth);
        CountSolverWork(4.0 * PanelWidth * count);  // memory rather than arithmetic
    }
}

// Applies a block to count vectors, x -= V T V' x, where x is their first number that changes and overlap holds V' x.
// If a block is left, overlap receives what belongs to that one, ReflectorWidth numbers earlier, while the vectors are
// at hand.
static void ApplyBlock(double* x, int n, int count, int reflectors, int length, bool isLast, double* overlap) {
    const DenseKernels& kernels = Kernels();
    const std::size_t stride = static_cast<std::size_t>(n);
    for (int panel = 0; panel * PanelWidth < reflectors; ++panel) {
        kernels.MultiplyPanel(overlap, ReflectorWidth, 1, SolverWork.BlockPanels + panel * ReflectorWidth * PanelWidth,
                              {SolverWork.Combination + panel * PanelWidth, ReflectorWidth, ChunkLength}, count,
                              std::min(PanelWidth, reflectors - panel * PanelWidth), reflectors, OverwriteWithProduct);
    }
    if (!isLast) {
        MultiplyByReflectors(x - ReflectorWidth, stride, count, 0, ReflectorWidth, ReflectorWidth, overlap);
    }
    for (int j = 0; j < length; j += InnerBlock) {
        const int end = std::min(j + InnerBlock, length);
        for (int k = j; k < end; k += PanelWidth) {
            kernels.MultiplyPanel(SolverWork.Combination, ReflectorWidth, 1,
                                  SolverWork.RowPanels + static_cast<std::size_t>(k) * ReflectorWidth,
                                  {x + k, stride, ChunkLength}, count, std::min(PanelWidth, end - k), reflectors,
                                  SubtractProduct);
        }
        if (!isLast) {
            MultiplyByReflectors(x + j, stride, count, ReflectorWidth + j, end - j, ReflectorWidth, overlap);
        }
        CountSolverWork(0.6 * count * reflectors * (end - j));
    }
}

void TransformBack(const double* matrix, double* vectors, int n) {
    if (n <= 2) {
        return;
    }
    const std::size_t stride = static_cast<std::size_t>(n);
    const int lastFirst = (n - 3) / ReflectorWidth * ReflectorWidth;
    for (int first = lastFirst; first >= 0; first -= ReflectorWidth) {
        const int reflectors = std::min(ReflectorWidth, n - 2 - first);
        const int length = n - first;
        const double* rows = matrix + static_cast<std::size_t>(first) * (stride + 1);
        if (first == lastFirst) {
            TransposeReflectors(rows, n, reflectors, length);
            MultiplyByReflectors(vectors + first, stride, n, 0, length, reflectors, SolverWork.Overlap);
        }
        FormBlockFactor(rows, n, first, reflectors, length);
        PackReflectors(rows, n, reflectors, length);
        if (first > 0) {
            TransposeReflectors(rows - ReflectorWidth * (stride + 1), n, ReflectorWidth, length + ReflectorWidth);
        }
        for (int i = 0; i < n; i += VectorBlock) {
            ApplyBlock(vectors + static_cast<std::size_t>(i) * stride + first, n, std::min(VectorBlock, n - i),
                       reflectors, length, first == 0,
                       SolverWork.Overlap + static_cast<std::size_t>(i) * ReflectorWidth);
        }
    }
}
