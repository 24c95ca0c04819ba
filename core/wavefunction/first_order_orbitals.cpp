// SPDX-License-Identifier: MIT
// Solves the first-order perturbation sum as products of whole matrices: occupied rows of the Fock matrix, their
// projections on the empty levels, and the change of the orbitals.
#include "wavefunction/first_order_orbitals.h"

#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "numerics/dense_kernels.h"
#include "numerics/polling_product.h"

#include <algorithm>
#include <cmath>

static constexpr double SmallestGap = 1e-20;  // Hartree, between an occupied and an empty level
static constexpr double SmallestProjection = 1e-20;
static constexpr double FirstChange = 99.9;

// Work of the first-order steps, for one wavefunction; o occupied and v empty levels of N orbitals. Filled by
// PrepareFirstOrderOrbitals and by each step.
static struct {
    double* OccupiedColumns;  // [N][o] coefficients of the occupied levels, transposed
    double* EmptyColumns;     // [N][v] the same of the empty levels
    double* FockRows;         // [o][N] occupied coefficients times the Fock matrix
    double* Projections;      // [o][v] first-order coefficients
    double* Product;          // [N][N] half of the density
} Work;

template <class Visitor> static void VisitWork(Visitor& visit) {
    const long long n = Run.Basis.OrbitalCount;
    visit(Work.OccupiedColumns, n * OccupiedCount());
    visit(Work.EmptyColumns, n * EmptyCount());
    visit(Work.FockRows, n * OccupiedCount());
    visit(Work.Projections, static_cast<long long>(OccupiedCount()) * EmptyCount());
    visit(Work.Product, n * n);
}

double FirstOrderWorkBytes() {
    ArraySum sum;
    VisitWork(sum);
    return sum.Bytes;
}

static void Transpose(const double* rows, int count, double* columns) {
    for (long long level = 0; level < count; ++level) {
        for (long long k = 0; k < Run.Basis.OrbitalCount; ++k) {
            columns[k * count + level] = rows[level * Run.Basis.OrbitalCount + k];
        }
        PollMessages(Run.Basis.OrbitalCount);
    }
}

void PrepareFirstOrderOrbitals() {
    const long long n = Run.Basis.OrbitalCount;
    ArrayAllocator allocator;
    VisitWork(allocator);
    if (!allocator.Complete) {
        FatalError(Message::OutOfMemory);
    }
    Transpose(Run.Field.MolecularOrbitals, OccupiedCount(), Work.OccupiedColumns);
    Transpose(Run.Field.MolecularOrbitals + n * OccupiedCount(), EmptyCount(), Work.EmptyColumns);
}

const double* TransposedOccupiedLevels() {
    return Work.OccupiedColumns;
}

const double* TransposedEmptyLevels() {
    return Work.EmptyColumns;
}

static double GapOf(int occupied, int empty) {
    const double gap = Run.Field.OrbitalEnergiesRaw[occupied] - Run.Field.OrbitalEnergiesRaw[empty];
    if (std::fabs(gap) < SmallestGap) {
        return gap >= 0.0 ? SmallestGap : -SmallestGap;
    }
    return gap;
}

// The products hold fock(l, k) times c(l): an antisymmetric matrix turns their sign.
static void DivideByGaps(double symmetry) {
    double* projection = Work.Projections;
    for (int i = 0; i < OccupiedCount(); ++i) {
        for (int a = OccupiedCount(); a < Run.Basis.OrbitalCount; ++a, ++projection) {
            *projection = symmetry * *projection / GapOf(i, a);
            if (!(std::fabs(*projection) > SmallestProjection)) {  // what isn't a number takes no part
                *projection = 0.0;
            }
        }
    }
    PollMessages(OccupiedCount() * EmptyCount());
}

void SolveFirstOrderOrbitals(const double* fock, double symmetry, double* u) {
    const int n = Run.Basis.OrbitalCount;
    const int occupied = OccupiedCount();
    const int empty = EmptyCount();
    PollingProduct(Run.Field.MolecularOrbitals, n, fock, n, Work.FockRows, n, occupied, n, n);
    PollingProduct(Work.FockRows, n, Work.EmptyColumns, empty, Work.Projections, empty, occupied, empty, n);
    DivideByGaps(symmetry);
    PollingProduct(Work.Projections, empty, Run.Field.MolecularOrbitals + static_cast<long long>(occupied) * n, n, u, n,
                   occupied, n, empty);
}

void BuildFirstOrderDensity(const double* u, double factor, double symmetry, double* density) {
    const int n = Run.Basis.OrbitalCount;
    const int occupied = OccupiedCount();
    PollingProduct(Work.OccupiedColumns, occupied, u, n, Work.Product, n, n, n, occupied);
    for (long long k = 0; k < n; ++k) {
        for (long long l = 0; l < n; ++l) {
            density[k * n + l] = factor * (Work.Product[k * n + l] + symmetry * Work.Product[l * n + k]);
        }
        PollMessages(n);
    }
}

double MeasureDensityChange(const double* density, double* previous, int iteration) {
    const long long n = Run.Basis.OrbitalCount;
    double sum = 0.0;
    for (long long k = 0; k < n; ++k) {
        double* row = previous + k * n;
        for (long long l = 0; l < n; ++l) {
            row[l] = density[k * n + l] - row[l];
        }
        double squares;
        Kernels().DotRows(row, static_cast<std::size_t>(n), 1, row, Run.Basis.OrbitalCount, &squares);
        sum += squares;
        std::copy(density + k * n, density + (k + 1) * n, row);
        PollMessages(Run.Basis.OrbitalCount);
    }
    return iteration > 0 ? std::sqrt(sum) / (static_cast<double>(n) * static_cast<double>(n)) : FirstChange;
}
