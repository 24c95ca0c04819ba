// SPDX-License-Identifier: MIT
// The gamma matrix and the terms of the environment: which integral goes where, limits of distance, and charges.
#include "integrals/environment_terms.h"
#include "integrals/gamma_matrix.h"
#include "integrals/two_centre_coulomb.h"
#include "tests/unit/integrals/integral_system.h"

#include <cmath>

// Two suites on one fixture.
class GammaMatrixTest : public IntegralSystem {};
class EnvironmentTermsTest : public IntegralSystem {};

TEST_F(GammaMatrixTest, HydrogenMolecule) {
    const int h = Type(1.0, 0.0, 0.0);
    Add(1, h, 0.0, 0.0, 0.0, 1);
    Add(1, h, 0.0, 2.0, 0.0, 1);
    Place();
    std::vector<double> gamma = Square(77.0);
    BuildGammaMatrix(gamma.data());
    EXPECT_EQ(At(gamma, 0, 0), OneCentreCoulomb(1, 1, 1.0, 1.0));
    EXPECT_EQ(At(gamma, 1, 1), At(gamma, 0, 0));
    EXPECT_EQ(At(gamma, 0, 1), At(gamma, 1, 0));
    const double closed = 0.5 * (1.0 - (1.0 + 11.0 / 4 + 3.0 + 4.0 / 3) * std::exp(-4.0));
    EXPECT_NEAR(At(gamma, 0, 1), closed, 1e-12);
    EXPECT_EQ(::Run.Report.PollCounter, 200);  // one class
}

// Property: each block has the class and the exponents of its row and column clouds. Set-up: hydrogen, carbon,
// and two third-row atoms with d orbitals, in an order that swaps every class once, all exponents different. The
// reference calls the class for each pair of orbitals, the smaller n first and the lower list place second. Equal
// to the last bit.
TEST_F(GammaMatrixTest, EveryBlockHasItsOwnClass) {
    Add(17, Type(2.0, 2.1, 1.1), 0.3, 0.1, -0.2, 9);
    Add(6, Type(1.6, 1.7, 0.0), 1.9, 0.4, 0.8, 4);
    Add(1, Type(1.2, 0.0, 0.0), -1.0, 2.1, 0.5, 1);
    Add(6, Type(1.65, 1.75, 0.0), 2.2, -2.4, 0.1, 4);
    Add(16, Type(1.8, 1.85, 1.05), -0.9, -2.0, 3.1, 9);
    Place();
    std::vector<double> gamma = Square(77.0);
    BuildGammaMatrix(gamma.data());
    for (int a = 0; a < ::Run.Molecule.SelectedAtomCount; ++a) {
        for (int b = 0; b <= a; ++b) {
            const double* pa = Positions[static_cast<std::size_t>(a)].Position;
            const double* pb = Positions[static_cast<std::size_t>(b)].Position;
            const double x = pa[0] - pb[0];
            const double y = pa[1] - pb[1];
            const double z = pa[2] - pb[2];
            const double distance = std::sqrt(x * x + y * y + z * z);
            const OrbitalRange& ra = Ranges[static_cast<std::size_t>(a)];
            const OrbitalRange& rb = Ranges[static_cast<std::size_t>(b)];
            const int na = Shells[static_cast<std::size_t>(ra.First - 1)];
            const int nb = Shells[static_cast<std::size_t>(rb.First - 1)];
            for (int i = ra.First; i <= ra.Last; ++i) {
                for (int j = rb.First; j <= rb.Last; ++j) {
                    // s and p share the s exponent, on purpose
                    const double za = Exponents[static_cast<std::size_t>((i > ra.LastSP ? i : ra.First) - 1)];
                    const double zb = Exponents[static_cast<std::size_t>((j > rb.LastSP ? j : rb.First) - 1)];
                    const double expected = a == b     ? OneCentreCoulomb(na, na, za, zb)
                                            : na <= nb ? TwoCentreCoulomb(na, nb, za, zb, distance)
                                                       : TwoCentreCoulomb(nb, na, zb, za, distance);
                    if (a != b || j <= i) {
                        EXPECT_EQ(At(gamma, i - 1, j - 1), expected) << i << " " << j;
                    }
                    EXPECT_EQ(At(gamma, j - 1, i - 1), At(gamma, i - 1, j - 1)) << i << " " << j;
                }
            }
        }
    }
}

// On purpose there is neither a 1/R tail nor a limit at zero distance.
TEST_F(GammaMatrixTest, FarAndCoincidentAtomsDoNotRepel) {
    const struct {
        double Distance;
        bool Repels;
    } cases[] = {{100.0, false}, {250.0, false}, {std::nextafter(100.0, 0.0), true},
                 {0.0, false},   {0.001, false}, {std::nextafter(0.001, 1.0), true}};
    const int type = Type(0.2, 0.2, 0.0);
    Add(6, type, 0.0, 0.0, 0.0, 4);
    Add(1, type, 1.0, 0.0, 0.0, 1);
    for (const auto& line : cases) {
        Positions[1].Position[0] = line.Distance;
        Place();
        std::vector<double> gamma = Square(77.0);
        BuildGammaMatrix(gamma.data());
        for (int k = 0; k < 4; ++k) {
            EXPECT_EQ(At(gamma, 4, k) != 0.0, line.Repels) << line.Distance;
            EXPECT_EQ(At(gamma, k, 4), At(gamma, 4, k)) << line.Distance;
            EXPECT_TRUE(std::isfinite(At(gamma, 4, k))) << line.Distance;
        }
        EXPECT_GT(At(gamma, 0, 0), 0.0);
    }
}

TEST_F(GammaMatrixTest, AtomsWithoutOrbitalsAreLeftOut) {
    const int type = Type(1.0, 0.0, 0.0);
    Add(1, type, 0.0, 0.0, 0.0, 1);
    Add(0, type, 0.7, 0.0, 0.0, 0);
    Add(1, type, 1.4, 0.0, 0.0, 1);
    Place();
    std::vector<double> gamma = Square(77.0);
    BuildGammaMatrix(gamma.data());
    EXPECT_EQ(At(gamma, 1, 0), TwoCentreCoulomb(1, 1, 1.0, 1.0, 1.4));
}

// Property: a capping hydrogen counts as an atom of the second shell, with the class of that shell.
TEST_F(GammaMatrixTest, ACappingHydrogenHasTheSecondShell) {
    Add(6, Type(1.6, 1.6, 0.0), 0.0, 0.0, 0.0, 4);
    Add(19, Type(1.3, 1.3, 0.0), 0.0, 0.0, 2.1, 4, -1);
    Place();
    std::vector<double> gamma = Square(77.0);
    BuildGammaMatrix(gamma.data());
    EXPECT_EQ(At(gamma, 5, 2), TwoCentreCoulomb(2, 2, 1.3, 1.6, 2.1));
}

TEST_F(GammaMatrixTest, ReadsTheTableInForce) {
    Add(16, Type(1.8, 1.8, 1.0), 0.0, 0.0, 0.0, 9);
    Place();
    AtomTypeParameters other = Parameters[0];
    other.SlaterExponentD = 1.4;
    ::Run.Parameters.ActiveParameters = &other;
    std::vector<double> gamma = Square(77.0);
    BuildGammaMatrix(gamma.data());
    EXPECT_EQ(At(gamma, 8, 8), OneCentreCoulomb(3, 3, 1.4, 1.4));
    EXPECT_EQ(At(gamma, 0, 8), OneCentreCoulomb(3, 3, 1.4, 1.8));
}

TEST_F(EnvironmentTermsTest, TablesByElement) {
    const int ends[] = {2, 10, 18, 36, 54};
    for (int code = 1, row = 1; code <= LastEnvironmentElement; ++code) {
        EXPECT_EQ(PrincipalQuantumTable[code - 1], row) << code;
        row += code == ends[row - 1] ? 1 : 0;
    }
    const struct {
        int Code;
        double Electrons;
    } known[] = {{1, 1},   {2, 2},  {3, 1},  {10, 8}, {11, 1},  {18, 8}, {19, 1},
                 {29, 11}, {30, 2}, {36, 8}, {37, 1}, {47, 11}, {48, 2}, {54, 8}};
    for (const auto& line : known) {
        EXPECT_EQ(ValenceElectronTable[line.Code - 1], line.Electrons) << line.Code;
    }
}

static constexpr double Charge = -0.25;

// Property: shift = -q g, energy = Z (v/R - (v - q) g), with g by the distance in mean radii of the larger cloud:
// within six of them the class of both shells, beyond as 1s clouds, from 100 bohr on and up to 0.001 the inverse
// distance. The reference is that rule, worked out for each case by hand. Equal to the last bit, but for the
// energy's order of sums.
TEST_F(EnvironmentTermsTest, RepulsionByDistance) {
    const double za = 1.6;
    const double zb = 0.5;
    const double reachA = 6.0 * (2.5 / za);  // 9.375
    const struct {
        int Code;
        double Distance;
        double G;
    } cases[] = {
        {6, 5.0, TwoCentreCoulomb(2, 2, za, zb, 5.0)},
        {1, 5.0, TwoCentreCoulomb(1, 2, zb, za, 5.0)},
        {16, 5.0, TwoCentreCoulomb(2, 3, za, zb, 5.0)},
        {16, 41.9, TwoCentreCoulomb(2, 3, za, zb, 41.9)},  // 6 x 3.5/0.5 = 42
        {16, 42.0, TwoCentreCoulomb(1, 1, za, zb, 42.0)},
        {35, 9.3, TwoCentreCoulomb(2, 4, za, zb, 9.3)},  // beyond the third shell only the other cloud has a radius
        {35, reachA, TwoCentreCoulomb(1, 1, za, zb, reachA)},
        {53, 3.0, TwoCentreCoulomb(2, 5, za, zb, 3.0)},
        {6, 99.0, TwoCentreCoulomb(1, 1, za, zb, 99.0)},
        {6, 100.0, 0.01},
        {6, 400.0, 0.0025},
        {6, 0.001, 1000.0},
        {6, 0.0005, 2000.0},
    };
    for (const auto& line : cases) {
        Parameters.clear();
        Records.clear();
        Positions.clear();
        Orbitals.clear();
        const int a = Type(za, 1.7, 0.0);
        const int b = Type(zb, 9.0, 9.0);
        Add(6, a, 0.0, 0.0, 0.0, 4);
        Add(line.Code, b, 0.0, line.Distance, 0.0, 0, 1, static_cast<float>(Charge));
        Place();
        std::vector<double> h = Square(3.0);
        ::Run.Field.EnvironmentEnergy = 77.0;
        BuildEnvironmentTerms(h.data());
        const double v = ValenceElectronTable[line.Code - 1];
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) {
                EXPECT_EQ(At(h, i, j), i == j ? 3.0 - Charge * line.G : 3.0) << line.Code << " " << line.Distance;
            }
        }
        const double energy = 4.0 * (v / line.Distance - (v - Charge) * line.G);
        EXPECT_NEAR(::Run.Field.EnvironmentEnergy, energy, 1e-14 * v * 4.0 / line.Distance) << line.Code;
    }
}

// Property: classes are called with the lower shell first, for all shells of the calculation.
TEST_F(EnvironmentTermsTest, ShellsInAscendingOrder) {
    const int codes[] = {1, 6, 16};
    const int others[] = {1, 6, 16, 35, 53};
    for (const int code : codes) {
        for (const int other : others) {
            Parameters.clear();
            Records.clear();
            Positions.clear();
            Orbitals.clear();
            Add(code, Type(1.3, 1.3, 1.0), 0.0, 0.0, 0.0, code == 1 ? 1 : 4);
            Add(other, Type(1.7, 0.0, 0.0), 2.0, 0.0, 0.0, 0, 1, 1.0f);
            Place();
            std::vector<double> h = Square(0.0);
            BuildEnvironmentTerms(h.data());
            const int na = ValenceShellTable[code - 1];
            const int nb = PrincipalQuantumTable[other - 1];
            const double g =
                na <= nb ? TwoCentreCoulomb(na, nb, 1.3, 1.7, 2.0) : TwoCentreCoulomb(nb, na, 1.7, 1.3, 2.0);
            EXPECT_EQ(At(h, 0, 0), -g) << code << " " << other;
        }
    }
}

// Two clouds so diffuse that at 100 bohr they still overlap: there the inverse distance takes over.
TEST_F(EnvironmentTermsTest, AHundredBohrIsFar) {
    const int type = Type(0.1, 0.0, 0.0);
    Add(1, type, 0.0, 0.0, 0.0, 1);
    Add(1, type, 100.0, 0.0, 0.0, 0, 1, 1.0f);
    Place();
    std::vector<double> h = Square(0.0);
    BuildEnvironmentTerms(h.data());
    EXPECT_EQ(At(h, 0, 0), -0.01);
    Positions[1].Position[0] = std::nextafter(100.0, 0.0);
    h = Square(0.0);
    BuildEnvironmentTerms(h.data());
    EXPECT_GT(At(h, 0, 0), -0.009999999);  // 5e-7 of it are missing
}

// At one place the inverse distance is capped, and all stays finite.
TEST_F(EnvironmentTermsTest, CoincidentAtoms) {
    for (const double distance : {0.0, 9e-07}) {
        Parameters.clear();
        Records.clear();
        Positions.clear();
        Orbitals.clear();
        const int type = Type(1.0, 0.0, 0.0);
        Add(1, type, 0.0, 0.0, 0.0, 1);
        Add(1, type, distance, 0.0, 0.0, 0, 1, 0.5f);
        Place();
        std::vector<double> h = Square(0.0);
        BuildEnvironmentTerms(h.data());
        EXPECT_EQ(At(h, 0, 0), -500000.0);
        EXPECT_EQ(::Run.Field.EnvironmentEnergy, 500000.0);
    }
}

// The limit of a charge is 1e-5 itself: a charge of 1e-5 as 32 bits hold it is left out.
TEST_F(EnvironmentTermsTest, WhoIsOfTheEnvironment) {
    const int type = Type(1.0, 1.0, 0.0);
    const struct {
        int Code;
        int State;
        float Charge;
        bool Counts;
    } cases[] = {{1, 1, 1e-05f, false}, {1, 1, -1e-05f, false}, {1, 1, 1.01e-05f, true}, {1, 1, -0.3f, true},
                 {0, 1, 0.3f, false},   {19, -1, 0.3f, false},  {1, 0, 0.3f, false}};
    for (const auto& line : cases) {
        Records.clear();
        Positions.clear();
        Orbitals.clear();
        Add(1, type, 0.0, 0.0, 0.0, 1);
        Add(line.Code, type, 3.0, 0.0, 0.0, line.State > 0 ? 0 : line.Code == 19 ? 4 : 1, line.State, line.Charge);
        Place();
        std::vector<double> h = Square(0.0);
        BuildEnvironmentTerms(h.data());
        EXPECT_EQ(At(h, 0, 0) != 0.0, line.Counts) << line.Code << " " << line.State << " " << line.Charge;
        EXPECT_EQ(::Run.Field.EnvironmentEnergy != 0.0, line.Counts);
    }
}

// Property: far from everything the environment acts as its net charges, and only on the cores' balance: the
// shift is the negative potential of the charges, the energy core charge times it. Set-up: water's atoms, two
// ions. Tolerance: rounding of the sums of electrons.
TEST_F(EnvironmentTermsTest, FarChargesActAsPoints) {
    Add(8, Type(2.2, 2.2, 0.0), 0.0, 0.0, 0.0, 4);
    Add(1, Type(1.2, 0.0, 0.0), 0.0, 0.0, 1.8, 1);
    const int ion = Type(1.5, 0.0, 0.0);
    Add(11, ion, 300.0, 0.0, 0.0, 0, 1, 1.0f);
    Add(17, ion, 0.0, -500.0, 0.0, 0, 1, -1.0f);
    Place();
    std::vector<double> h = Square(0.0);
    BuildEnvironmentTerms(h.data());
    const double first = 1.0 / 300.0 - 1.0 / 500.0;
    const double second = 1.0 / std::sqrt(90000.0 + 1.8 * 1.8) - 1.0 / std::sqrt(250000.0 + 1.8 * 1.8);
    for (int k = 0; k < 4; ++k) {
        EXPECT_NEAR(At(h, k, k), -first, 1e-16);
    }
    EXPECT_NEAR(At(h, 4, 4), -second, 1e-16);
    EXPECT_EQ(At(h, 4, 0), 0.0);
    EXPECT_NEAR(::Run.Field.EnvironmentEnergy, 6.0 * first + second, 1e-14);
}
