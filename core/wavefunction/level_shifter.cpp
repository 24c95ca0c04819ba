// SPDX-License-Identifier: MIT
// Updates and applies the level shift.
#include "wavefunction/level_shifter.h"

#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "molecule/units.h"

#include <algorithm>
#include <cmath>

static constexpr double SmallestShift = 1e-10;

void StartLevelShifter(LevelShifter& shifter) {
    const bool on = Run.Field.LevelShiftStartIteration >= 0;
    shifter.Shift = on ? 1.0 : 0.0;
    shifter.ShiftStep = on ? -4.44 : 0.0;
    shifter.ShiftCeiling = on ? 20.0 : 0.0;
    shifter.RememberedShift = shifter.Shift;
    shifter.ShiftQuiet = std::fabs(shifter.Shift) < 0.001;
    shifter.ShiftOk = false;
}

static void ChooseShift(LevelShifter& shifter, const ScfProgress& progress, bool* fastPhase) {
    const double gap = (Run.Field.OrbitalEnergies[Run.Basis.OccupiedLevels] -
                        Run.Field.OrbitalEnergies[Run.Basis.OccupiedLevels - 1]) *
                       ElectronVoltsPerHartree;
    const double rise = progress.ElectronicEnergy - progress.EnergyBeforeLast;
    if (!shifter.ShiftOk || Run.Basis.OccupiedLevels != Run.Basis.DoublyOccupiedLevels) {
        shifter.Shift += shifter.ShiftStep + gap;
    } else if (progress.ElectronicEnergy <= progress.EnergyBeforeLast) {
        shifter.Shift = -0.1;
    } else {
        shifter.Shift = 1.0;
        if (rise > HartreesPerElectronVolt) {
            shifter.ShiftOk = false;
            *fastPhase = false;
        }
    }
}

static void LimitShift(LevelShifter& shifter, bool rose) {
    if (rose && shifter.Shift > 4.0) {
        shifter.ShiftCeiling = 4.5;
    }
    if (rose && shifter.Shift > shifter.ShiftCeiling) {
        shifter.ShiftCeiling = std::max(shifter.ShiftCeiling - 0.5, 0.0);
    }
    shifter.Shift = std::max(-20.0, std::min(shifter.ShiftCeiling, shifter.Shift));
    if (std::fabs(shifter.Shift - shifter.ShiftCeiling) < 1e-5) {
        shifter.ShiftCeiling += 0.01;
    }
}

void UpdateLevelShift(LevelShifter& shifter, const ScfProgress& progress, bool* fastPhase) {
    if (!(std::fabs(shifter.Shift) > SmallestShift) || progress.Iteration - 1 <= Run.Field.LevelShiftStartIteration ||
        Run.Basis.OccupiedLevels < 1 || Run.Basis.OccupiedLevels >= Run.Basis.OrbitalCount) {
        return;
    }
    shifter.ShiftQuiet = shifter.ShiftQuiet || progress.DensityChange < 0.033333;
    if (progress.Converged || progress.Iteration > Run.Options.SCFIterationLimit + 1) {
        shifter.Shift = 0.0;
        return;
    }
    const bool rose = progress.ElectronicEnergy > progress.EnergyBeforeLast;
    ChooseShift(shifter, progress, fastPhase);
    LimitShift(shifter, rose);
    if (Run.Options.SCFAccelerateConvergence) {
        shifter.Shift = shifter.ShiftOk ? 0.0 : -8.0;
    }
    if (progress.DensityChange < 0.001) {
        shifter.Shift = shifter.RememberedShift;
    } else {
        shifter.RememberedShift = shifter.Shift;
    }
    shifter.ShiftStep = rose ? shifter.ShiftStep - 1.0 : shifter.ShiftStep * 1.025;
}

void ApplyLevelShift(const LevelShifter& shifter) {
    if (!(std::fabs(shifter.Shift) > SmallestShift) || Run.Basis.OccupiedLevels < 1) {
        return;
    }
    const long long n = Run.Basis.OrbitalCount;
    const double shift = shifter.Shift * HartreesPerElectronVolt;
    for (long long level = Run.Basis.OccupiedLevels - 1; level < n; ++level) {
        Run.Field.OrbitalEnergies[level] += shift;
    }
    const double raised = Run.Field.OrbitalEnergies[Run.Basis.OccupiedLevels - 1];
    for (long long level = 0; level < n; ++level) {
        if (Run.Field.OrbitalEnergiesRaw[level] >= raised) {
            Run.Field.OrbitalEnergiesRaw[level] += shift;
        }
    }
    for (long long i = 0; i < n; ++i) {
        for (long long j = 0; j < n; ++j) {
            Run.Field.FockMatrix[i * n + j] += shift * Run.Field.HalfDensity[i * n + j];
        }
        Run.Field.FockMatrix[i * n + i] -= shift;
        PollMessages(Run.Basis.OrbitalCount);
    }
}
