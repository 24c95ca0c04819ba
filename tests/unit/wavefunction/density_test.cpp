// SPDX-License-Identifier: MIT
// The density: levels by interval of energy, and the extrapolation step by step.
#include "tests/support/molecule_support.h"
#include "wavefunction/density_extrapolation.h"
#include "wavefunction/density_matrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

// Neon: four orbitals, with levels set by the test.
class Density : public testing::Test {
protected:
    // Orthonormal orbitals from the Jacobi rotations of a random matrix, energies as given.
    void SetLevels(const std::vector<double>& energies, int doubly, int occupied) {
        std::mt19937 random(11);
        std::vector<double> matrix(16), values, vectors;
        for (std::size_t i = 0; i < 4; ++i) {
            for (std::size_t j = 0; j <= i; ++j) {
                matrix[i * 4 + j] = matrix[j * 4 + i] = static_cast<double>(random() % 1000) / 500.0 - 1.0;
            }
        }
        JacobiEigen(matrix, 4, &values, &vectors);
        SetSquare(::Run.Field.MolecularOrbitals, vectors);
        SetSquare(::Run.Field.OrbitalEnergiesRaw, energies);
        ::Run.Basis.DoublyOccupiedLevels = doubly;
        ::Run.Basis.OccupiedLevels = occupied;
        BuildDensity(::Run.Field.HalfDensity);
    }

    static double Trace() { return D(0, 0) + D(1, 1) + D(2, 2) + D(3, 3); }
    static double& D(int row, int column) { return ::Run.Field.HalfDensity[row * 4 + column]; }
    static double& Old(int row, int column) { return ::Run.Field.PreviousDensity[row * 4 + column]; }

    // The element by the definition, with the occupations of the levels.
    static void ExpectOccupations(const std::vector<double>& occupations) {
        for (int a = 0; a < 4; ++a) {
            for (int b = 0; b < 4; ++b) {
                double sum = 0.0;
                for (int m = 0; m < 4; ++m) {
                    sum += occupations[static_cast<std::size_t>(m)] * ::Run.Field.MolecularOrbitals[m * 4 + a] *
                           ::Run.Field.MolecularOrbitals[m * 4 + b];
                }
                EXPECT_NEAR(D(a, b), sum, 1e-15);
                EXPECT_EQ(D(a, b), D(b, a));
            }
        }
    }

    LoadedMolecule Loaded{{{{"Ne", 0, 0, 0}}}};
};

// Trace 2 for each doubly filled level, energies copied. The reference is the definition; direct arithmetic.
TEST_F(Density, ClosedShell) {
    SetLevels({-2.0, -1.0, -0.5, 0.3}, 2, 2);
    ExpectOccupations({2, 2, 0, 0});
    EXPECT_NEAR(Trace(), 4.0, 1e-14);
    for (int m = 0; m < 4; ++m) {
        EXPECT_EQ(::Run.Field.OrbitalEnergies[m], ::Run.Field.OrbitalEnergiesRaw[m]);
    }
}

// On purpose an empty level at exactly the energy of the highest occupied one is filled as well; one rounding above it
// isn't.
TEST_F(Density, DegenerateLevelAtTheTopIsFilledToo) {
    SetLevels({-2.0, -1.0, -1.0, 0.3}, 2, 2);
    ExpectOccupations({2, 2, 2, 0});
    EXPECT_NEAR(Trace(), 6.0, 1e-14);
    SetLevels({-2.0, -1.0, std::nextafter(-1.0, 0.0), 0.3}, 2, 2);
    ExpectOccupations({2, 2, 0, 0});
}

TEST_F(Density, AllAndNone) {
    SetLevels({-2.0, -1.0, -0.5, 0.3}, 4, 4);
    ExpectOccupations({2, 2, 2, 2});
    SetLevels({-2.0, -1.0, -0.5, 0.3}, 0, 0);
    ExpectOccupations({0, 0, 0, 0});
}

// No run has partly filled levels; the interval is there all the same, and a level in both intervals counts as full.
TEST_F(Density, PartlyFilledLevels) {
    SetLevels({-2.0, -1.0, -0.5, 0.3}, 1, 2);
    ExpectOccupations({2, 1, 0, 0});
    SetLevels({-2.0, -2.0, -0.5, 0.3}, 1, 2);
    ExpectOccupations({2, 2, 0, 0});
    SetLevels({-2.0, -1.0, -0.5, 0.3}, 0, 1);
    ExpectOccupations({1, 0, 0, 0});
}

// Diagonal of the new density d, a constant v off it.
static std::vector<double> DiagonalDensity(const std::vector<double>& d, double v) {
    std::vector<double> matrix(16, v);
    for (std::size_t i = 0; i < 4; ++i) {
        matrix[i * 5] = d[i];
    }
    return matrix;
}

static std::vector<double> History() {
    return {::Run.Field.DiagonalHistory, ::Run.Field.DiagonalHistory + 4};
}

TEST_F(Density, FirstStepKeepsTheDiagonal) {
    SetSquare(::Run.Field.PreviousDensity, DiagonalDensity({9, 9, 9, 9}, 9));
    SetSquare(::Run.Field.HalfDensity, DiagonalDensity({1.5, 1.0, 0.5, 0.25}, 0.125));
    EXPECT_EQ(ExtrapolateDensity(1, 0.75), 0.75);
    EXPECT_EQ(History(), (std::vector<double>{1.5, 1.0, 0.5, 0.25}));
    EXPECT_EQ(SquareOf(::Run.Field.PreviousDensity), DiagonalDensity({9, 9, 9, 9}, 9));
    EXPECT_EQ(SquareOf(::Run.Field.HalfDensity), DiagonalDensity({1.5, 1.0, 0.5, 0.25}, 0.125));
}

TEST_F(Density, SecondStepKeepsTheDensity) {
    SetSquare(::Run.Field.DiagonalHistory, {4, 3, 2, 1});
    SetSquare(::Run.Field.HalfDensity, DiagonalDensity({1.5, 1.0, 0.5, 0.25}, 0.125));
    EXPECT_EQ(ExtrapolateDensity(2, 0.75), 0.75);
    EXPECT_EQ(History(), (std::vector<double>{4, 3, 2, 1}));
    EXPECT_EQ(SquareOf(::Run.Field.PreviousDensity), DiagonalDensity({1.5, 1.0, 0.5, 0.25}, 0.125));
}

// Property: the third step extrapolates by sqrt(sum d^2 / sum c^2), without a limit on the step. Set-up: one diagonal
// element moves 0.25, 0.75, 1.0: d = 0.25, c = 1.0 - 1.5 + 0.25 = -0.25, the factor is 1, the outcome 1.25; off the
// diagonal 0.5, 0.75 gives 1.0. Worked out by hand with numbers that are exact in binary.
TEST_F(Density, ThirdStepExtrapolates) {
    SetSquare(::Run.Field.DiagonalHistory, {0.25, 1, 1, 1});
    SetSquare(::Run.Field.PreviousDensity, DiagonalDensity({0.75, 1, 1, 1}, 0.5));
    SetSquare(::Run.Field.HalfDensity, DiagonalDensity({1.0, 1, 1, 1}, 0.75));
    EXPECT_EQ(ExtrapolateDensity(3, 9.0), 0.25);
    EXPECT_EQ(SquareOf(::Run.Field.HalfDensity), DiagonalDensity({1.25, 1, 1, 1}, 1.0));
    EXPECT_EQ(SquareOf(::Run.Field.PreviousDensity), SquareOf(::Run.Field.HalfDensity));
    EXPECT_EQ(History(), (std::vector<double>{0.75, 1, 1, 1}));
}

// The clip to 0 and 2 is for the diagonal alone.
TEST_F(Density, ClipIsOnTheDiagonalOnly) {
    SetSquare(::Run.Field.DiagonalHistory, {0.5, 1.5, 1, 1});
    SetSquare(::Run.Field.PreviousDensity, DiagonalDensity({1.25, 0.75, 1, 1}, 1.75));
    SetSquare(::Run.Field.HalfDensity, DiagonalDensity({1.75, 0.25, 1, 1}, 2.5));
    EXPECT_EQ(ExtrapolateDensity(3, 9.0), 0.5);  // d = 0.5, c = -0.25 each: the factor is 2
    EXPECT_EQ(SquareOf(::Run.Field.HalfDensity), DiagonalDensity({2.0, 0.0, 1, 1}, 4.0));
}

// No extrapolation with a factor of 10 or more, nor without any curvature.
TEST_F(Density, FlatHistoryIsNotExtrapolated) {
    SetSquare(::Run.Field.DiagonalHistory, {0.5, 1, 1, 1});
    SetSquare(::Run.Field.PreviousDensity, DiagonalDensity({0.75, 1, 1, 1}, 0.5));
    SetSquare(::Run.Field.HalfDensity, DiagonalDensity({1.0, 1, 1, 1}, 0.75));
    ExtrapolateDensity(3, 9.0);
    EXPECT_EQ(SquareOf(::Run.Field.HalfDensity), DiagonalDensity({1.0, 1, 1, 1}, 0.75));
    // d = 0.25, c = 1/64: the factor would be 16
    SetSquare(::Run.Field.DiagonalHistory, {0.515625, 1, 1, 1});
    SetSquare(::Run.Field.PreviousDensity, DiagonalDensity({0.75, 1, 1, 1}, 0.5));
    SetSquare(::Run.Field.HalfDensity, DiagonalDensity({1.0, 1, 1, 1}, 0.75));
    ExtrapolateDensity(3, 9.0);
    EXPECT_EQ(SquareOf(::Run.Field.HalfDensity), DiagonalDensity({1.0, 1, 1, 1}, 0.75));
    // d = 0.25, c = 1/32: 8
    SetSquare(::Run.Field.DiagonalHistory, {0.53125, 1, 1, 1});
    SetSquare(::Run.Field.PreviousDensity, DiagonalDensity({0.75, 1, 1, 1}, 0.5));
    SetSquare(::Run.Field.HalfDensity, DiagonalDensity({1.0, 1, 1, 1}, 0.75));
    ExtrapolateDensity(3, 9.0);
    EXPECT_EQ(D(0, 1), 0.75 + 8 * 0.25);
    EXPECT_EQ(D(0, 0), 2.0);
}

// From the fourth step on the diagonal moves by 0.05 at most, off the diagonal nothing is held back; the change that is
// returned is the one before the limit, and the history keeps the limited values.
TEST_F(Density, LaterStepsAreLimited) {
    SetSquare(::Run.Field.DiagonalHistory, {1, 1, 1, 1});
    SetSquare(::Run.Field.PreviousDensity, DiagonalDensity({1.0, 1.0, 1.0, 1.0}, 0.5));
    SetSquare(::Run.Field.HalfDensity, DiagonalDensity({1.5, 0.25, 1.03125, 1.0}, 0.75));
    EXPECT_EQ(ExtrapolateDensity(4, 9.0), 0.75);
    EXPECT_EQ(SquareOf(::Run.Field.HalfDensity), DiagonalDensity({1.05, 0.95, 1.03125, 1.0}, 0.75));
    EXPECT_EQ(SquareOf(::Run.Field.PreviousDensity), SquareOf(::Run.Field.HalfDensity));
    EXPECT_EQ(History(), (std::vector<double>{1, 1, 1, 1}));
    SetSquare(::Run.Field.HalfDensity, DiagonalDensity({1.0625, 0.95, 1.03125, 1.0}, 0.875));
    EXPECT_NEAR(ExtrapolateDensity(5, 9.0), 0.0125, 1e-15);
    EXPECT_EQ(D(0, 0), 1.0625);
    EXPECT_EQ(D(0, 1), 0.875);
    EXPECT_EQ(History()[0], 1.05);
}

// Step 6 extrapolates like step 3, but a step above the limit is cut without the factor.
TEST_F(Density, SixthStepExtrapolatesWithTheLimit) {
    SetSquare(::Run.Field.DiagonalHistory, {0.9375, 1, 1, 1});
    SetSquare(::Run.Field.PreviousDensity, DiagonalDensity({1.0, 1, 1, 1}, 0.5));
    SetSquare(::Run.Field.HalfDensity, DiagonalDensity({1.03125, 1.25, 1, 1}, 0.75));
    // d = 1/32 and 1/4, c = -1/32 and 1/4: the factor is 1
    EXPECT_EQ(ExtrapolateDensity(6, 9.0), 0.25);
    EXPECT_EQ(D(0, 0), 1.0625);
    EXPECT_EQ(D(1, 1), 1.05);
    EXPECT_EQ(D(2, 2), 1.0);
    EXPECT_EQ(D(0, 1), 1.0);
}
