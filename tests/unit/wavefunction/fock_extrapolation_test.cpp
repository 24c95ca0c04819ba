// SPDX-License-Identifier: MIT
// The extrapolation of the Fock matrix: inversion of small matrices, history, commutator measure, coefficients.
#include "tests/support/molecule_support.h"
#include "wavefunction/fock_extrapolation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

// Determinant by the sum over permutations.
static double LeibnizDeterminant(const std::vector<double>& a, std::size_t n) {
    std::vector<std::size_t> column(n);
    std::iota(column.begin(), column.end(), std::size_t{0});
    double sum = 0.0;
    do {
        double term = 1.0;
        for (std::size_t i = 0; i < n; ++i) {
            term *= a[i * n + column[i]];
            for (std::size_t j = 0; j < i; ++j) {
                term = column[j] > column[i] ? -term : term;
            }
        }
        sum += term;
    } while (std::next_permutation(column.begin(), column.end()));
    return sum;
}

// Property: A times its inverse is the unit matrix, and the determinant is that of the matrix, sign included. Set-up:
// random matrices of all orders. The reference sums over permutations; orders up to 6 and elements around 1 leave the
// error below 1e-10 unless a matrix is near to singular, and those are left out.
TEST(InvertSmallMatrix, InverseAndDeterminant) {
    std::mt19937 random(5);
    for (int order = 1; order <= 6; ++order) {
        const std::size_t n = static_cast<std::size_t>(order);
        for (int round = 0; round < 40; ++round) {
            std::vector<double> a(n * n);
            for (double& value : a) {
                value = static_cast<double>(random() % 2001) / 1000.0 - 1.0;
            }
            std::vector<double> inverse = a;
            const double expected = LeibnizDeterminant(a, n);
            const double determinant = InvertSmallMatrix(inverse.data(), order);
            EXPECT_NEAR(determinant, expected, 1e-12);
            for (std::size_t k = 0; std::fabs(expected) > 1e-3 && k < n * n; ++k) {
                double sum = 0.0;
                for (std::size_t j = 0; j < n; ++j) {
                    sum += a[k / n * n + j] * inverse[j * n + k % n];
                }
                ASSERT_NEAR(sum, k / n == k % n ? 1.0 : 0.0, 1e-10);
            }
        }
    }
}

TEST(InvertSmallMatrix, BorderedMatrixByHand) {
    double matrix[9] = {1, 0, -1, 0, 1, -1, -1, -1, 0};
    EXPECT_NEAR(InvertSmallMatrix(matrix, 3), -2.0, 1e-15);
    const double expected[9] = {0.5, -0.5, -0.5, -0.5, 0.5, -0.5, -0.5, -0.5, -0.5};
    for (int k = 0; k < 9; ++k) {
        EXPECT_NEAR(matrix[k], expected[k], 1e-15);
    }
}

// A pivot below 1e-8 stops with determinant 0; one of exactly 1e-8 doesn't.
TEST(InvertSmallMatrix, SmallestPivot) {
    double small[4] = {1, 0, 0, 0.999999e-8};
    EXPECT_EQ(InvertSmallMatrix(small, 2), 0.0);
    double enough[4] = {1, 0, 0, 1e-8};
    EXPECT_EQ(InvertSmallMatrix(enough, 2), 1e-8);
    double singular[4] = {1, 2, 2, 4};
    EXPECT_EQ(InvertSmallMatrix(singular, 2), 0.0);
}

// Leaves large numbers where the next call's local values will be.
[[gnu::noinline]] static void SmearStack() {
    [[maybe_unused]] volatile int room[1024];
    for (int k = 0; k < 1024; ++k) {
        room[k] = 100000000 + k;
    }
}

// Not a number isn't below the smallest pivot: the determinant is none either, on purpose, and so isn't small. No place
// of the matrix is taken from nowhere.
TEST(InvertSmallMatrix, NotANumberIsNoSmallPivot) {
    const int code = ExitCodeOfChild([] {
        SmearStack();
        const double nan = std::numeric_limits<double>::quiet_NaN();
        double matrix[9] = {nan, nan, -1, nan, nan, -1, -1, -1, 0};
        _exit(std::isnan(InvertSmallMatrix(matrix, 3)) ? 42 : 43);
    });
    EXPECT_EQ(code, 42);
}

// Helium and hydrogen atoms: three orbitals, whose matrices the tests set.
class FockHistory : public testing::Test {
protected:
    FockHistory() {
        State.ResetHistory = true;
        BuildIntegrals();
        SetSquare(::Run.Field.HalfDensity, {1, 0, 0, 0, 0, 0, 0, 0, 0});
    }

    // A Fock matrix whose commutator with the density has the elements a and b: [F, P](0, k) = -F(0, k).
    static std::vector<double> Fock(double a, double b, double diagonal = 0.0) {
        return {diagonal, a, b, a, 2.0, 0.5, b, 0.5, 3.0};
    }

    double Extrapolate(const std::vector<double>& fock) {
        SetSquare(::Run.Field.FockMatrix, fock);
        return ExtrapolateFock(State);
    }

    LoadedMolecule Loaded{{{{"He", 0, 0, 0}, {"H", 0, 0, 1}, {"H", 0, 1, 0}}, {"SCFAccelerateConvergence = yes"}}};
    FockExtrapolation State = {};
};

// Property: the measure is half the sum of squared commutator elements, over N (N - 1) / 2 pairs. Hand values: elements
// a and b stand twice each, so that the dot product is a^2 + b^2, over 3.
TEST_F(FockHistory, CommutatorMeasure) {
    EXPECT_DOUBLE_EQ(Extrapolate(Fock(0.3, 0.4)), 0.25 / 3.0);
    EXPECT_DOUBLE_EQ(State.Matrix[0][0], 0.25);
    EXPECT_EQ(State.Matrix[0][1], -1.0);
    EXPECT_EQ(State.Matrix[1][0], -1.0);
    EXPECT_EQ(State.Matrix[1][1], 0.0);
    const std::vector<double> commutator(::Run.Field.CommutatorHistory, ::Run.Field.CommutatorHistory + 9);
    EXPECT_EQ(commutator, (std::vector<double>{0, -0.3, -0.4, 0.3, 0, 0, 0.4, 0, 0}));
}

// A random symmetric density: the measure against F Q - Q F by plain loops.
TEST_F(FockHistory, CommutatorOfAnyMatrices) {
    const std::vector<double> q = {0.7, 0.2, -0.1, 0.2, 0.4, 0.3, -0.1, 0.3, 0.9}, f = Fock(0.3, -0.8, 1.5);
    SetSquare(::Run.Field.HalfDensity, q);
    double sum = 0.0;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            double c = 0.0;
            for (std::size_t k = 0; k < 3; ++k) {
                c += f[i * 3 + k] * q[k * 3 + j] - q[i * 3 + k] * f[k * 3 + j];
            }
            sum += c * c;
        }
    }
    EXPECT_NEAR(Extrapolate(f), 0.5 * sum / 3.0, 1e-15);
}

TEST_F(FockHistory, OneMatrixIsLeftAlone) {
    Extrapolate(Fock(0.3, 0.4));
    EXPECT_EQ(SquareOf(::Run.Field.FockMatrix), Fock(0.3, 0.4));
    EXPECT_EQ(State.HistoryCount, 1);
    EXPECT_EQ(State.HistorySlot, 1);
    EXPECT_FALSE(State.ResetHistory);
}

// Property: the combination with the smallest commutator, coefficients adding up to one. Set-up: commutators (1, 0) and
// (0, 1/2): c1 + 0 and c2 / 2 with c1 + c2 = 1 are smallest at c = 1/5, 4/5. The Fock matrices of the history are the
// ones that came in. A few roundings.
TEST_F(FockHistory, TwoMatricesCombine) {
    Extrapolate(Fock(1.0, 0.0, 10.0));
    Extrapolate(Fock(0.0, 0.5, 20.0));
    const std::vector<double> expected = Fock(0.2, 0.4, 18.0);
    for (std::size_t k = 0; k < 9; ++k) {
        EXPECT_NEAR(::Run.Field.FockMatrix[k], expected[k], 1e-14);
    }
    EXPECT_EQ(::Run.Field.FockHistory[9], 20.0);
    EXPECT_NEAR(State.Matrix[0][0], 1.0, 1e-15);  // carried without the scale
    EXPECT_NEAR(State.Matrix[1][1], 0.25, 1e-15);
}

// Three commutators in two dimensions are dependent: the determinant is 0, the matrix stays, a new history begins.
TEST_F(FockHistory, SingularMatrixRestartsTheHistory) {
    Extrapolate(Fock(1.0, 0.0));
    Extrapolate(Fock(1.0, 0.0));
    EXPECT_TRUE(State.ResetHistory);
    EXPECT_EQ(SquareOf(::Run.Field.FockMatrix), Fock(1.0, 0.0));
    EXPECT_EQ(State.HistoryCount, 2);
    EXPECT_DOUBLE_EQ(Extrapolate(Fock(0.0, 2.0)), 4.0 / 3.0);
    EXPECT_FALSE(State.ResetHistory);
    EXPECT_EQ(State.HistoryCount, 1);
    EXPECT_EQ(State.HistorySlot, 1);
    EXPECT_EQ(SquareOf(::Run.Field.FockMatrix), Fock(0.0, 2.0));
}

// A commutator of exactly zero: scale 1, and with a single matrix the determinant is -1.
TEST_F(FockHistory, ZeroCommutator) {
    EXPECT_EQ(Extrapolate(Fock(0.0, 0.0)), 0.0);
    EXPECT_EQ(State.HistoryCount, 1);
    EXPECT_FALSE(State.ResetHistory);
}

// Slots go 1, 2, 3, 4, 5, 1, ...; six bigger matrices are needed, with commutators that stay independent.
TEST(FockHistoryOfWater, SlotsCycle) {
    const LoadedMolecule loaded(With(WaterMolecule(), {"SCFAccelerateConvergence = yes"}));
    const std::size_t n = static_cast<std::size_t>(::Run.Basis.OrbitalCount);
    FockExtrapolation state = {};
    state.ResetHistory = true;
    std::mt19937 random(9);
    std::vector<double> density(n * n, 0.0);
    density[0] = density[n + 1] = density[2 * n + 2] = 1.0;
    SetSquare(::Run.Field.HalfDensity, density);
    const int slots[] = {1, 2, 3, 4, 5, 1, 2};
    std::vector<std::vector<double>> matrices;
    for (int round = 0; round < 7; ++round) {
        std::vector<double> fock(n * n);
        for (std::size_t i = 0; i < n * n; ++i) {
            fock[i] = static_cast<double>(random() % 1000) / 1000.0;
            fock[i % n * n + i / n] = fock[i];
        }
        SetSquare(::Run.Field.FockMatrix, fock);
        ExtrapolateFock(state);
        ASSERT_FALSE(state.ResetHistory);
        EXPECT_EQ(state.HistorySlot, slots[round]);
        EXPECT_EQ(state.HistoryCount, std::min(round + 1, 5));
        const double* stored = ::Run.Field.FockHistory + static_cast<std::size_t>(slots[round] - 1) * n * n;
        EXPECT_EQ(SquareOf(stored), fock);
        matrices.push_back(fock);
    }
    // coefficients that add up to one: where all five stored matrices agree, so does the combination
    for (int slot = 0; slot < 5; ++slot) {
        double norm = 0.0, dot = 0.0;
        for (int other = 0; other < 5; ++other) {
            norm += state.Matrix[slot][other];
            dot += state.Matrix[other][slot];
        }
        EXPECT_EQ(norm, dot);
        EXPECT_EQ(state.Matrix[5][slot], -1.0);
    }
}
