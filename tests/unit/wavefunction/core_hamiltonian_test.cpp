// SPDX-License-Identifier: MIT
// The core Hamiltonian: each element against the formula of its method, and the rules that are kept on purpose.
#include "integrals/gamma_matrix.h"
#include "molecule/selected_atoms.h"
#include "tests/support/molecule_support.h"
#include "wavefunction/core_hamiltonian.h"
#include "wavefunction/overlap_matrix.h"

#include <gtest/gtest.h>

#include <cmath>

static constexpr double HartreesPerElectronVolt = 0.03674930900274282;
static constexpr double BohrsPerAngstrom = 1.889725985;
static constexpr double Direct = 1e-14;  // a few roundings of numbers around 1

static double Element(const double* matrix, int row, int column) {
    return matrix[static_cast<long long>(row) * ::Run.Basis.OrbitalCount + column];
}

static double H(int row, int column) {
    return Element(::Run.Field.CoreHamiltonian, row, column);
}

static double Gamma(int row, int column) {
    return Element(::Run.Field.GammaMatrix, row, column);
}

static std::vector<double> OverlapOf() {
    BuildOverlapMatrix(::Run.Field.CoreHamiltonian);
    return SquareOf(::Run.Field.CoreHamiltonian);
}

// The factor of the resonance integral between the last atom's s and the first atom's s orbital.
static double ResonanceFactorOf(const Molecule& molecule) {
    const LoadedMolecule loaded(molecule);
    const double overlap = OverlapOf()[static_cast<std::size_t>(::Run.Basis.OrbitalRanges[1].First - 1)];
    BuildIntegrals();
    const double bonding = ParametersAt(0).BondingParameter + ParametersAt(1).BondingParameter;
    EXPECT_EQ(H(0, ::Run.Basis.OrbitalRanges[1].First - 1), H(::Run.Basis.OrbitalRanges[1].First - 1, 0));
    return H(0, ::Run.Basis.OrbitalRanges[1].First - 1) / overlap / bonding / HartreesPerElectronVolt;
}

// Property: the resonance integral is half the sum of the bonding parameters times the overlap, and three quarters of
// that with an atom of the second row. Set-up: pairs by element. The reference is the text's; a few roundings.
TEST(CoreHamiltonian, ThreeQuartersForTheSecondRow) {
    EXPECT_NEAR(ResonanceFactorOf({{{"F", 0, 0, 0}, {"H", 0, 0, 0.92}}}), -0.5, Direct);
    EXPECT_NEAR(ResonanceFactorOf({{{"F", 0, 0, 0}, {"Ne", 0, 0, 1.5}}, {"TotalCharge = 1"}}), -0.5, Direct);
    EXPECT_NEAR(ResonanceFactorOf({{{"Na", 0, 0, 0}, {"H", 0, 0, 1.8}}}), -0.375, Direct);
    EXPECT_NEAR(ResonanceFactorOf({{{"H", 0, 0, 0}, {"Cl", 0, 0, 1.27}}}), -0.375, Direct);
    EXPECT_NEAR(ResonanceFactorOf({{{"Cl", 0, 0, 0}, {"Cl", 0, 0, 2.0}}}), -0.375, Direct);
    EXPECT_NEAR(ResonanceFactorOf({{{"Ar", 0, 0, 0}, {"H", 0, 0, 1.3}}, {"TotalCharge = 1"}}), -0.375, Direct);
}

// The range ends at code 19 on purpose: a capping hydrogen takes the factor, capping carbon and chlorine don't.
TEST(CoreHamiltonian, CappingHydrogenCountsAsSecondRow) {
    const auto capped = [](const char* element) {
        return Molecule{{{"H", 0, 0, 0}, {element, 0, 0, 1.1}}, {}, {1}, {1}, {{1, 2}}};
    };
    EXPECT_NEAR(ResonanceFactorOf(capped("H")), -0.375, Direct);
    EXPECT_NEAR(ResonanceFactorOf(capped("He")), -0.5, Direct);
    EXPECT_NEAR(ResonanceFactorOf(capped("C")), -0.5, Direct);
    EXPECT_NEAR(ResonanceFactorOf(capped("Cl")), -0.5, Direct);
}

// Property: the diagonal is -(I+A)/2 + gamma(A,A)/2 - sum of Z gamma, through gamma of the first orbitals for all
// orbitals of an atom; nothing else within an atom. Set-up: formaldehyde. The reference is the formula written out.
TEST(CoreHamiltonian, DiagonalHoldsCoresThroughGamma) {
    const LoadedMolecule loaded(FormaldehydeMolecule());
    BuildIntegrals();
    const double charge[4] = {4.0, 6.0, 1.0, 1.0};
    for (int a = 0; a < 4; ++a) {
        const OrbitalRange& range = ::Run.Basis.OrbitalRanges[a];
        double attraction = 0.5 * Gamma(range.First - 1, range.First - 1);
        for (int b = 0; b < 4; ++b) {
            attraction -= charge[b] * Gamma(range.First - 1, ::Run.Basis.OrbitalRanges[b].First - 1);
        }
        for (int mu = range.First - 1; mu < range.Last; ++mu) {
            const double own = mu == range.First - 1 ? ParametersAt(a).OrbitalEnergyS : ParametersAt(a).OrbitalEnergyP;
            EXPECT_NEAR(::Run.Field.CoreDiagonal[mu], own * HartreesPerElectronVolt, Direct);
            EXPECT_NEAR(H(mu, mu), own * HartreesPerElectronVolt + attraction, 10 * Direct);
            for (int nu = range.First - 1; nu < mu; ++nu) {
                EXPECT_EQ(H(mu, nu), 0.0);
            }
        }
    }
}

// d orbitals share the attraction of the s orbital: they differ from the p ones through OrbitalEnergyD alone.
TEST(CoreHamiltonian, DOrbitalsShareTheAttraction) {
    const LoadedMolecule loaded({{{"P", 0, 0, 0}, {"H", 0, 0, 1.41}, {"H", 1.41, 0, 0}, {"H", 0, 1.41, 0}},
                                 {"IncludeDOrbitalsForSecondRow = yes"}});
    ASSERT_EQ(::Run.Basis.OrbitalCount, 12);
    BuildIntegrals();
    const double difference =
        (ParametersAt(0).OrbitalEnergyD - ParametersAt(0).OrbitalEnergyP) * HartreesPerElectronVolt;
    for (int d = 4; d < 9; ++d) {
        EXPECT_NEAR(H(d, d) - H(3, 3), difference, 10 * Direct);
        EXPECT_NEAR(::Run.Field.CoreDiagonal[d], ParametersAt(0).OrbitalEnergyD * HartreesPerElectronVolt, Direct);
    }
}

// What TNDO/2 adds to the diagonal of the s orbital and of a p orbital of the first of two atoms.
static void ExpectCorrection(const Molecule& molecule, double s, double p) {
    double plain[2];
    for (const char* method : {"SemiEmpiricalMethod = TNDO1", "SemiEmpiricalMethod = TNDO2"}) {
        const LoadedMolecule loaded(With(molecule, {method}));
        ParametersAt(0).SlaterCondonG1 = 0.3;
        ParametersAt(0).SlaterCondonF2 = 0.7;
        BuildIntegrals();
        if (::Run.Options.SemiEmpiricalMethod == 1) {
            plain[0] = H(0, 0);
            plain[1] = H(1, 1);
        } else {
            EXPECT_NEAR(H(0, 0) - plain[0], s, 10 * Direct) << molecule.Atoms[0].Element;
            EXPECT_NEAR(H(1, 1) - plain[1], p, 10 * Direct) << molecule.Atoms[0].Element;
        }
    }
}

// Property: the one-centre corrections of TNDO/2 for each code: first row only, by number of valence electrons.
// Set-up: G 0.3 and F 0.7 Hartree, an atom beside a hydrogen atom, the difference of the two methods. Hand values.
TEST(CoreHamiltonian, OneCentreCorrectionsOfTheFirstRow) {
    const double g = 0.3, f = 0.7;
    const auto hydride = [](const char* element, int charge) {
        return Molecule{{{element, 0, 0, 0}, {"H", 0, 0, 1.3}}, {charge ? "TotalCharge = 1" : "TotalCharge = 0"}};
    };
    ExpectCorrection(hydride("Li", 0), 0.0, g / 12.0);
    ExpectCorrection(hydride("Be", 1), 0.5 * g / 6.0, g / 4.0);
    ExpectCorrection(hydride("B", 0), 1.5 * g / 6.0, 0.5 * f * 0.08 + g / 3.0);
    ExpectCorrection(hydride("C", 1), 2.5 * g / 6.0, 1.5 * f * 0.08 + g / 3.0);
    ExpectCorrection(hydride("N", 0), 3.5 * g / 6.0, 2.5 * f * 0.08 + g / 3.0);
    ExpectCorrection(hydride("O", 1), 4.5 * g / 6.0, 3.5 * f * 0.08 + g / 3.0);
    ExpectCorrection(hydride("F", 0), 5.5 * g / 6.0, 4.5 * f * 0.08 + g / 3.0);
    ExpectCorrection(hydride("Ne", 1), 0.0, 0.0);
    ExpectCorrection(hydride("Cl", 0), 0.0, 0.0);
}

// On purpose helium corrects the three orbitals after its own, those of the next atom, and as the last atom none.
TEST(CoreHamiltonian, HeliumCorrectsTheNextAtom) {
    const double expected = (2.0 - 2.5) * 0.7 * 0.08 + 0.3 / 3.0;
    std::vector<double> plain;
    for (const char* method : {"SemiEmpiricalMethod = TNDO1", "SemiEmpiricalMethod = TNDO2"}) {
        const LoadedMolecule loaded({{{"Ne", 0, 0, 5.0},
                                      {"He", 0, 0, 0},
                                      {"H", 0, 0, 1},
                                      {"H", 0, 1, 1},
                                      {"H", 1, 0, 1},
                                      {"H", 1, 1, 1},
                                      {"He", 3, 0, 0}},
                                     {method}});
        for (const int helium : {1, 6}) {
            ParametersAt(helium).SlaterCondonG1 = 0.3;
            ParametersAt(helium).SlaterCondonF2 = 0.7;
        }
        BuildIntegrals();
        for (int mu = 0; mu < ::Run.Basis.OrbitalCount; ++mu) {
            if (::Run.Options.SemiEmpiricalMethod == 1) {
                plain.push_back(H(mu, mu));
            } else {
                const bool next = mu >= 5 && mu <= 7;  // the hydrogen atoms that follow the first helium
                EXPECT_NEAR(H(mu, mu) - plain[static_cast<std::size_t>(mu)], next ? expected : 0.0, 10 * Direct) << mu;
            }
        }
    }
}

// Helium before a single atom with one orbital: that one is corrected, the other two lie beyond the vector.
TEST(CoreHamiltonian, HeliumBeforeTheEndStaysWithinTheVector) {
    double plain = 0.0;
    for (const char* method : {"SemiEmpiricalMethod = TNDO1", "SemiEmpiricalMethod = TNDO2"}) {
        const LoadedMolecule loaded(With(HeliumHydride(0.8), {method}));
        ParametersAt(0).SlaterCondonG1 = 0.3;
        BuildIntegrals();
        if (::Run.Options.SemiEmpiricalMethod == 1) {
            plain = H(1, 1);
        } else {
            EXPECT_NEAR(H(1, 1) - plain, 0.1, Direct);
        }
    }
}

// Property: cores repel as point charges, capping atoms with 7, lone pairs with nothing, pairs under 0.001 bohr not at
// all. The reference is Coulomb's law; direct arithmetic.
TEST(CoreHamiltonian, CoreRepulsion) {
    {
        const LoadedMolecule loaded({{{"C", 0, 0, 0}, {"O", 0, 0, 1.2}, {"Lp", 0, 0, 0.5}}});
        BuildIntegrals();
        EXPECT_NEAR(::Run.Field.CoreRepulsion, 24.0 / (1.2 * BohrsPerAngstrom), 1e-13);
    }
    {
        const LoadedMolecule loaded({{{"H", 0, 0, 0}, {"C", 0, 0, 1.1}}, {}, {1}, {1}, {{1, 2}}});
        BuildIntegrals();
        EXPECT_NEAR(::Run.Field.CoreRepulsion, 7.0 / (1.1 * BohrsPerAngstrom), 1e-13);
    }
    for (const double distance : {0.0, 0.0005, 0.0006}) {
        const LoadedMolecule loaded(HydrogenMolecule(distance));
        BuildIntegrals();
        const double bohrs = distance * BohrsPerAngstrom;
        EXPECT_NEAR(::Run.Field.CoreRepulsion, bohrs < 0.001 ? 0.0 : 1.0 / bohrs, 1e-9) << distance;
    }
}

// A selection that holds every atom has no environment: an energy set before is left as it is and isn't added.
TEST(CoreHamiltonian, EnvironmentOnlyWhenAtomsAreLeftOut) {
    {
        Molecule whole = WaterMolecule();
        whole.QuantumAtoms = {1, 2, 3};
        const LoadedMolecule loaded(whole);
        ::Run.Field.EnvironmentEnergy = 1234.5;
        BuildIntegrals();
        EXPECT_EQ(::Run.Field.EnvironmentEnergy, 1234.5);
        EXPECT_LT(::Run.Field.CoreRepulsion, 100.0);
    }
    Molecule part = WaterMolecule();
    part.Atoms.push_back({"H", 0.0, 0.0, -3.0, 0.4});
    part.QuantumAtoms = {1, 2, 3};
    part.NMRAtoms = {1};
    const LoadedMolecule loaded(part);
    BuildIntegrals();
    EXPECT_NE(::Run.Field.EnvironmentEnergy, 0.0);
    double plain = 0.0;
    const double charge[3] = {6.0, 1.0, 1.0};
    for (int a = 0; a < 3; ++a) {
        for (int b = 0; b < a; ++b) {
            plain += charge[a] * charge[b] / Distance(SelectedPosition(a), SelectedPosition(b));
        }
    }
    EXPECT_NEAR(::Run.Field.CoreRepulsion, plain + ::Run.Field.EnvironmentEnergy, 1e-12);
}

// Only a pair that is closer than the limit has no repulsion: a distance that isn't a number counts. Set-up: both
// atoms beyond the largest coordinate in bohr.
TEST(CoreHamiltonian, RepulsionOfNoDistance) {
    const LoadedMolecule loaded({{{"H", 1.7e308, 0, 0}, {"H", 1.7e308, 0, 1}}});
    BuildIntegrals();
    EXPECT_TRUE(std::isnan(::Run.Field.CoreRepulsion));
}
