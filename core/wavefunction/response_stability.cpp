// SPDX-License-Identifier: MIT
// Davidson's method for one eigenvalue, with restarts.
#include "wavefunction/response_stability.h"

#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "numerics/dense_kernels.h"
#include "numerics/eigensolver.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

static constexpr int LargestBasis = 10;
static constexpr int KeptVectors = 3;                 // at a restart
static constexpr int MostIterations = 300;            // far more than it takes
static constexpr double LargestResidual = 1e-6;       // Hartree; the error of the eigenvalue is about its square
static constexpr double SmallestNorm = 1e-10;         // of what is left of a new vector of norm 1
static constexpr double SmallestDenominator = 0.05;   // Hartree, of the preconditioner
static constexpr std::uint32_t StartSeed = 20240229;  // of the first vector, which has a share of every symmetry

// Blocks hold one vector in each row; A amplitudes. Filled by LowestResponseEigenvalue.
static struct {
    double* Basis;    // [LargestBasis + 1][A] orthonormal, and room for the vector to come
    double* Images;   // [LargestBasis][A] the operator times the basis
    double* Matrix;   // [LargestBasis][LargestBasis] of the operator in the basis
    double* Copy;     // the same, for the eigensolver
    double* Vectors;  // [LargestBasis][LargestBasis] its eigenvectors
    double* Values;   // [LargestBasis]
} Work;

template <class Visitor> static void VisitWork(Visitor& visit) {
    visit(Work.Basis, (LargestBasis + 1) * AmplitudeCount());
    visit(Work.Images, LargestBasis * AmplitudeCount());
    visit(Work.Matrix, static_cast<long long>(LargestBasis) * LargestBasis);
    visit(Work.Copy, static_cast<long long>(LargestBasis) * LargestBasis);
    visit(Work.Vectors, static_cast<long long>(LargestBasis) * LargestBasis);
    visit(Work.Values, LargestBasis);
}

double StabilityWorkBytes() {
    ArraySum sum;
    VisitWork(sum);
    return sum.Bytes;
}

static double* VectorOf(double* block, int vector) {
    return block + vector * AmplitudeCount();
}

static double Normalise(double* vector) {
    double square;
    DotAmplitudes(vector, 1, vector, &square);
    const double norm = std::sqrt(square);
    std::for_each(vector, vector + AmplitudeCount(), [&](double& element) { element /= norm; });
    return norm;
}

// Numbers without a pattern over the gaps.
static void FillFirstVector(const double* gaps, double* vector) {
    std::uint32_t state = StartSeed;
    for (long long k = 0; k < AmplitudeCount(); ++k) {
        state = state * 1664525U + 1013904223U;
        vector[k] = (static_cast<double>(state >> 8) / 0x1p24 - 0.5) / std::max(gaps[k], SmallestDenominator);
    }
    Normalise(vector);
}

// Makes the vector behind the basis orthogonal to it and of norm 1; false if nothing is left of it.
static bool AddToBasis(int size) {
    double products[LargestBasis];
    double* vector = VectorOf(Work.Basis, size);
    double left = Normalise(vector);
    for (int pass = 0; pass < 2; ++pass) {
        DotAmplitudes(Work.Basis, size, vector, products);
        std::for_each(products, products + size, [](double& product) { product = -product; });
        AddAmplitudes(Work.Basis, size, products, vector);
        left = Normalise(vector);
        if (!(left > SmallestNorm)) {
            return false;
        }
    }
    return true;
}

static void FormImage(const ResponseOperator& kind, const double* gaps, double* rows, int place) {
    const double* vector = VectorOf(Work.Basis, place);
    double* image = VectorOf(Work.Images, place);
    std::copy(vector, vector + AmplitudeCount(), image);
    ApplyExchange(kind, image, 1, rows);
    for (long long k = 0; k < AmplitudeCount(); ++k) {
        image[k] += gaps[k] * vector[k];
    }
    double products[LargestBasis];
    DotAmplitudes(Work.Basis, place + 1, image, products);
    for (int k = 0; k <= place; ++k) {
        Work.Matrix[place * LargestBasis + k] = Work.Matrix[k * LargestBasis + place] = products[k];
    }
}

static void SolveInBasis(int size) {
    for (int k = 0; k < size; ++k) {
        std::copy(Work.Matrix + k * LargestBasis, Work.Matrix + k * LargestBasis + size, Work.Copy + k * size);
    }
    SolveEigenproblem(Work.Copy, Work.Vectors, Work.Values, size);
}

// Puts the residual of the lowest eigenvector behind the basis, and returns its norm.
static double FormResidual(int size) {
    double factors[LargestBasis];
    double* residual = VectorOf(Work.Basis, size);
    std::fill(residual, residual + AmplitudeCount(), 0.0);
    AddAmplitudes(Work.Images, size, Work.Vectors, residual);
    std::transform(Work.Vectors, Work.Vectors + size, factors, [](double share) { return -Work.Values[0] * share; });
    AddAmplitudes(Work.Basis, size, factors, residual);
    double square;
    DotAmplitudes(residual, 1, residual, &square);
    return std::sqrt(square);
}

// block[KeptVectors] := the lowest eigenvectors in the basis of the block.
static void KeepLowest(double* block, int size) {
    double old[LargestBasis];
    for (long long k = 0; k < AmplitudeCount(); ++k) {
        for (int vector = 0; vector < size; ++vector) {
            old[vector] = VectorOf(block, vector)[k];
        }
        for (int kept = 0; kept < KeptVectors; ++kept) {
            double sum = 0.0;
            for (int vector = 0; vector < size; ++vector) {
                sum += Work.Vectors[kept * size + vector] * old[vector];
            }
            VectorOf(block, kept)[k] = sum;
        }
    }
    PollMessages(static_cast<int>(AmplitudeCount()));
}

// Starts anew from the lowest eigenvectors; the vector behind the basis moves behind them.
static int Restart(int size) {
    KeepLowest(Work.Basis, size);
    KeepLowest(Work.Images, size);
    const double* last = VectorOf(Work.Basis, size);
    std::copy(last, last + AmplitudeCount(), VectorOf(Work.Basis, KeptVectors));
    for (int k = 0; k < KeptVectors; ++k) {
        std::fill(Work.Matrix + k * LargestBasis, Work.Matrix + k * LargestBasis + KeptVectors, 0.0);
        Work.Matrix[k * LargestBasis + k] = Work.Values[k];
    }
    return KeptVectors;
}

double LowestResponseEigenvalue(const ResponseOperator& kind, const double* gaps, double* rows) {
    ArrayAllocator allocator;
    VisitWork(allocator);
    if (!allocator.Complete) {
        FatalError(Message::OutOfMemory);
    }
    FillFirstVector(gaps, Work.Basis);
    int size = 0;
    for (int iteration = 0; iteration < MostIterations; ++iteration) {
        FormImage(kind, gaps, rows, size);
        ++size;
        SolveInBasis(size);
        if (!(FormResidual(size) > LargestResidual)) {
            break;
        }
        double* next = VectorOf(Work.Basis, size);
        for (long long k = 0; k < AmplitudeCount(); ++k) {
            next[k] /= std::max(gaps[k] - Work.Values[0], SmallestDenominator);
        }
        size = size == LargestBasis ? Restart(size) : size;
        if (!AddToBasis(size)) {
            break;
        }
    }
    return Work.Values[0];
}
