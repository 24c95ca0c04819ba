// SPDX-License-Identifier: MIT
// The dynamic level shifter of the SCF driver. LevelShiftStartIteration is -1 in every parameter run, and so it stays
// off; a run that set it to 0 or more would have it.
#pragma once

// State of the shifter within one wavefunction; shifts in electron volts.
struct LevelShifter {
    double Shift;            // 0 while the shifter is off
    double ShiftStep;        // what an update adds beside the gap
    double ShiftCeiling;     // largest shift
    double RememberedShift;  // shift of the last iteration whose density still moved
    bool ShiftQuiet;         // the shifter doesn't hold up the fast phase
    bool ShiftOk;            // the density is quiet enough for a small shift
};

// What the driver knows as an iteration begins.
struct ScfProgress {
    int Iteration;            // 1 and up
    bool Converged;           // the loop is in its last iteration
    double ElectronicEnergy;  // of the iteration before, Hartree
    double EnergyBeforeLast;  // of the one before that, Hartree
    double DensityChange;     // of the iteration before
};

// Starts the shifter, off if LevelShiftStartIteration is negative.
void StartLevelShifter(LevelShifter& shifter);

// Chooses the shift of an iteration; clears *fastPhase when the energy has risen badly.
void UpdateLevelShift(LevelShifter& shifter, const ScfProgress& progress, bool* fastPhase);

// Raises the empty levels by the shift: in OrbitalEnergies, OrbitalEnergiesRaw and FockMatrix.
void ApplyLevelShift(const LevelShifter& shifter);
