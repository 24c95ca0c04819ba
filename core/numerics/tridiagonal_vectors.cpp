// SPDX-License-Identifier: MIT
// Eigenvectors of a symmetric tridiagonal matrix by inverse iteration, for the eigensolver: eight at a time, then
// each orthogonalised against the earlier ones that are close to it.
// Wilkinson, The Algebraic Eigenvalue Problem, Oxford 1965, chapter 5.
#include "numerics/dense_kernels.h"
#include "numerics/eigensolver_work.h"

#include <algorithm>
#include <cmath>

static constexpr double SequenceStep = 6.180339887485e-9;  // the golden section of SequencePeriod
static constexpr double SequencePeriod = 1e-8;             // start values lie below it
static constexpr int MostPasses = 5;                       // of the inverse iteration
static constexpr double VectorScale = 1e-5;                // largest number of a vector after a pass
static constexpr double GrowthEnough = 1.0;                // a pass that reaches it was the last
static constexpr double SmallestGrowth = 1e-20;            // a smaller largest number counts as this
static constexpr double GroupWidth = 0.05;                 // eigenvalues nearer than it form a group
static constexpr double Overlap = 1e-11;                   // scalar product that two vectors may be left with
static constexpr double Cancellation = 0.5;                // a projection that reduces a norm further is repeated
static constexpr double LostNorm = 1e-6;                   // nothing of the vector itself is left below it
static constexpr double LostDeviation = 2e-8;              // of the norm: not an eigenvector
static constexpr double GoodDeviation = 1e-12;             // of the norm: no further attempt
static constexpr double IsolatedDistance = 1e-5;           // of the norm: no other vector mixes with it
static constexpr double NoiseResidual = 1e-15;             // of the norm: what the residual can't be told from
static constexpr int MostRounds = 8;                       // of the orthogonalisation of a vector
static constexpr int MostAttempts = 4;                     // to replace a lost vector
static constexpr double ShiftDistances[MostAttempts] = {1e1, 1e4, 1e7, 1e7};  // from the value, in noise
static constexpr double SmallestPivot = 1e-30;                                // for a matrix that is all but zero
static constexpr double Huge = 1e150;  // numbers of a solution are scaled down from here

// The vectors found so far and what the search for the next one needs; filled by FindTridiagonalVectors.
static struct {
    double* Vectors;             // [n][n] the result
    const double* Values;        // [n] eigenvalues, ascending
    int N;                       // order
    double Norm;                 // of the tridiagonal matrix
    double Start;                // last number of the start sequence
    unsigned long long Scatter;  // state of the generator of FillScattered
    int GroupStart;              // first vector of the group of the vector in hand
    double WorstResidual;        // largest Residual of a vector so far
    double WorstDeviation;       // largest Deviation
} Search;

// How good a normalised vector x for an eigenvalue is.
struct Quality {
    double Quotient;   // x'Tx
    double Residual;   // norm of (T - Quotient) x, with noise: how far x is from any eigenvector
    double Deviation;  // norm of (T - value) x
};

static double* VectorRow(int i) {
    return Search.Vectors + static_cast<std::size_t>(i) * static_cast<std::size_t>(Search.N);
}

// Fills count numbers, a distance apart, with the start sequence.
static void FillFromSequence(double* x, int count, std::size_t distance) {
    double value = Search.Start;
    for (int j = 0; j < count; ++j) {
        value += SequenceStep;
        if (value >= SequencePeriod) {
            value -= SequencePeriod;
        }
        x[static_cast<std::size_t>(j) * distance] = value;
    }
    Search.Start = value;
}

static double Dot(const double* a, const double* b) {
    double product = 0.0;
    Kernels().DotRows(a, 0, 1, b, Search.N, &product);
    return product;
}

static void Scale(double* x, double factor) {
    for (int j = 0; j < Search.N; ++j) {
        x[j] *= factor;
    }
}

// Gives x the norm 1; returns the norm that it had, or 0 if there is none to speak of.
static double Normalise(double* x) {
    double before = 1.0;
    double square = Dot(x, x);
    if (!(square > 1e-200 && square < 1e200)) {  // also true for what isn't a number
        double largest = 0.0;
        for (int j = 0; j < Search.N; ++j) {
            largest = std::max(largest, std::fabs(x[j]));
        }
        if (!(square >= 0.0) || !(largest > 1e-300 && largest < 1e300)) {
            return 0.0;
        }
        Scale(x, 1.0 / largest);
        before = largest;
        square = Dot(x, x);
    }
    const double norm = std::sqrt(square);
    Scale(x, 1.0 / norm);
    return norm * before;
}

// Measures the normalised vector i.
static Quality Measure(int i, const double* x) {
    double products[2];
    Kernels().ResidualProducts(SolverWork.Diagonal, SolverWork.Off, Search.Values[i], x, Search.N, products);
    const double square = std::max(products[0] - products[1] * products[1], 0.0);
    return {Search.Values[i] + products[1], std::sqrt(square) + NoiseResidual * Search.Norm, std::sqrt(products[0])};
}

// Subtracts from x its projections on the vectors from first to end - 1.
static void ProjectOut(double* x, int first, int end) {
    double products[ChunkLength];
    for (int j = first; j < end; j += ChunkLength) {
        const int count = std::min(ChunkLength, end - j);
        const std::size_t stride = static_cast<std::size_t>(Search.N);
        Kernels().DotRows(VectorRow(j), stride, count, x, Search.N, products);
        for (int k = 0; k < count; ++k) {
            products[k] = -products[k];
        }
        Kernels().AddRows(VectorRow(j), stride, count, products, x, Search.N);
        CountSolverWork(2.0 * count * Search.N);
    }
}

// Two vectors with the residuals r and s have a scalar product of at most (r + s) / the distance of their quotients.
// So a vector before the group is near to vector i where that bound doesn't keep below Overlap.
static bool IsNear(int j, const Quality& quality) {
    return std::fabs(quality.Quotient - SolverWork.Quotient[j]) * Overlap < quality.Residual + SolverWork.Residual[j];
}

// Subtracts from vector i, of that quality, its projections on the group and on the near vectors before it. Returns 0
// if there are none.
static int ProjectOutNear(int i, double* x, const Quality& quality) {
    const double width = (quality.Residual + Search.WorstResidual) / Overlap + quality.Deviation +
                         Search.WorstDeviation;  // no vector beyond it is near
    int lowest = Search.GroupStart;
    while (lowest > 0 && Search.Values[i] - Search.Values[lowest - 1] < width) {
        --lowest;
    }
    int found = Search.GroupStart < i;
    for (int j = lowest; j < Search.GroupStart;) {
        const int first = j;
        while (j < Search.GroupStart && IsNear(j, quality)) {
            ++j;
        }
        if (j > first) {
            ProjectOut(x, first, j);
            found = 1;
        } else {
            ++j;
        }
    }
    ProjectOut(x, Search.GroupStart, i);
    return found;
}

// Normalises vector i and makes it orthogonal to the earlier ones that need it. Fills quality; 0 if what is left is no
// longer a vector.
static int Orthogonalise(int i, double* x, Quality& quality) {
    if (Normalise(x) <= 0.0) {
        return 0;
    }
    quality = Measure(i, x);
    Quality bound = quality;
    for (int round = 0; round < MostRounds; ++round) {
        if (!ProjectOutNear(i, x, bound)) {
            break;
        }
        const double left = Normalise(x);
        if (left < LostNorm) {
            return 0;
        }
        quality = Measure(i, x);
        const bool grown = quality.Residual > 1.5 * bound.Residual;
        bound = {quality.Quotient, std::max(bound.Residual, quality.Residual),
                 std::max(bound.Deviation, quality.Deviation)};
        if (left >= Cancellation && !grown) {
            break;
        }
    }
    return 1;
}

// Factors T - value for the search of a lost vector. Its group must not be told apart by the noise of the pivots, or
// a vector found already would outgrow the missing one. So the shift keeps a distance from the value, larger than the
// error of the value in the later attempts, and what couples less than noise doesn't couple. All lanes receive the
// same; the factors of the other vectors in hand are used up by now.
static void FactorSmoothly(double value, double distance) {
    const double noise = NoiseResidual * Search.Norm;
    const LaneFactors factors = {SolverWork.LaneReciprocal, SolverWork.LaneUpper, SolverWork.LaneBand,
                                 SolverWork.LaneMultiplier};
    double shifts[ChunkLength];
    std::fill(shifts, shifts + ChunkLength, value + distance * noise);
    for (int j = 0; j < Search.N; ++j) {
        SolverWork.Band[j] = std::fabs(SolverWork.Off[j]) < noise ? 0.0 : SolverWork.Off[j];
    }
    Kernels().FactorLanes(SolverWork.Diagonal, SolverWork.Band, shifts, std::max(noise, SmallestPivot), Search.N,
                          factors);
    CountSolverWork(60.0 * Search.N);
}

// One pass of the inverse iteration on a single vector, with the factors of FactorSmoothly. Numbers that grow too
// large are scaled down, with the rest of the system.
static void SolveOnce(double* x) {
    const int n = Search.N;
    for (int j = 0; j + 1 < n; ++j) {
        const std::size_t place = static_cast<std::size_t>(j) * ChunkLength;
        if (SolverWork.LaneBand[place] != 0.0) {
            std::swap(x[j], x[j + 1]);
        }
        x[j + 1] += SolverWork.LaneMultiplier[place] * x[j];
    }
    for (int k = n - 1; k >= 0; --k) {
        const std::size_t place = static_cast<std::size_t>(k) * ChunkLength;
        const double first = k + 1 < n ? SolverWork.LaneUpper[place] * x[k + 1] : 0.0;
        const double second = k + 2 < n ? SolverWork.LaneBand[place] * x[k + 2] : 0.0;
        x[k] = (x[k] - second - first) * SolverWork.LaneReciprocal[place];
        if (std::fabs(x[k]) > Huge) {
            Scale(x, 1.0 / std::fabs(x[k]));
        }
    }
    CountSolverWork(10.0 * n);
}

// Fills x with scattered numbers from -0.5 to 0.5, for where the start sequence is too regular to help: its windows
// differ by few patterns only. The generator is the linear congruence modulo 2^64 with Knuth's multiplier.
static void FillScattered(double* x) {
    for (int j = 0; j < Search.N; ++j) {
        Search.Scatter = Search.Scatter * 6364136223846793005ULL + 1442695040888963407ULL;
        x[j] = static_cast<double>(Search.Scatter >> 11) * 0x1p-53 - 0.5;
    }
}

// True if no other value is so close to value i that their vectors could mix by choice.
static bool IsIsolated(int i) {
    const double distance = IsolatedDistance * Search.Norm;
    return (i == 0 || Search.Values[i] - Search.Values[i - 1] > distance) &&
           (i + 1 == Search.N || Search.Values[i + 1] - Search.Values[i] > distance);
}

// A value that makes the last pivot vanish has it replaced by the tolerance, which spoils the vector in the eighth
// digit. An isolated vector is mended by passes with better pivots; its sign stays.
static void MendVector(int i, double* x) {
    if (!IsIsolated(i) || Normalise(x) <= 0.0 || Measure(i, x).Residual <= GoodDeviation * Search.Norm) {
        return;
    }
    FactorSmoothly(Search.Values[i], ShiftDistances[0]);
    std::copy(x, x + Search.N, SolverWork.Spare);
    for (int pass = 0; pass < 2; ++pass) {
        SolveOnce(x);
        if (Normalise(x) <= 0.0) {
            return;  // it counts as lost
        }
    }
    if (Dot(x, SolverWork.Spare) < 0.0) {
        Scale(x, -1.0);
    }
}

// Finds vector i from the numbers in x, within what is orthogonal to the near vectors. Returns as Orthogonalise does.
static int IterateWithinComplement(int i, double* x, Quality& quality) {
    const Quality near = {Search.Values[i], 10.0 * NoiseResidual * Search.Norm, 0.0};
    double last = -1.0;
    for (int pass = 0; pass <= MostPasses; ++pass) {
        if (pass > 0) {
            SolveOnce(x);
        }
        double left = 0.0;
        for (int time = 0; time < 2 && left < Cancellation; ++time) {
            if (Normalise(x) <= 0.0) {
                return 0;
            }
            ProjectOutNear(i, x, near);
            left = std::sqrt(Dot(x, x));
        }
        if (left < LostNorm) {
            return 0;
        }
        Normalise(x);
        const double deviation = Measure(i, x).Deviation;
        if (pass >= 2 && (deviation <= GoodDeviation * Search.Norm || deviation > 0.5 * last)) {
            break;
        }
        last = deviation;
    }
    return Orthogonalise(i, x, quality);
}

// The last resort: the first unit vector of which enough is orthogonal to all earlier vectors. As the squares of those
// parts sum up to n - i over all unit vectors, there is one.
static Quality TakeUnitVector(int i, double* x) {
    const int n = Search.N;
    for (int k = 0; k < n; ++k) {
        std::fill(x, x + n, 0.0);
        x[k] = 1.0;
        ProjectOut(x, 0, i);
        if (Dot(x, x) * 2.0 * n >= 1.0) {
            break;
        }
    }
    for (int time = 0; time < 2; ++time) {
        Normalise(x);
        ProjectOut(x, 0, i);
    }
    Normalise(x);
    return Measure(i, x);
}

// Replaces vector i, of which the group has left nothing, or which is none; returns the quality of the best that was
// found. x holds it as found before, if exists, with that quality.
static Quality ReplaceLostVector(int i, double* x, int exists, const Quality& quality) {
    Quality best = quality;
    std::copy(x, x + Search.N, SolverWork.Spare);
    for (int attempt = 0; attempt < MostAttempts; ++attempt) {
        FactorSmoothly(Search.Values[i], ShiftDistances[attempt]);
        if (attempt == 0) {
            FillFromSequence(x, Search.N, 1);
        } else {
            FillScattered(x);
        }
        Quality found;
        if (IterateWithinComplement(i, x, found) && (!exists || found.Deviation < best.Deviation)) {
            best = found;
            exists = 1;
            std::copy(x, x + Search.N, SolverWork.Spare);
        }
        if (exists && best.Deviation <= LostDeviation * Search.Norm) {
            break;
        }
    }
    if (!exists) {
        return TakeUnitVector(i, x);
    }
    std::copy(SolverWork.Spare, SolverWork.Spare + Search.N, x);
    return best;
}

// Inverse iteration for the vectors first to first + count - 1, side by side; each goes to its row when it has grown
// enough. Lanes beyond count repeat the last value and are not used.
static void IterateLanes(int first, int count, double tolerance) {
    const int n = Search.N;
    const LaneFactors factors = {SolverWork.LaneReciprocal, SolverWork.LaneUpper, SolverWork.LaneBand,
                                 SolverWork.LaneMultiplier};
    double* x = SolverWork.LaneVectors;
    double shifts[ChunkLength];
    double largest[ChunkLength];
    bool done[ChunkLength] = {};
    const std::size_t total = static_cast<std::size_t>(n) * ChunkLength;
    if (count < ChunkLength) {
        std::fill(x, x + total, 0.0);
    }
    for (int lane = 0; lane < ChunkLength; ++lane) {
        shifts[lane] = Search.Values[std::min(first + lane, first + count - 1)];
        if (lane < count) {
            FillFromSequence(x + lane, n, ChunkLength);
        }
    }
    Kernels().FactorLanes(SolverWork.Diagonal, SolverWork.Off, shifts, tolerance, n, factors);
    int left = count;
    for (int pass = 1; pass <= MostPasses && left > 0; ++pass) {
        Kernels().SolveLanes(factors, n, pass > 1, x, largest);
        for (int lane = 0; lane < count; ++lane) {
            const bool last = pass == MostPasses || (pass > 1 && largest[lane] > GrowthEnough);
            if (last && !done[lane]) {
                double* row = VectorRow(first + lane);
                for (int j = 0; j < n; ++j) {
                    row[j] = x[static_cast<std::size_t>(j) * ChunkLength + static_cast<std::size_t>(lane)];
                }
                done[lane] = true;
                --left;
            }
        }
        if (left > 0) {
            double scales[ChunkLength];
            for (int lane = 0; lane < ChunkLength; ++lane) {
                scales[lane] = VectorScale / std::max(largest[lane], SmallestGrowth);
            }
            for (std::size_t j = 0; j < total; j += ChunkLength) {
                for (std::size_t lane = 0; lane < ChunkLength; ++lane) {
                    x[j + lane] *= scales[lane];
                }
            }
        }
        CountSolverWork(30.0 * n);
    }
    CountSolverWork(100.0 * n);
}

void FindTridiagonalVectors(double* vectors, const double* values, int n, double norm, double tolerance) {
    Search = {vectors, values, n, norm, 0.0, 0, 0, 0.0, 0.0};
    for (int first = 0; first < n; first += ChunkLength) {
        const int count = std::min(ChunkLength, n - first);
        IterateLanes(first, count, tolerance);
        for (int lane = 0; lane < count; ++lane) {
            const int i = first + lane;
            double* x = VectorRow(i);
            while (std::fabs(values[Search.GroupStart] - values[i]) >= GroupWidth) {
                ++Search.GroupStart;
            }
            MendVector(i, x);
            Quality quality = {};
            const int exists = Orthogonalise(i, x, quality);
            if (!exists || quality.Deviation > LostDeviation * norm) {
                quality = ReplaceLostVector(i, x, exists, quality);
            }
            SolverWork.Quotient[i] = quality.Quotient;
            SolverWork.Residual[i] = quality.Residual;
            Search.WorstResidual = std::max(Search.WorstResidual, quality.Residual);
            Search.WorstDeviation = std::max(Search.WorstDeviation, quality.Deviation);
            CountSolverWork(10.0 * n);
        }
    }
}
