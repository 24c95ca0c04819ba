// SPDX-License-Identifier: MIT
// Damps and extrapolates a density matrix: at every third step by a factor from the last three diagonals, otherwise
// only by a limit on the steps of the diagonal.
#include "wavefunction/density_extrapolation.h"

#include "ground/message_poll.h"
#include "ground/run_state.h"

#include <algorithm>
#include <cmath>

static constexpr double FirstStepLimit = 1e10;
static constexpr double StepLimit = 0.05;
static constexpr double LargestPopulation = 2.0;

static double ExtrapolationFactor(double sum1, double sum2) {
    return sum2 > 0.0 && 100.0 * sum2 > sum1 ? std::sqrt(std::fabs(sum1 / sum2)) : 0.0;
}

// Measures the step of the diagonal and moves the history on: DiagonalHistory gets the old diagonal, the diagonal of
// PreviousDensity the new one. Returns the factor of the extrapolation.
static double MeasureStep(const double* density, int step, double* change) {
    const long long n = Run.Basis.OrbitalCount;
    double sum1 = 0.0;
    double sum2 = 0.0;
    *change = 0.0;
    for (long long i = 0; i < n; ++i) {
        const double current = density[i * n + i];
        const double old = Run.Field.PreviousDensity[i * n + i];
        const double difference = std::fabs(current - old);
        *change = std::max(*change, difference);
        if (step % 3 == 0) {
            const double curvature = current - 2.0 * old + Run.Field.DiagonalHistory[i];
            sum1 += difference * difference;
            sum2 += curvature * curvature;
        }
        Run.Field.DiagonalHistory[i] = old;
        Run.Field.PreviousDensity[i * n + i] = current;
    }
    return ExtrapolationFactor(sum1, sum2);
}

static double ExtrapolatedDiagonal(double current, double old, double factor, double limit) {
    const double change = current - old;
    if (std::fabs(change) > limit) {
        return old + (change >= 0.0 ? limit : -limit);
    }
    return change * factor + current;
}

static void ExtrapolateElements(double* density, double factor, double limit, double lowest, double highest) {
    const long long n = Run.Basis.OrbitalCount;
    for (long long i = 0; i < n; ++i) {
        double* current = density + i * n;
        double* old = Run.Field.PreviousDensity + i * n;
        const double diagonal = ExtrapolatedDiagonal(old[i], Run.Field.DiagonalHistory[i], factor, limit);
        for (long long j = 0; j < n; ++j) {
            current[j] += (current[j] - old[j]) * factor;
            old[j] = current[j];
        }
        current[i] = std::clamp(diagonal, lowest, highest);
        old[i] = current[i];
        PollMessages(Run.Basis.OrbitalCount);
    }
}

double ExtrapolateMatrix(double* density, int step, double lowest, double highest, double change) {
    const long long n = Run.Basis.OrbitalCount;
    if (step < 1) {
        return change;
    }
    if (step == 1) {
        for (long long i = 0; i < n; ++i) {
            Run.Field.DiagonalHistory[i] = density[i * n + i];
        }
        return change;
    }
    if (step == 2) {
        std::copy(density, density + n * n, Run.Field.PreviousDensity);
        return change;
    }
    const double factor = MeasureStep(density, step, &change);
    ExtrapolateElements(density, factor, step <= 3 ? FirstStepLimit : StepLimit, lowest, highest);
    return change;
}

double ExtrapolateDensity(int step, double densityChange) {
    return ExtrapolateMatrix(Run.Field.HalfDensity, step, 0.0, LargestPopulation, densityChange);
}
