// SPDX-License-Identifier: MIT
// Eigenvalues and eigenvectors of a symmetric matrix by tridiagonal form, for the wavefunction and the exact spectrum:
// the order of the stages, and the work arrays that they share.
#include "numerics/eigensolver.h"

#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "ground/touched_pages.h"
#include "numerics/dense_kernels.h"
#include "numerics/eigensolver_work.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

static constexpr double ZeroTolerance = 1e-30;  // a tolerance below it is that of the zero matrix
static constexpr double WorkOfPoll = 3e6;       // multiplications between two polls: about half a millisecond

EigensolverWork SolverWork;

static double PendingWork = 0.0;  // multiplications since the last poll

void CountSolverWork(double multiplications) {
    PendingWork += multiplications;
    if (PendingWork >= WorkOfPoll) {
        const int units = static_cast<int>(std::min(PendingWork, 1e9));
        PendingWork = 0.0;
        PollMessages(units);
    }
}

// The next count numbers of the block, from a multiple of 64 bytes; adds them to *used.
static double* TakeArray(double* start, std::size_t count, std::size_t* used) {
    double* array = start == nullptr ? nullptr : start + *used;
    *used += (count + 7) / 8 * 8;
    return array;
}

// Lays out the arrays for orders up to capacity; returns how many numbers they take. start may be null.
static std::size_t LayOutArrays(double* start, int capacity, EigensolverWork& work) {
    const std::size_t length = (static_cast<std::size_t>(capacity) + 7) / 8 * 8;
    const std::size_t square = static_cast<std::size_t>(ReflectorWidth) * ReflectorWidth;
    std::size_t used = 0;
    work.Capacity = capacity;
    work.PanelStride = length % 16 == 0 ? length + 8 : length;
    double** const vectors[] = {&work.Diagonal, &work.Off,      &work.Band, &work.ReflectorScale,
                                &work.Quotient, &work.Residual, &work.Spare};
    for (double** vector : vectors) {
        *vector = TakeArray(start, length, &used);
    }
    double** const lanes[] = {&work.LaneReciprocal, &work.LaneUpper, &work.LaneBand, &work.LaneMultiplier,
                              &work.LaneVectors};
    for (double** lane : lanes) {
        *lane = TakeArray(start, length * ChunkLength, &used);
    }
    work.Panel = TakeArray(start, 2 * ReductionWidth * work.PanelStride, &used);
    work.SmallTiles = TakeArray(start, SmallTriangle, &used);
    work.Reflectors = TakeArray(start, length * ReflectorWidth, &used);
    work.RowPanels = TakeArray(start, (length + PanelWidth) * ReflectorWidth, &used);
    work.Gram = TakeArray(start, square, &used);
    work.BlockFactor = TakeArray(start, square, &used);
    work.BlockPanels = TakeArray(start, square, &used);
    work.Overlap = TakeArray(start, length * ReflectorWidth, &used);
    work.Combination = TakeArray(start, static_cast<std::size_t>(VectorBlock) * ReflectorWidth, &used);
    return used;
}

// Numbers of the block that holds the arrays for orders up to n, with room for its alignment.
static std::size_t WorkCount(int n) {
    EigensolverWork work = {};
    return LayOutArrays(nullptr, n, work) + ChunkLength;
}

double EigensolverWorkBytes(int n) {
    return static_cast<double>(WorkCount(n)) * sizeof(double);
}

int ReserveEigensolverWork(int n) {
    if (SolverWork.Memory != nullptr && n <= SolverWork.Capacity) {
        return 1;
    }
    if (!AllocateArray(SolverWork.Memory, static_cast<long long>(WorkCount(n)))) {
        return 0;
    }
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(SolverWork.Memory);
    const std::uintptr_t aligned = (address + 63) / 64 * 64;
    LayOutArrays(SolverWork.Memory + (aligned - address) / sizeof(double), n, SolverWork);
    TouchPages(SolverWork.Memory, static_cast<std::size_t>(EigensolverWorkBytes(n)));
    return 1;
}

void FreeEigensolverWork() {
    FreeArray(SolverWork.Memory);
}

// The largest sum of the absolute values of a row of the tridiagonal matrix.
static double TridiagonalNorm(int n) {
    double norm = 0.0;
    for (int j = 0; j < n; ++j) {
        const double before = j > 0 ? std::fabs(SolverWork.Off[j - 1]) : 0.0;
        norm = std::max(norm, std::fabs(SolverWork.Off[j]) + std::fabs(SolverWork.Diagonal[j]) + before);
    }
    return norm;
}

void SolveEigenproblem(double* matrix, double* vectors, double* values, int n) {
    if (n <= 0) {
        return;
    }
    if (n == 1) {
        values[0] = matrix[0];
        vectors[0] = 1.0;
        return;
    }
    if (!ReserveEigensolverWork(n)) {
        FatalError(Message::OutOfMemory);
    }
    PendingWork = 0.0;
    ReduceToTridiagonal(matrix, vectors, n);
    const double norm = TridiagonalNorm(n);
    const double tolerance = std::max(1e-8 * norm, ZeroTolerance);
    FindEigenvalues(values, n, tolerance);
    FindTridiagonalVectors(vectors, values, n, norm, tolerance);
    TransformBack(matrix, vectors, n);
}
