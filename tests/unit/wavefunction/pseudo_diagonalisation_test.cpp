// SPDX-License-Identifier: MIT
// The pseudo-diagonalisation: rotations pair by pair with stale energies and elements.
#include "tests/support/molecule_support.h"
#include "wavefunction/pseudo_diagonalisation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

static std::vector<double> UnitMatrix(std::size_t n) {
    std::vector<double> matrix(n * n, 0.0);
    for (std::size_t i = 0; i < n; ++i) {
        matrix[i * n + i] = 1.0;
    }
    return matrix;
}

// The hydrogen molecule: one occupied and one empty level.
class TwoLevels : public testing::Test {
protected:
    void Diagonalise(double e0, double e1, double element, double f00, double f11) {
        SetSquare(::Run.Field.MolecularOrbitals, UnitMatrix(2));
        SetSquare(::Run.Field.OrbitalEnergiesRaw, {e0, e1});
        SetSquare(::Run.Field.FockMatrix, {f00, element, element, f11});
        PseudoDiagonalise();
    }
    static double C(int row, int column) { return ::Run.Field.MolecularOrbitals[row * 2 + column]; }
    LoadedMolecule Loaded{HydrogenMolecule(0.74)};
};

// Property: with energies that are the diagonal of the matrix, one rotation decouples two levels. The reference is the
// condition itself, and the angle tan(2 t) = 2 a / (e0 - e1). The sine comes from 1 - cosine squared, so that one
// rounding there is an error of epsilon / sine.
TEST_F(TwoLevels, OneRotationDecouples) {
    for (const double element : {0.3, -0.3, 0.01, -1.5}) {
        Diagonalise(-0.8, 0.4, element, -0.8, 0.4);
        const double f[2][2] = {{-0.8, element}, {element, 0.4}};
        double coupling = 0.0, occupied = 0.0;
        for (int a = 0; a < 2; ++a) {
            for (int b = 0; b < 2; ++b) {
                coupling += C(0, a) * f[a][b] * C(1, b);
                occupied += C(0, a) * f[a][b] * C(0, b);
            }
        }
        const double tolerance = 2.0 * std::numeric_limits<double>::epsilon() / std::fabs(C(0, 1));
        EXPECT_NEAR(coupling, 0.0, tolerance);
        EXPECT_NEAR(occupied, -0.2 - std::sqrt(0.36 + element * element), 1e-15);
        EXPECT_GT(C(0, 0), 0.0);
        EXPECT_NEAR(std::atan2(C(0, 1), C(0, 0)), 0.5 * std::atan2(-2.0 * element, 1.2), tolerance);
    }
}

// Energies are stale on purpose: the angle follows OrbitalEnergiesRaw whatever the diagonal of the matrix is, and the
// energies aren't touched.
TEST_F(TwoLevels, StaleEnergiesSetTheAngle) {
    Diagonalise(-0.8, 0.4, 0.3, -100.0, 55.0);
    EXPECT_NEAR(std::atan2(C(0, 1), C(0, 0)), 0.5 * std::atan2(-0.6, 1.2), 1e-15);
    EXPECT_EQ(::Run.Field.OrbitalEnergiesRaw[0], -0.8);
    EXPECT_EQ(::Run.Field.OrbitalEnergiesRaw[1], 0.4);
}

// A difference of 0 is no reason to skip: d counts as positive, alpha is the root of a half, beta has the sign opposite
// to the element.
TEST_F(TwoLevels, EqualEnergiesRotateByAnEighthTurn) {
    for (const double element : {0.3, -0.3}) {
        Diagonalise(0.2, 0.2, element, 0.2, 0.2);
        EXPECT_NEAR(C(0, 0), std::sqrt(0.5), 1e-15);
        EXPECT_NEAR(C(0, 1), element > 0 ? -std::sqrt(0.5) : std::sqrt(0.5), 1e-15);
    }
}

// An occupied level above the empty one (d positive) turns the smaller way as well.
TEST_F(TwoLevels, InvertedLevels) {
    Diagonalise(0.4, -0.8, 0.3, 0.4, -0.8);
    EXPECT_NEAR(C(0, 0), std::sqrt(0.5 * (1.0 + 1.2 / std::sqrt(1.44 + 0.36))), 1e-15);
    EXPECT_LT(C(0, 1), 0.0);
}

// Rotations smaller than ten times the root of the machine's precision are skipped, larger ones done.
TEST_F(TwoLevels, SmallestRotation) {
    const double smallest = 10.0 * std::sqrt(std::numeric_limits<double>::epsilon());
    Diagonalise(-0.5, 0.5, 0.999 * smallest, -0.5, 0.5);
    EXPECT_EQ(SquareOf(::Run.Field.MolecularOrbitals), UnitMatrix(2));
    Diagonalise(-0.5, 0.5, 1.001 * smallest, -0.5, 0.5);
    EXPECT_NE(C(0, 1), 0.0);
}

TEST_F(TwoLevels, NothingToRotate) {
    Diagonalise(-0.5, 0.5, 0.0, -0.5, 0.5);
    EXPECT_EQ(SquareOf(::Run.Field.MolecularOrbitals), UnitMatrix(2));
    ::Run.Basis.OccupiedLevels = 0;
    Diagonalise(-0.5, 0.5, 0.3, -0.5, 0.5);
    EXPECT_EQ(SquareOf(::Run.Field.MolecularOrbitals), UnitMatrix(2));
    ::Run.Basis.OccupiedLevels = 2;
    Diagonalise(-0.5, 0.5, 0.3, -0.5, 0.5);
    EXPECT_EQ(SquareOf(::Run.Field.MolecularOrbitals), UnitMatrix(2));
}

// Water: four occupied and two empty levels.
static void LoadRandomField(std::vector<double>* fock) {
    std::mt19937 random(13);
    fock->assign(36, 0.0);
    for (std::size_t i = 0; i < 6; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            (*fock)[i * 6 + j] = (*fock)[j * 6 + i] = static_cast<double>(random() % 2001) / 1000.0 - 1.0;
        }
    }
    std::vector<double> values, vectors;
    std::vector<double> other = *fock;
    other[3] = other[18] = 0.7;
    JacobiEigen(other, 6, &values, &vectors);
    SetSquare(::Run.Field.MolecularOrbitals, vectors);
    SetSquare(::Run.Field.OrbitalEnergiesRaw, values);
    SetSquare(::Run.Field.FockMatrix, *fock);
}

// Rotations keep the rows orthonormal, whatever the matrix; a few roundings for each of eight rotations.
TEST(PseudoDiagonalise, KeepsOrthonormality) {
    const LoadedMolecule loaded(WaterMolecule());
    std::vector<double> fock;
    LoadRandomField(&fock);
    const std::vector<double> before = SquareOf(::Run.Field.MolecularOrbitals);
    PseudoDiagonalise();
    EXPECT_NE(SquareOf(::Run.Field.MolecularOrbitals), before);
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j <= i; ++j) {
            double sum = 0.0;
            for (int a = 0; a < 6; ++a) {
                sum += ::Run.Field.MolecularOrbitals[i * 6 + a] * ::Run.Field.MolecularOrbitals[j * 6 + a];
            }
            EXPECT_NEAR(sum, i == j ? 1.0 : 0.0, 1e-14);
        }
    }
    EXPECT_EQ(SquareOf(::Run.Field.FockMatrix), fock);
}

// Property: pairs in the order of empty levels, then occupied ones, each by the element of the start, those under a
// twentieth of the largest left out. The reference is the definition in plain loops; a few roundings.
TEST(PseudoDiagonalise, RotatesPairsInTheirOrder) {
    const LoadedMolecule loaded(WaterMolecule());
    std::vector<double> fock;
    LoadRandomField(&fock);
    std::vector<double> c = SquareOf(::Run.Field.MolecularOrbitals);
    const std::vector<double> start = c;
    const auto element = [&](std::size_t i, std::size_t j) {
        double sum = 0.0;
        for (std::size_t a = 0; a < 6; ++a) {
            for (std::size_t b = 0; b < 6; ++b) {
                sum += start[i * 6 + a] * fock[a * 6 + b] * start[j * 6 + b];
            }
        }
        return sum;
    };
    double largest = 0.0;
    int skipped = 0;
    for (std::size_t k = 0; k < 8; ++k) {
        largest = std::max(largest, std::fabs(element(k % 4, 4 + k / 4)));
    }
    for (std::size_t j = 4; j < 6; ++j) {
        for (std::size_t i = 0; i < 4; ++i) {
            const double a = element(i, j);
            if (std::fabs(a) < 0.05 * largest) {
                ++skipped;
                continue;
            }
            const double d = ::Run.Field.OrbitalEnergiesRaw[i] - ::Run.Field.OrbitalEnergiesRaw[j];
            const double t = std::copysign(std::sqrt(d * d + 4.0 * a * a), d);
            const double alpha = std::sqrt(0.5 * (1.0 + d / t));
            const double beta = a >= 0.0 ? -std::sqrt(1.0 - alpha * alpha) : std::sqrt(1.0 - alpha * alpha);
            for (std::size_t k = 0; k < 6; ++k) {
                const double x = c[i * 6 + k], y = c[j * 6 + k];
                c[i * 6 + k] = alpha * x + beta * y;
                c[j * 6 + k] = alpha * y - beta * x;
            }
        }
    }
    PseudoDiagonalise();
    for (std::size_t k = 0; k < 36; ++k) {
        EXPECT_NEAR(::Run.Field.MolecularOrbitals[k], c[k], 1e-13);
    }
    EXPECT_LT(skipped, 8);
}

// Only a pair whose element is below the limit is left out: one that isn't a number rotates, on purpose.
TEST_F(TwoLevels, NotANumberRotates) {
    Diagonalise(-0.8, 0.4, std::numeric_limits<double>::quiet_NaN(), -0.8, 0.4);
    EXPECT_TRUE(std::isnan(C(0, 0)));
    EXPECT_TRUE(std::isnan(C(1, 1)));
}
