// SPDX-License-Identifier: MIT
// Block Lanczos over amplitudes that are scaled by the roots of the gaps. A block holds one vector in each row.
#include "wavefunction/response_solver.h"

#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "numerics/dense_kernels.h"
#include "wavefunction/response_stability.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <utility>

static constexpr long long BlockNumbers = 1 << 22;  // of a block that holds more vectors than SmallestBatch
static constexpr int SmallestBatch = 3;             // the directions of a field
static constexpr double SmallestGap = 0.05;         // Hartree, of a scale
static constexpr double SmallestNorm = 1e-6;        // of a new vector, beside the largest that may come
static constexpr double SmallNorm = 0.01;           // of one in which the rounding of older vectors may stand out
static constexpr double Rounding = 1e-7;            // share of the smallest norm
static constexpr double KeptNorm = 0.7;             // share of a vector from which one projection is enough
static constexpr double SmallestReduction = 1e-12;  // of the differences, that rounding allows
static constexpr double SmallestPivot = 1e-14;      // beside the largest element

// Work for the solution of Batch perturbations at once; A amplitudes. Blocks are [Batch][A], small matrices
// [Batch][Batch]. Filled by PrepareResponses and by each solution.
static struct {
    int Batch;
    double LargestScale;
    double* Gaps;           // [A] of the levels, Hartree
    double* Scale;          // [A] one over the roots of the gaps
    double* Perturbations;  // block of the right sides, unscaled
    double* Current;        // block of orthonormal vectors
    double* Previous;       // the one before
    double* Next;           // the one to come, at first the perturbations
    double* Directions;     // in which the amplitudes move
    double* Amplitudes;     // [Batch][A]
    double* Rows;           // [Batch][occupied][N]
    double* Pivots;         // diagonal block of the factors
    double* Inverse;        // its inverse
    double* Elimination;    // [Batch][2 Batch]
    double* Coupling;       // of the next block to the current one, by rows of the next
    double* Transfer;       // Coupling times Inverse
    double* Residuals;      // by perturbation: the residual in the vectors of the current block
    double* Steps;          // by perturbation: in directions
    double* Products;       // [Batch]
    double* Differences;    // [Batch]
} Work;

template <class Visitor> static void VisitWork(Visitor& visit, long long batch) {
    const long long amplitudes = AmplitudeCount();
    visit(Work.Gaps, amplitudes);
    visit(Work.Scale, amplitudes);
    for (double** block :
         {&Work.Perturbations, &Work.Current, &Work.Previous, &Work.Next, &Work.Directions, &Work.Amplitudes}) {
        visit(*block, batch * amplitudes);
    }
    visit(Work.Rows, batch * Run.Basis.DoublyOccupiedLevels * Run.Basis.OrbitalCount);
    for (double** matrix :
         {&Work.Pivots, &Work.Inverse, &Work.Coupling, &Work.Transfer, &Work.Residuals, &Work.Steps}) {
        visit(*matrix, batch * batch);
    }
    visit(Work.Elimination, 2 * batch * batch);
    visit(Work.Products, batch);
    visit(Work.Differences, batch);
}

int ResponseBatch() {
    return static_cast<int>(
        std::clamp<long long>(BlockNumbers / std::max(1LL, AmplitudeCount()), SmallestBatch, LargestBlock));
}

double ResponseWorkBytes() {
    if (!Run.Options.ResponseAcceleration) {
        return 0.0;
    }
    const int most = std::max(Run.Options.CalculateShielding ? SmallestBatch : 0,
                              Run.Options.CalculateCoupling ? Run.Molecule.NMRAtomCount : 0);
    ArraySum sum;
    VisitWork(sum, std::min(ResponseBatch(), most));
    return sum.Bytes + StabilityWorkBytes();
}

void PrepareResponses(int count) {
    ArrayAllocator allocator;
    VisitWork(allocator, count);
    if (!allocator.Complete) {
        FatalError(Message::OutOfMemory);
    }
    Work.Batch = count;
    FillLevelGaps(Work.Gaps);
    Work.LargestScale = 0.0;
    for (long long k = 0; k < AmplitudeCount(); ++k) {
        Work.Scale[k] = 1.0 / std::sqrt(std::max(Work.Gaps[k], SmallestGap));
        Work.LargestScale = std::max(Work.LargestScale, Work.Scale[k]);
    }
}

double* ResponsePerturbations() {
    return Work.Perturbations;
}

const double* ResponseAmplitudes() {
    return Work.Amplitudes;
}

double* ResponseRows() {
    return Work.Rows;
}

double LowestEigenvalue(const ResponseOperator& kind) {
    return LowestResponseEigenvalue(kind, Work.Gaps, Work.Rows);
}

static double* VectorOf(double* block, int vector) {
    return block + vector * AmplitudeCount();
}

static double* RowOf(double* matrix, int row) {
    return matrix + static_cast<long long>(row) * Work.Batch;
}

static void ScaleVectors(double* block, int count) {
    const long long length = AmplitudeCount();
    for (int vector = 0; vector < count; ++vector, block += length) {
        for (long long k = 0; k < length; ++k) {
            block[k] *= Work.Scale[k];
        }
        PollMessages(static_cast<int>(length));
    }
}

static double NormOf(const double* values, long long count) {
    double square;
    Kernels().DotRows(values, static_cast<std::size_t>(count), 1, values, static_cast<int>(count), &square);
    return std::sqrt(square);
}

// Takes the vectors of a block out of a vector.
static void ProjectOut(const double* block, int count, double* vector) {
    DotAmplitudes(block, count, vector, Work.Products);
    for (int k = 0; k < count; ++k) {
        Work.Products[k] = -Work.Products[k];
    }
    AddAmplitudes(block, count, Work.Products, vector);
}

// Where Lanczos stands.
struct LanczosState {
    int Rank;          // vectors of the next block
    int PreviousRank;  // of the current one; 0 before the first
    bool Unstable;     // a block of the factors wasn't positive definite
    bool Incomplete;   // a vector was left out that was more than rounding
};

// Makes a vector of Next orthogonal to those before it. Where little is left of it, what rounding has left in it of the
// two older blocks is taken out too. Returns its norm.
static double Orthogonalise(const LanczosState& state, int currentRank, int rank, double smallest, int i) {
    double* vector = VectorOf(Work.Next, i);
    double norm = NormOf(vector, AmplitudeCount());
    double before;
    do {
        before = norm;
        if (norm < SmallNorm) {
            ProjectOut(Work.Previous, state.PreviousRank, vector);
            ProjectOut(Work.Current, currentRank, vector);
        }
        ProjectOut(Work.Next, rank, vector);
        for (int r = 0; r < rank; ++r) {
            RowOf(Work.Coupling, r)[i] -= Work.Products[r];
        }
        norm = NormOf(vector, AmplitudeCount());
    } while (norm > smallest && norm < KeptNorm * before);
    return norm;
}

// Makes count vectors of Next orthonormal, and leaves out those that depend on the others; the rank becomes what is
// left. Coupling[r][i] is the share of new vector r in old vector i.
static void Orthonormalise(LanczosState& state, int currentRank, int count, double smallest) {
    int rank = 0;
    std::fill(Work.Coupling, RowOf(Work.Coupling, Work.Batch), 0.0);
    for (int i = 0; i < count; ++i) {
        const double norm = Orthogonalise(state, currentRank, rank, smallest, i);
        if (norm > smallest) {  // what isn't a number is left out
            const double* vector = VectorOf(Work.Next, i);
            double* place = VectorOf(Work.Next, rank);
            std::transform(vector, vector + AmplitudeCount(), place, [&](double element) { return element / norm; });
            RowOf(Work.Coupling, rank++)[i] = norm;
        } else if (norm > smallest * Rounding) {
            state.Incomplete = true;
        }
    }
    state.Rank = rank;
}

// Makes the right sides in Next the first block; their shares in its vectors are the residuals.
static void StartLanczos(LanczosState& state, int count) {
    double largest = 0.0;
    for (int c = 0; c < count; ++c) {
        largest = std::max(largest, NormOf(VectorOf(Work.Next, c), AmplitudeCount()));
    }
    state.PreviousRank = 0;
    state.Incomplete = false;
    Orthonormalise(state, 0, count, SmallestNorm * largest);
    for (int c = 0; c < count; ++c) {
        for (int r = 0; r < state.Rank; ++r) {
            RowOf(Work.Residuals, c)[r] = RowOf(Work.Coupling, r)[c];
        }
    }
}

// Next := the scaled operator times scaled vectors.
static void ApplyScaledOperator(const ResponseOperator& kind, const double* vectors, int count) {
    const long long length = AmplitudeCount();
    std::copy(vectors, vectors + count * length, Work.Next);
    ScaleVectors(Work.Next, count);
    ApplyExchange(kind, Work.Next, count, Work.Rows);
    for (int c = 0; c < count; ++c, vectors += length) {
        double* image = VectorOf(Work.Next, c);
        for (long long k = 0; k < length; ++k) {
            image[k] = Work.Scale[k] * (image[k] + Work.Gaps[k] * Work.Scale[k] * vectors[k]);
        }
        PollMessages(static_cast<int>(length));
    }
}

// Next := what the amplitudes leave of the right sides.
static void FormResiduals(const ResponseOperator& kind, int count) {
    const long long length = AmplitudeCount();
    ApplyScaledOperator(kind, Work.Amplitudes, count);
    for (int c = 0; c < count; ++c) {
        const double* perturbation = VectorOf(Work.Perturbations, c);
        double* residual = VectorOf(Work.Next, c);
        for (long long k = 0; k < length; ++k) {
            residual[k] = Work.Scale[k] * perturbation[k] - residual[k];
        }
        PollMessages(static_cast<int>(length));
    }
}

// Takes the previous and the current block out of Next, and forms the block of the factors that belongs to the current
// one. Coupling and Transfer are those between the previous block and the current one.
static void ReduceNext(int rank, int previousRank) {
    SubtractCombinations(Work.Coupling, Work.Batch, rank, Work.Previous, previousRank, Work.Next);
    for (int r = 0; r < rank; ++r) {
        DotAmplitudes(Work.Current, r + 1, VectorOf(Work.Next, r), RowOf(Work.Pivots, r));
        for (int q = 0; q < r; ++q) {
            RowOf(Work.Pivots, q)[r] = RowOf(Work.Pivots, r)[q];
        }
    }
    SubtractCombinations(Work.Pivots, Work.Batch, rank, Work.Current, rank, Work.Next);
    for (int r = 0; r < rank; ++r) {
        for (int q = 0; q <= r; ++q) {
            double product;
            Kernels().DotRows(RowOf(Work.Coupling, r), static_cast<std::size_t>(Work.Batch), 1, RowOf(Work.Transfer, q),
                              previousRank, &product);
            double& element = RowOf(Work.Pivots, r)[q];
            element -= product;
            RowOf(Work.Pivots, q)[r] = element;
        }
    }
}

// Directions := the current block less the transferred old directions; it takes the place of the previous block.
static void AdvanceDirections(int rank, int previousRank) {
    std::copy(Work.Current, VectorOf(Work.Current, rank), Work.Previous);
    SubtractCombinations(Work.Transfer, Work.Batch, rank, Work.Directions, previousRank, Work.Previous);
    std::swap(Work.Previous, Work.Directions);
}

// True if elimination without interchanges meets only positive pivots.
static bool PivotsArePositive(int rank) {
    std::copy(Work.Pivots, RowOf(Work.Pivots, rank), Work.Inverse);
    for (int r = 0; r < rank; ++r) {
        const double* pivot = RowOf(Work.Inverse, r);
        if (!(pivot[r] > 0.0)) {
            return false;
        }
        for (int q = r + 1; q < rank; ++q) {
            double* row = RowOf(Work.Inverse, q);
            const double factor = -row[r] / pivot[r];
            Kernels().AddRows(pivot, 0, 1, &factor, row, rank);
        }
    }
    return true;
}

// Inverse := that of Pivots, by elimination with interchanges of rows.
static void InvertPivots(int rank) {
    const int width = 2 * rank;
    const auto row = [&](int r) { return Work.Elimination + 2LL * r * Work.Batch; };
    double largest = 0.0;
    for (int r = 0; r < rank; ++r) {
        std::fill(row(r), row(r) + width, 0.0);
        std::copy(RowOf(Work.Pivots, r), RowOf(Work.Pivots, r) + rank, row(r));
        row(r)[rank + r] = 1.0;
        largest = std::accumulate(row(r), row(r) + rank, largest,
                                  [](double sum, double element) { return std::max(sum, std::fabs(element)); });
    }
    for (int r = 0; r < rank; ++r) {
        int best = r;
        for (int q = r + 1; q < rank; ++q) {
            best = std::fabs(row(q)[r]) > std::fabs(row(best)[r]) ? q : best;
        }
        std::swap_ranges(row(r), row(r) + width, row(best));
        const double pivot = std::fabs(row(r)[r]) > SmallestPivot * largest ? row(r)[r] : SmallestPivot * largest;
        for (int k = 0; k < width; ++k) {
            row(r)[k] /= pivot;
        }
        for (int q = 0; q < rank; ++q) {
            if (q != r) {
                const double factor = -row(q)[r];
                Kernels().AddRows(row(r), 0, 1, &factor, row(q), width);
            }
        }
        PollMessages(rank * width);
    }
    for (int r = 0; r < rank; ++r) {
        std::copy(row(r) + rank, row(r) + width, RowOf(Work.Inverse, r));
    }
}

// target := rows times Inverse, which is symmetric.
static void MultiplyByInverse(double* rows, int count, int rank, double* target) {
    for (int c = 0; c < count; ++c) {
        Kernels().DotRows(Work.Inverse, static_cast<std::size_t>(Work.Batch), rank, RowOf(rows, c), rank,
                          RowOf(target, c));
    }
}

static void MoveAmplitudes(int count, int rank) {
    MultiplyByInverse(Work.Residuals, count, rank, Work.Steps);
    for (int c = 0; c < count; ++c) {
        double* step = RowOf(Work.Steps, c);
        std::transform(step, step + rank, step, std::negate<>());
    }
    SubtractCombinations(Work.Steps, Work.Batch, count, Work.Directions, rank, Work.Amplitudes);
}

// Residuals in the vectors of the next block: what its coupling makes of the last step, which stands there negative.
static void MoveResiduals(int count, int rank, int nextRank) {
    for (int c = 0; c < count; ++c) {
        double* residual = RowOf(Work.Residuals, c);
        Kernels().DotRows(Work.Coupling, static_cast<std::size_t>(Work.Batch), nextRank, RowOf(Work.Steps, c), rank,
                          residual);
    }
}

// One step of Lanczos: the next block becomes the current one, and the amplitudes move along its directions.
static void AdvanceLanczos(const ResponseOperator& kind, LanczosState& state, int count) {
    const int rank = state.Rank;
    std::swap(Work.Previous, Work.Current);
    std::swap(Work.Current, Work.Next);
    ApplyScaledOperator(kind, Work.Current, rank);
    ReduceNext(rank, state.PreviousRank);
    state.Unstable = !PivotsArePositive(rank) || state.Unstable;
    InvertPivots(rank);
    Orthonormalise(state, rank, rank, SmallestNorm);
    AdvanceDirections(rank, state.PreviousRank);
    MoveAmplitudes(count, rank);
    MultiplyByInverse(Work.Coupling, state.Rank, rank, Work.Transfer);
    MoveResiduals(count, rank, state.Rank);
    state.PreviousRank = rank;
}

// A bound of how far one more step by the scales alone would move the densities. Returns the place of the largest.
static int MeasureDifferences(const ResponseOperator& kind, int count, int rank) {
    for (int c = 0; c < count; ++c) {
        const double norm = rank > 0 ? NormOf(RowOf(Work.Residuals, c), rank) : 0.0;
        Work.Differences[c] = std::sqrt(2.0) * kind.DensityFactor * Work.LargestScale * norm;
    }
    return static_cast<int>(std::max_element(Work.Differences, Work.Differences + count) - Work.Differences);
}

ResponseOutcome SolveResponses(const ResponseOperator& kind, int count, double limit,
                               void (*logDifference)(int perturbation, int iteration, double difference)) {
    LanczosState state = {};
    std::copy(Work.Perturbations, VectorOf(Work.Perturbations, count), Work.Next);
    ScaleVectors(Work.Next, count);
    std::fill(Work.Amplitudes, VectorOf(Work.Amplitudes, count), 0.0);
    if (Run.Options.SCFIterationLimit == 1) {
        std::copy(Work.Next, VectorOf(Work.Next, count), Work.Amplitudes);
    }
    StartLanczos(state, count);
    int largest = MeasureDifferences(kind, count, state.Rank);
    limit = std::max(limit, SmallestReduction * Work.Differences[largest]);
    int iteration = 0;
    bool ended = state.Rank == 0;
    while (!ended && iteration + 1 < Run.Options.SCFIterationLimit) {
        if (iteration > 0) {
            logDifference(largest, iteration, Work.Differences[largest]);
        }
        ++iteration;
        AdvanceLanczos(kind, state, count);
        largest = MeasureDifferences(kind, count, state.Rank);
        if ((state.Rank == 0 || Work.Differences[largest] <= limit) && (state.Incomplete || state.Unstable)) {
            FormResiduals(kind, count);  // the shares may have missed something
            StartLanczos(state, count);
            largest = MeasureDifferences(kind, count, state.Rank);
        }
        ended = state.Rank == 0 || Work.Differences[largest] <= limit;
    }
    for (int c = 0; c < count && Run.Options.SCFIterationLimit > 1; ++c) {
        logDifference(c, iteration, Work.Differences[c]);
    }
    ScaleVectors(Work.Amplitudes, count);
    return {Work.Differences, limit, state.Unstable};
}
