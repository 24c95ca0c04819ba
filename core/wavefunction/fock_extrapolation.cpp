// SPDX-License-Identifier: MIT
// Extrapolates the Fock matrix.
#include "wavefunction/fock_extrapolation.h"

#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "numerics/dense_kernels.h"
#include "numerics/polling_product.h"

#include <algorithm>
#include <cmath>
#include <utility>

static constexpr double SmallestDeterminant = 1e-6;
static constexpr double SmallestPivot = 1e-8;

static long long SquareSize() {
    return static_cast<long long>(Run.Basis.OrbitalCount) * Run.Basis.OrbitalCount;
}

static double* HistoryEntry(double* history, int slot) {
    return history + (slot - 1) * SquareSize();
}

static void AdvanceHistory(FockExtrapolation& state) {
    if (state.ResetHistory) {
        state.HistoryCount = 1;
        state.HistorySlot = 1;
        state.ResetHistory = false;
        return;
    }
    state.HistoryCount = std::min(state.HistoryCount + 1, HistoryLength);
    state.HistorySlot = state.HistorySlot % HistoryLength + 1;
}

// F Q - Q F. Both matrices are symmetric, so that the second product is the first one transposed.
static void StoreCommutator(double* commutator) {
    const int n = Run.Basis.OrbitalCount;
    PollingProduct(Run.Field.FockMatrix, n, Run.Field.HalfDensity, n, Run.Field.FirstScratch, n, n, n, n);
    for (long long i = 0; i < n; ++i) {
        for (long long j = 0; j < n; ++j) {
            commutator[i * n + j] = Run.Field.FirstScratch[i * n + j] - Run.Field.FirstScratch[j * n + i];
        }
        PollMessages(n);
    }
}

static double DotOfCommutators(const double* a, const double* b) {
    const int n = Run.Basis.OrbitalCount;
    double sum = 0.0;
    double diagonal = 0.0;
    for (long long i = 0; i < n; ++i) {
        double row;
        Kernels().DotRows(a + i * n, static_cast<std::size_t>(n), 1, b + i * n, n, &row);
        sum += row;
        diagonal += a[i * n + i] * b[i * n + i];
        PollMessages(n);
    }
    return 0.5 * (sum + diagonal);
}

static void UpdateMatrix(FockExtrapolation& state) {
    const int newest = state.HistorySlot - 1;
    const double* commutator = HistoryEntry(Run.Field.CommutatorHistory, state.HistorySlot);
    for (int i = 0; i < state.HistoryCount; ++i) {
        const double dot = DotOfCommutators(HistoryEntry(Run.Field.CommutatorHistory, i + 1), commutator);
        state.Matrix[i][newest] = dot;
        state.Matrix[newest][i] = dot;
    }
    for (int i = 0; i < state.HistoryCount; ++i) {
        state.Matrix[state.HistoryCount][i] = -1.0;
        state.Matrix[i][state.HistoryCount] = -1.0;
    }
    state.Matrix[state.HistoryCount][state.HistoryCount] = 0.0;
}

// The bordered matrix, its block scaled by the newest dot product, densely packed.
static void PackScaledMatrix(const FockExtrapolation& state, double newest, double* packed) {
    const int order = state.HistoryCount + 1;
    const double scale = newest != 0.0 ? 1.0 / newest : 1.0;
    for (int i = 0; i < order; ++i) {
        for (int j = 0; j < order; ++j) {
            const bool border = i == state.HistoryCount || j == state.HistoryCount;
            packed[i * order + j] = border ? state.Matrix[i][j] : state.Matrix[i][j] * scale;
        }
    }
}

// The sum of the stored Fock matrices with the negated last row of the inverse, in the order of the slots.
static void CombineFockMatrices(const double* lastRow, int count) {
    const long long size = SquareSize();
    std::fill(Run.Field.FockMatrix, Run.Field.FockMatrix + size, 0.0);
    for (int k = 0; k < count; ++k) {
        const double coefficient = -lastRow[k];
        const double* stored = HistoryEntry(Run.Field.FockHistory, k + 1);
        for (long long i = 0; i < size; ++i) {
            Run.Field.FockMatrix[i] += coefficient * stored[i];
        }
        PollMessages(static_cast<int>(std::min<long long>(size, 1 << 30)));
    }
}

double ExtrapolateFock(FockExtrapolation& state) {
    AdvanceHistory(state);
    std::copy(Run.Field.FockMatrix, Run.Field.FockMatrix + SquareSize(),
              HistoryEntry(Run.Field.FockHistory, state.HistorySlot));
    StoreCommutator(HistoryEntry(Run.Field.CommutatorHistory, state.HistorySlot));
    UpdateMatrix(state);
    const double newest = state.Matrix[state.HistorySlot - 1][state.HistorySlot - 1];
    const long long pairs = static_cast<long long>(Run.Basis.OrbitalCount) * (Run.Basis.OrbitalCount - 1) / 2;
    const double measure = newest / static_cast<double>(pairs);

    double packed[(HistoryLength + 1) * (HistoryLength + 1)];
    PackScaledMatrix(state, newest, packed);
    const int order = state.HistoryCount + 1;
    if (std::fabs(InvertSmallMatrix(packed, order)) < SmallestDeterminant) {
        state.ResetHistory = true;
    } else if (state.HistoryCount >= 2) {
        CombineFockMatrices(packed + state.HistoryCount * order, state.HistoryCount);
    }
    return measure;
}

// The largest element of the block that begins at (step, step); the first one in row-major order on a tie.
static void FindPivot(const double* matrix, int order, int step, int* row, int* column) {
    double largest = -1.0;
    *row = step;  // stays where no element is a number
    *column = step;
    for (int i = step; i < order; ++i) {
        for (int j = step; j < order; ++j) {
            if (std::fabs(matrix[i * order + j]) > largest) {
                largest = std::fabs(matrix[i * order + j]);
                *row = i;
                *column = j;
            }
        }
    }
}

// Exchanges two rows and negates one of them, which leaves the determinant as it is.
static void ExchangeRows(double* matrix, int order, int a, int b) {
    for (int j = 0; a != b && j < order; ++j) {
        const double kept = -matrix[a * order + j];
        matrix[a * order + j] = matrix[b * order + j];
        matrix[b * order + j] = kept;
    }
}

static void ExchangeColumns(double* matrix, int order, int a, int b) {
    for (int i = 0; a != b && i < order; ++i) {
        const double kept = -matrix[i * order + a];
        matrix[i * order + a] = matrix[i * order + b];
        matrix[i * order + b] = kept;
    }
}

static void EliminateStep(double* matrix, int order, int step) {
    const double pivot = matrix[step * order + step];
    for (int i = 0; i < order; ++i) {
        if (i != step) {
            matrix[i * order + step] /= -pivot;
        }
    }
    for (int i = 0; i < order; ++i) {
        for (int j = 0; i != step && j < order; ++j) {
            if (j != step) {
                matrix[i * order + j] += matrix[i * order + step] * matrix[step * order + j];
            }
        }
    }
    for (int j = 0; j < order; ++j) {
        if (j != step) {
            matrix[step * order + j] /= pivot;
        }
    }
    matrix[step * order + step] = 1.0 / pivot;
}

double InvertSmallMatrix(double* matrix, int order) {
    int rows[HistoryLength + 1];
    int columns[HistoryLength + 1];
    double determinant = 1.0;
    for (int step = 0; step < order; ++step) {
        FindPivot(matrix, order, step, &rows[step], &columns[step]);
        ExchangeRows(matrix, order, step, rows[step]);
        ExchangeColumns(matrix, order, step, columns[step]);
        const double pivot = matrix[step * order + step];
        if (std::fabs(pivot) < SmallestPivot) {  // what isn't a number goes on, into the determinant
            return 0.0;
        }
        determinant *= pivot;
        EliminateStep(matrix, order, step);
    }
    for (int step = order - 1; step >= 0; --step) {
        ExchangeColumns(matrix, order, rows[step], step);
        ExchangeRows(matrix, order, columns[step], step);
    }
    return determinant;
}
