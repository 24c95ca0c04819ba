// SPDX-License-Identifier: MIT
// Prepares the spin system for the simulators, and counts composite spins.
#include "spectrum/spin_system.h"

#include "ground/fatal_error.h"
#include "ground/run_state.h"
#include "numerics/factorial.h"

#include <algorithm>
#include <climits>
#include <cmath>

static constexpr double LargestRounded = 9.0e15;  // times 1000 it still is a 64-bit integer

bool CanBeRounded(double value) {
    return std::fabs(value) < LargestRounded;
}

// Adding zero at the end takes the sign from a negative zero: the rounding goes through an integer.
static double RoundToThousandths(double value) {
    const double half = value >= 0.0 ? 0.5 : -0.5;
    return std::trunc(value * 1000.0 + half) * 0.001 + 0.0;
}

void PrepareSpinSystem() {
    const int n = Run.Spins.SpinGroupCount;
    if (n == 0) {
        FatalError(Message::NoNmrAtom);
    }
    for (int i = 0; i < n; ++i) {
        Run.Spins.ChemicalShifts[i] = RoundToThousandths(Run.Spins.ChemicalShifts[i]);
    }
    double* coupling = Run.Spins.CouplingMatrix;
    for (int i = 0; i < n * n; ++i) {
        coupling[i] = RoundToThousandths(coupling[i]);
    }
    for (int i = 0; i < n; ++i) {
        for (int j = i + 1; j < n; ++j) {
            const bool alike = Run.Spins.IsotopicNumbers[i] == Run.Spins.IsotopicNumbers[j];
            coupling[j * n + i] = alike ? coupling[i * n + j] : 0.0;
        }
    }
}

bool AreCoupled(int g, int h) {
    return Run.Spins.CouplingMatrix[std::min(g, h) * Run.Spins.SpinGroupCount + std::max(g, h)] != 0.0;
}

double GroupSpinMultiplicity(int n, int twoJ) {
    if (n - twoJ < 2) {
        return 1.0;
    }
    return (twoJ + 1) * Factorial(n) / (Factorial((n + twoJ) / 2 + 1) * Factorial((n - twoJ) / 2));
}

int DegeneracyOfWeight(double w) {
    return w < INT_MAX ? static_cast<int>(w + 0.01) : INT_MAX;
}
