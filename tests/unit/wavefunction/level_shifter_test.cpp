// SPDX-License-Identifier: MIT
// The level shifter: off in every run, and what it does where it is on.
#include "tests/support/molecule_support.h"
#include "wavefunction/level_shifter.h"
#include "wavefunction/solve_wavefunction.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

static constexpr double HartreesPerElectronVolt = 0.03674930900274282;
static constexpr double ElectronVoltsPerHartree = 27.211396;
static constexpr double Direct = 1e-12;

// The hydrogen molecule with levels at -0.5 and 0.3 Hartree: a gap of 0.8 Hartree.
class Shifter : public testing::Test {
protected:
    Shifter() {
        SetSquare(::Run.Field.OrbitalEnergies, {-0.5, 0.3});
        SetSquare(::Run.Field.OrbitalEnergiesRaw, {-0.5, 0.3});
        SetSquare(::Run.Field.HalfDensity, {0.5, 0.5, 0.5, 0.5});
        SetSquare(::Run.Field.FockMatrix, {1, 2, 2, 3});
        ::Run.Field.LevelShiftStartIteration = 0;
        StartLevelShifter(State);
    }

    // An update in iteration 5 with a density that moves.
    void Update(double energy, double before, double densityChange = 0.5) {
        UpdateLevelShift(State, {5, false, energy, before, densityChange}, &FastPhase);
    }

    static constexpr double Gap = 0.8 * ElectronVoltsPerHartree;
    LoadedMolecule Loaded{HydrogenMolecule(0.74)};
    LevelShifter State = {};
    bool FastPhase = true;
};

// The start parameter is 0 and lowered to -1 by the set-up of the selection, in every run.
TEST(LevelShifterOff, StaysOffInEveryRun) {
    const LoadedMolecule loaded(WaterMolecule());
    EXPECT_EQ(::Run.Field.LevelShiftStartIteration, -1);
    LevelShifter shifter;
    StartLevelShifter(shifter);
    EXPECT_EQ(shifter.Shift, 0.0);
    EXPECT_EQ(shifter.ShiftStep, 0.0);
    EXPECT_EQ(shifter.ShiftCeiling, 0.0);
    EXPECT_TRUE(shifter.ShiftQuiet);
    SolveWavefunction();
    const std::vector<double> energies = SquareOf(::Run.Field.MolecularOrbitals),
                              fock = SquareOf(::Run.Field.FockMatrix);
    bool fastPhase = true;
    UpdateLevelShift(shifter, {5, false, 1.0, -1.0, 0.5}, &fastPhase);
    ApplyLevelShift(shifter);
    EXPECT_EQ(shifter.Shift, 0.0);
    EXPECT_TRUE(fastPhase);
    EXPECT_EQ(SquareOf(::Run.Field.FockMatrix), fock);
}

TEST_F(Shifter, StartValues) {
    EXPECT_EQ(State.Shift, 1.0);
    EXPECT_EQ(State.ShiftStep, -4.44);
    EXPECT_EQ(State.ShiftCeiling, 20.0);
    EXPECT_FALSE(State.ShiftQuiet);
}

// No update before the iterations are past the start parameter.
TEST_F(Shifter, WaitsForItsIteration) {
    ::Run.Field.LevelShiftStartIteration = 4;
    Update(-1.0, -0.9);
    EXPECT_EQ(State.Shift, 1.0);
    ::Run.Field.LevelShiftStartIteration = 3;
    Update(-1.0, -0.9);
    EXPECT_NE(State.Shift, 1.0);
}

TEST_F(Shifter, EndOfTheLoopSwitchesItOff) {
    UpdateLevelShift(State, {5, true, -1.0, -0.9, 0.5}, &FastPhase);
    EXPECT_EQ(State.Shift, 0.0);
    StartLevelShifter(State);
    UpdateLevelShift(State, {::Run.Options.SCFIterationLimit + 1, false, -1.0, -0.9, 0.5}, &FastPhase);
    EXPECT_NE(State.Shift, 0.0);
    UpdateLevelShift(State, {::Run.Options.SCFIterationLimit + 2, false, -1.0, -0.9, 0.5}, &FastPhase);
    EXPECT_EQ(State.Shift, 0.0);
}

// Shift + step + gap: 1 - 4.44 + 21.77 eV, under the ceiling of 20; the step grows by its fortieth.
TEST_F(Shifter, FallingEnergy) {
    Update(-1.0, -0.9);
    EXPECT_NEAR(State.Shift, 1.0 - 4.44 + Gap, Direct);
    EXPECT_NEAR(State.ShiftStep, -4.44 * 1.025, Direct);
    EXPECT_EQ(State.ShiftCeiling, 20.0);
    Update(-1.1, -1.0);
    EXPECT_EQ(State.Shift, 20.0);
    EXPECT_NEAR(State.ShiftCeiling, 20.01, Direct);
}

// A risen energy: over 4 the ceiling falls to 4.5 and by another half, and the step by one.
TEST_F(Shifter, RisingEnergy) {
    Update(-0.9, -1.0);
    EXPECT_EQ(State.Shift, 4.0);
    EXPECT_NEAR(State.ShiftCeiling, 4.01, Direct);
    EXPECT_NEAR(State.ShiftStep, -5.44, Direct);
}

TEST_F(Shifter, LowestShift) {
    State.ShiftStep = -100.0;
    Update(-1.0, -0.9);
    EXPECT_EQ(State.Shift, -20.0);
}

// A quiet density: a small downward shift while the energy falls, a small upward one when it rises; a rise of more than
// an electron volt ends the fast phase.
TEST_F(Shifter, QuietDensity) {
    State.ShiftOk = true;
    Update(-1.0, -1.0);
    EXPECT_EQ(State.Shift, -0.1);
    Update(-1.0, -1.03);
    EXPECT_EQ(State.Shift, 1.0);
    EXPECT_TRUE(State.ShiftOk);
    EXPECT_TRUE(FastPhase);
    Update(-1.0, -1.04);
    EXPECT_EQ(State.Shift, 1.0);
    EXPECT_FALSE(State.ShiftOk);
    EXPECT_FALSE(FastPhase);
}

TEST_F(Shifter, PartlyFilledLevelsAreNeverQuiet) {
    State.ShiftOk = true;
    ::Run.Basis.DoublyOccupiedLevels = 0;
    Update(-1.0, -0.9);
    EXPECT_NEAR(State.Shift, 1.0 - 4.44 + Gap, Direct);
}

TEST_F(Shifter, WithAccelerationTheShiftIsFixed) {
    ::Run.Options.SCFAccelerateConvergence = 1;
    Update(-1.0, -0.9);
    EXPECT_EQ(State.Shift, -8.0);
    State.ShiftOk = true;
    Update(-1.0, -0.9);
    EXPECT_EQ(State.Shift, 0.0);
}

// With a density at rest the shift that was remembered comes back.
TEST_F(Shifter, RestingDensityRestoresTheShift) {
    Update(-1.0, -0.9);
    const double remembered = State.Shift;
    State.ShiftStep = -10.0;
    Update(-1.0, -0.9, 0.0009);
    EXPECT_EQ(State.Shift, remembered);
    EXPECT_NEAR(State.ShiftStep, -10.25, Direct);
    Update(-1.0, -0.9, 0.001);
    EXPECT_NE(State.Shift, remembered);
}

TEST_F(Shifter, QuietOnceTheDensityHasSlowedDown) {
    Update(-1.0, -0.9, 0.033333);
    EXPECT_FALSE(State.ShiftQuiet);
    Update(-1.0, -0.9, 0.033332);
    EXPECT_TRUE(State.ShiftQuiet);
    Update(-1.0, -0.9, 0.5);
    EXPECT_TRUE(State.ShiftQuiet);
}

// Property: F + s Q - s, energies from the highest occupied level up raised by s, the raw ones where they are at or
// above the raised energy of that level. Hand values.
TEST_F(Shifter, Application) {
    State.Shift = 10.0;
    const double s = 10.0 * HartreesPerElectronVolt;
    ApplyLevelShift(State);
    EXPECT_NEAR(::Run.Field.OrbitalEnergies[0], -0.5 + s, Direct);
    EXPECT_NEAR(::Run.Field.OrbitalEnergies[1], 0.3 + s, Direct);
    EXPECT_EQ(::Run.Field.OrbitalEnergiesRaw[0], -0.5);
    EXPECT_NEAR(::Run.Field.OrbitalEnergiesRaw[1], 0.3 + s, Direct);
    EXPECT_NEAR(::Run.Field.FockMatrix[0], 1.0 + 0.5 * s - s, Direct);
    EXPECT_NEAR(::Run.Field.FockMatrix[1], 2.0 + 0.5 * s, Direct);
    EXPECT_NEAR(::Run.Field.FockMatrix[2], 2.0 + 0.5 * s, Direct);
    EXPECT_NEAR(::Run.Field.FockMatrix[3], 3.0 + 0.5 * s - s, Direct);
}

// A shift that isn't a number is above no limit: nothing is updated, nothing applied.
TEST_F(Shifter, NotANumberShiftsNothing) {
    State.Shift = std::numeric_limits<double>::quiet_NaN();
    Update(-1.0, -0.9);
    EXPECT_EQ(State.ShiftStep, -4.44);
    ApplyLevelShift(State);
    EXPECT_EQ(::Run.Field.FockMatrix[0], 1.0);
    EXPECT_EQ(::Run.Field.OrbitalEnergies[0], -0.5);
}

// Two infinite energies are equal, though their difference isn't a number.
TEST_F(Shifter, EqualInfiniteEnergies) {
    State.ShiftOk = true;
    const double infinity = std::numeric_limits<double>::infinity();
    Update(infinity, infinity);
    EXPECT_EQ(State.Shift, -0.1);
}
