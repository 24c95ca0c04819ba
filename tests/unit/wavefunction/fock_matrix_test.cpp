// SPDX-License-Identifier: MIT
// The two-electron part of the Fock matrix, against the integrals one by one, and what is kept on purpose.
#include "tests/support/molecule_support.h"
#include "wavefunction/fock_matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

// A symmetric density without any structure.
static std::vector<double> RandomDensity(unsigned seed) {
    const std::size_t n = static_cast<std::size_t>(::Run.Basis.OrbitalCount);
    std::mt19937 random(seed);
    std::vector<double> density(n * n);
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            density[i * n + j] = density[j * n + i] = static_cast<double>(random() % 2001) / 1000.0 - 1.0;
        }
    }
    return density;
}

static std::vector<double> Halved(std::vector<double> values) {
    for (double& value : values) {
        value *= 0.5;
    }
    return values;
}

static std::vector<double> FockOf(const std::vector<double>& density) {
    SetSquare(::Run.Field.TotalDensity, density);
    SetSquare(::Run.Field.HalfDensity, Halved(density));
    SetSquare(::Run.Field.FockMatrix, SquareOf(::Run.Field.CoreHamiltonian));
    BuildFockMatrix(::Run.Field.FockMatrix);
    return SquareOf(::Run.Field.FockMatrix);
}

static void ExpectPlainFock(const Molecule& molecule) {
    const LoadedMolecule loaded(molecule);
    BuildIntegrals();
    const std::vector<double> density = RandomDensity(3);
    const std::vector<double> fock = FockOf(density);
    const std::vector<double> plain = PlainFock(Halved(density), Halved(density));
    for (std::size_t i = 0; i < fock.size(); ++i) {
        ASSERT_NEAR(fock[i], plain[i], 1e-12) << i;
    }
}

// Property: the Fock matrix is H + sum P ((mu nu|la si) - 1/2 (mu la|nu si)) with the method's integrals. Set-up: a
// random symmetric density. The reference runs over all one-centre integrals by their definitions through G1 and F2
// instead of the table of elements; the thirteen threes and rounding stay below 1e-12.
TEST(FockMatrix, EqualsTheSumOverTheIntegrals) {
    for (const char* method : {"SemiEmpiricalMethod = TNDO1", "SemiEmpiricalMethod = TNDO2"}) {
        ExpectPlainFock(With(FormaldehydeMolecule(), {method}));
        ExpectPlainFock(With({{{"Cl", 0, 0, 0}, {"C", 0, 0.1, 1.7}, {"He", 2, 0, 0}, {"Li", -2, 1, 1}}, {}},
                             {method, "TotalCharge = 0"}));
        ExpectPlainFock({{{"C", 0, 0, 0}, {"H", 0, 1.1, 0}, {"C", 0, 0, 1.5}, {"H", 1, 0, 2}},
                         {method},
                         {1},
                         {1, 2},
                         {{1, 2}, {1, 3}, {3, 4}}});
    }
    ExpectPlainFock({{{"P", 0, 0, 0}, {"H", 0, 0, 1.4}, {"H", 1.4, 0, 0}, {"H", 0, 1.4, 0}},
                     {"IncludeDOrbitalsForSecondRow = yes"}});
}

// Capping atoms take part in the exchange of TNDO/2, though not in the correction of the core.
TEST(FockMatrix, CappingAtomsHaveExchange) {
    const LoadedMolecule loaded(
        {{{"H", 0, 0, 0}, {"C", 0, 0, 1.1}}, {"SemiEmpiricalMethod = TNDO2"}, {1}, {1}, {{1, 2}}});
    BuildIntegrals();
    const std::vector<double> density = RandomDensity(5);
    ParametersAt(1).SlaterCondonG1 = 0.0;
    const double without = FockOf(density)[6];
    ParametersAt(1).SlaterCondonG1 = 0.6;
    const std::vector<double> with = FockOf(density);
    const double q = 0.5 * (density[12] + density[18] + density[24]);
    EXPECT_NEAR(with[6] - without, -q * 0.2, 1e-12);
}

// Hydrogen and helium are skipped whatever their parameters are.
TEST(FockMatrix, HydrogenAndHeliumAreSkipped) {
    const LoadedMolecule loaded(With(HeliumHydride(0.8), {"SemiEmpiricalMethod = TNDO2"}));
    BuildIntegrals();
    const std::vector<double> density = RandomDensity(7);
    const std::vector<double> without = FockOf(density);
    for (const int place : {0, 1}) {
        ParametersAt(place).SlaterCondonG1 = 5.0;
        ParametersAt(place).SlaterCondonF2 = 5.0;
    }
    EXPECT_EQ(FockOf(density), without);
}

// On purpose the third has thirteen threes. Set-up: a huge G1, so that the digits after the thirteenth show: the
// change of F(s,s) is 3/2 G times the constant, and 5e-14 Hartree per G short of a half. Rounding is 1e-16 per G.
TEST(FockMatrix, ThirteenThrees) {
    const double g = 1e10;
    const LoadedMolecule loaded({{{"Ne", 0, 0, 0}}, {"SemiEmpiricalMethod = TNDO2"}});
    BuildIntegrals();
    std::vector<double> density(16, 0.0);
    density[5] = density[10] = density[15] = 1.0;
    ParametersAt(0).SlaterCondonG1 = g;
    const double fock = FockOf(density)[0];
    ParametersAt(0).SlaterCondonG1 = 0.0;
    const double change = fock - FockOf(density)[0];
    EXPECT_NEAR(change / g, -1.5 * 0.3333333333333, 2e-15);
    EXPECT_GT(std::fabs(change / g + 0.5), 4e-14);
}

// Arithmetic symmetric in x, y and z: an exact degeneracy stays exact.
TEST(FockMatrix, EqualPopulationsGiveEqualElements) {
    const LoadedMolecule loaded({{{"Ne", 0, 0, 0}}, {"SemiEmpiricalMethod = TNDO2"}});
    BuildIntegrals();
    ParametersAt(0).SlaterCondonG1 = 0.1234567;
    ParametersAt(0).SlaterCondonF2 = 0.7654321;
    std::vector<double> density(16, 0.0);
    density[0] = 1.7;
    density[5] = density[10] = 1.1357924;
    density[15] = 0.9246813;
    const std::vector<double> fock = FockOf(density);
    EXPECT_EQ(fock[5], fock[10]);
}
