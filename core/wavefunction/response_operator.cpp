// SPDX-License-Identifier: MIT
// Applies the operator to several vectors of amplitudes side by side: the products with the empty levels are wide.
#include "wavefunction/response_operator.h"

#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "numerics/dense_kernels.h"
#include "numerics/polling_product.h"
#include "wavefunction/first_order_orbitals.h"

#include <algorithm>

long long AmplitudeCount() {
    return static_cast<long long>(OccupiedCount()) * EmptyCount();
}

void FillLevelGaps(double* gaps) {
    for (int i = 0; i < OccupiedCount(); ++i) {
        for (int a = OccupiedCount(); a < Run.Basis.OrbitalCount; ++a) {
            *gaps++ = Run.Field.OrbitalEnergiesRaw[a] - Run.Field.OrbitalEnergiesRaw[i];
        }
        PollMessages(EmptyCount());
    }
}

void BuildExchange(const ResponseOperator& kind, const double* density, double* fock) {
    const long long n = Run.Basis.OrbitalCount;
    for (long long k = 0; k < n; ++k) {
        for (long long l = 0; l < n; ++l) {
            fock[k * n + l] = -kind.Weights[k * n + l] * density[k * n + l];
        }
        PollMessages(Run.Basis.OrbitalCount);
    }
    if (kind.SubtractOneCentreExchange != nullptr) {
        kind.SubtractOneCentreExchange(fock, density);
    }
}

void FormFirstOrderOrbitals(const double* amplitudes, int count, double* change) {
    const int n = Run.Basis.OrbitalCount;
    const double* empty = Run.Field.MolecularOrbitals + static_cast<long long>(OccupiedCount()) * n;
    PollingProduct(amplitudes, EmptyCount(), empty, n, change, n, count * OccupiedCount(), n, EmptyCount());
}

// Rows of occupied levels times a matrix, projected on the empty levels.
static void ProjectRows(const double* rows, int count, double* amplitudes) {
    PollingProduct(rows, Run.Basis.OrbitalCount, TransposedEmptyLevels(), EmptyCount(), amplitudes, EmptyCount(),
                   count * OccupiedCount(), EmptyCount(), Run.Basis.OrbitalCount);
}

static void MultiplyOccupiedLevels(const double* matrix, double* rows) {
    const int n = Run.Basis.OrbitalCount;
    PollingProduct(Run.Field.MolecularOrbitals, n, matrix, n, rows, n, OccupiedCount(), n, n);
}

void ApplyExchange(const ResponseOperator& kind, double* amplitudes, int count, double* rows) {
    const long long rowsOfOne = static_cast<long long>(OccupiedCount()) * Run.Basis.OrbitalCount;
    FormFirstOrderOrbitals(amplitudes, count, rows);
    for (int vector = 0; vector < count; ++vector) {
        double* own = rows + vector * rowsOfOne;
        BuildFirstOrderDensity(own, kind.DensityFactor, kind.Symmetry, Run.Field.HalfDensity);
        BuildExchange(kind, Run.Field.HalfDensity, Run.Field.FockMatrix);
        MultiplyOccupiedLevels(Run.Field.FockMatrix, own);
    }
    ProjectRows(rows, count, amplitudes);
}

void ProjectOnLevels(const double* matrix, double* rows, double* amplitudes) {
    MultiplyOccupiedLevels(matrix, rows);
    ProjectRows(rows, 1, amplitudes);
}

void DotAmplitudes(const double* block, int count, const double* amplitudes, double* products) {
    const int length = static_cast<int>(AmplitudeCount());
    Kernels().DotRows(block, static_cast<std::size_t>(length), count, amplitudes, length, products);
    PollMessages(count * length);
}

void AddAmplitudes(const double* block, int count, const double* factors, double* amplitudes) {
    const int length = static_cast<int>(AmplitudeCount());
    Kernels().AddRows(block, static_cast<std::size_t>(length), count, factors, amplitudes, length);
    PollMessages(count * length);
}

void SubtractCombinations(const double* factors, int stride, int rows, const double* block, int count, double* target) {
    double panel[LargestBlock * PanelWidth];
    const int length = static_cast<int>(AmplitudeCount());
    const std::size_t vectorStride = static_cast<std::size_t>(length);
    for (int k = 0; k < length; k += PanelWidth) {
        const int width = std::min(PanelWidth, length - k);
        PackPanel(block + k, vectorStride, width, count, panel);
        Kernels().MultiplyPanel(factors, static_cast<std::size_t>(stride), 1, panel,
                                {target + k, vectorStride, ChunkLength}, rows, width, count, SubtractProduct);
        PollMessages(rows * count * width);
    }
}
