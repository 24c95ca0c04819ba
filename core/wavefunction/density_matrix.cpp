// SPDX-License-Identifier: MIT
// Builds the density matrix.
#include "wavefunction/density_matrix.h"

#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "numerics/polling_product.h"

#include <algorithm>

// Levels with low <= energy <= high, of one occupation.
struct LevelInterval {
    double Low;
    double High;
};

// From level first to level last, 1-based; with no such level an interval that matches nothing.
static LevelInterval IntervalOf(int first, int last) {
    if (last < first) {
        const double nothing = Run.Field.OrbitalEnergies[0] - 1.0;
        return {nothing, nothing};
    }
    return {Run.Field.OrbitalEnergies[first - 1], Run.Field.OrbitalEnergies[last - 1]};
}

static bool Contains(const LevelInterval& interval, double energy) {
    return interval.Low <= energy && energy <= interval.High;
}

// Gathers the taken levels: their coefficients in the rows of the second scratch buffer, and the same times their
// occupation in the columns of the first. Returns how many there are.
static int GatherLevels() {
    const long long n = Run.Basis.OrbitalCount;
    const LevelInterval full = IntervalOf(1, Run.Basis.DoublyOccupiedLevels);
    const LevelInterval part = IntervalOf(Run.Basis.DoublyOccupiedLevels + 1, Run.Basis.OccupiedLevels);
    int taken = 0;
    for (long long level = 0; level < n; ++level) {
        const double energy = Run.Field.OrbitalEnergies[level];
        const bool isFull = Contains(full, energy);
        if (isFull || Contains(part, energy)) {
            const double weight = isFull ? 2.0 : 1.0;
            const double* coefficients = Run.Field.MolecularOrbitals + level * n;
            std::copy(coefficients, coefficients + n, Run.Field.SecondScratch + taken * n);
            for (long long a = 0; a < n; ++a) {
                Run.Field.FirstScratch[a * n + taken] = weight * coefficients[a];
            }
            ++taken;
            PollMessages(Run.Basis.OrbitalCount);
        }
    }
    return taken;
}

void BuildDensity(double* density) {
    const int n = Run.Basis.OrbitalCount;
    std::copy(Run.Field.OrbitalEnergiesRaw, Run.Field.OrbitalEnergiesRaw + n, Run.Field.OrbitalEnergies);
    const int taken = GatherLevels();
    PollingProduct(Run.Field.FirstScratch, n, Run.Field.SecondScratch, n, density, n, n, n, taken);
}
