// SPDX-License-Identifier: MIT
// The self-consistent field: energies by closed formulas and by plain loops, invariances, the phases of the iteration.
#include "molecule/selected_atoms.h"
#include "tests/support/molecule_support.h"
#include "wavefunction/solve_wavefunction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

static constexpr double HartreesPerElectronVolt = 0.03674930900274282;
static constexpr double BohrsPerAngstrom = 1.889725985;
static constexpr char Tight[] = "SCFConvergenceLimit = 1e-6";
static constexpr char ManyIterations[] = "SCFIterationLimit = 200";

static double TotalEnergy() {
    return PlainElectronicEnergy(SquareOf(::Run.Field.TotalDensity)) + ::Run.Field.CoreRepulsion;
}

// Energy (Hartree) and charges of a molecule.
static std::vector<double> EnergyAndCharges(const Molecule& molecule) {
    const LoadedMolecule loaded(With(molecule, {Tight, ManyIterations}));
    SolveWavefunction();
    std::vector<double> result = {TotalEnergy()};
    for (int place = 0; place < ::Run.Molecule.SelectedAtomCount; ++place) {
        result.push_back(static_cast<double>(::Run.Field.NetCharges[place]));
    }
    return result;
}

// Repulsion of two 1s clouds and their overlap at distance r; Roothaan (1951).
static double Repulsion1s(double za, double zb, double r) {
    if (za == zb) {
        const double p = za * r;
        return (1.0 - (1.0 + 11.0 / 8.0 * p + 0.75 * p * p + p * p * p / 6.0) * std::exp(-2.0 * p)) / r;
    }
    const double k = (za * za + zb * zb) / (za * za - zb * zb);
    const double a = za * r, b = zb * r;
    return (1.0 - (1.0 - k) * (1.0 - k) * (0.25 * (2.0 + k) + 0.25 * a) * std::exp(-2.0 * a) -
            (1.0 + k) * (1.0 + k) * (0.25 * (2.0 - k) + 0.25 * b) * std::exp(-2.0 * b)) /
           r;
}

static double Overlap1s(double za, double zb, double r) {
    if (za == zb) {
        const double p = za * r;
        return std::exp(-p) * (1.0 + p + p * p / 3.0);
    }
    const double t = (za - zb) / (za + zb), p = 0.5 * (za + zb) * r;
    const double k = 0.5 * (t + 1.0 / t);
    return std::sqrt(1.0 - t * t) / (t * p) *
           (-(1.0 - k) * (2.0 * (1.0 + k) + za * r) * std::exp(-za * r) +
            (1.0 + k) * (2.0 * (1.0 - k) + zb * r) * std::exp(-zb * r));
}

// Property: energies of the hydrogen molecule. Set-up: both methods, which agree for it. The reference is the 2 by 2
// problem by hand, E = 2a - g11 / 2 - 3/2 g12 + 2 h12 + 1/R, e = a +- (h12 - g12 / 2), with the closed 1s integrals.
// The orbitals are given by symmetry, so that only rounding is left, and 1e-9 of the integrals.
TEST(SolveWavefunction, HydrogenMoleculeByHand) {
    for (const char* method : {"SemiEmpiricalMethod = TNDO1", "SemiEmpiricalMethod = TNDO2"}) {
        for (const double distance : {0.5, 0.74, 1.5}) {
            const LoadedMolecule loaded(With(HydrogenMolecule(distance), {method, Tight}));
            SolveWavefunction();
            const double zeta = ParametersAt(0).SlaterExponentS, r = distance * BohrsPerAngstrom;
            const double a = ParametersAt(0).OrbitalEnergyS * HartreesPerElectronVolt;
            const double g11 = 0.625 * zeta, g12 = Repulsion1s(zeta, zeta, r);
            const double h12 = -ParametersAt(0).BondingParameter * HartreesPerElectronVolt * Overlap1s(zeta, zeta, r);
            EXPECT_NEAR(TotalEnergy(), 2 * a - 0.5 * g11 - 1.5 * g12 + 2 * h12 + 1 / r, 1e-9) << distance;
            EXPECT_NEAR(::Run.Field.OrbitalEnergies[0], a + h12 - 0.5 * g12, 1e-9);
            EXPECT_NEAR(::Run.Field.OrbitalEnergies[1], a - h12 + 0.5 * g12, 1e-9);
            EXPECT_NEAR(static_cast<double>(::Run.Field.NetCharges[0]), 0.0, 1e-7);
        }
    }
}

// Property: energy and population of HeH+. The reference minimises the energy of the 2 by 2 problem over its one angle,
// E = sum P H + sum (Pii^2 / 4 gii) + (P11 P22 - P12^2 / 2) g12, by golden section to 1e-8, where E is flat to 1e-15.
// The series of the two-centre integrals are cut off on purpose: what they drop leaves up to 1e-7 Hartree in gamma and
// overlap of unequal exponents. The limit of the iteration is 1.6e-9 Hartree; the population follows its root at worst.
TEST(SolveWavefunction, HeliumHydrideByHand) {
    for (const char* method : {"SemiEmpiricalMethod = TNDO1", "SemiEmpiricalMethod = TNDO2"}) {
        const LoadedMolecule loaded(With(HeliumHydride(0.8), {method, Tight}));
        SolveWavefunction();
        const double r = 0.8 * BohrsPerAngstrom;
        const double za = ParametersAt(0).SlaterExponentS, zb = ParametersAt(1).SlaterExponentS;
        const double g11 = 0.625 * za, g22 = 0.625 * zb, g12 = Repulsion1s(za, zb, r);
        const double h11 = ParametersAt(0).OrbitalEnergyS * HartreesPerElectronVolt - 1.5 * g11 - g12;
        const double h22 = ParametersAt(1).OrbitalEnergyS * HartreesPerElectronVolt - 0.5 * g22 - 2.0 * g12;
        const double h12 = -0.5 * (ParametersAt(0).BondingParameter + ParametersAt(1).BondingParameter) *
                           HartreesPerElectronVolt * Overlap1s(za, zb, r);
        const auto energy = [&](double angle) {
            const double p11 = 2 * std::cos(angle) * std::cos(angle), p22 = 2 - p11;
            const double p12 = 2 * std::sin(angle) * std::cos(angle);
            return p11 * h11 + p22 * h22 + 2 * p12 * h12 + 0.25 * (p11 * p11 * g11 + p22 * p22 * g22) +
                   (p11 * p22 - 0.5 * p12 * p12) * g12;
        };
        double low = 0.0, high = 1.6;
        while (high - low > 1e-8) {
            const double x = high - 0.6180339887 * (high - low), y = low + 0.6180339887 * (high - low);
            (energy(x) < energy(y) ? high : low) = energy(x) < energy(y) ? y : x;
        }
        EXPECT_NEAR(TotalEnergy(), energy(low) + 2.0 / r, 1e-7) << method;
        EXPECT_NEAR(::Run.Field.TotalDensity[0], 2 * std::cos(low) * std::cos(low), 5e-5) << method;
    }
}

// The molecules of the identities below.
static std::vector<Molecule> SomeMolecules() {
    std::vector<Molecule> molecules;
    for (const char* method : {"SemiEmpiricalMethod = TNDO1", "SemiEmpiricalMethod = TNDO2"}) {
        molecules.push_back(With(WaterMolecule(), {method}));
        molecules.push_back(With(FormaldehydeMolecule(), {method}));
        molecules.push_back(With(FormaldehydeMolecule(), {method, "SCFAccelerateConvergence = yes"}));
        molecules.push_back({{{"N", 0, 0, 0},
                              {"H", 0.6, 0.6, 0.6},
                              {"H", -0.6, -0.6, 0.6},
                              {"H", -0.6, 0.6, -0.6},
                              {"H", 0.6, -0.6, -0.6}},
                             {method, "TotalCharge = 1"}});
    }
    molecules.push_back(
        {{{"S", 0, 0, 0}, {"H", 0, 0.96, 0.93}, {"H", 0, -0.96, 0.93}}, {"IncludeDOrbitalsForSecondRow = yes"}});
    return molecules;
}

// Property: trace of the density, (P/2)^2 = P/2, [F, P] = 0, and the energy of the log against plain loops. Set-up:
// limit 1e-6 kcal/mol. Idempotency is direct arithmetic; the energy is quadratic in the error of the density, so that
// the commutator is left at the root of 1.6e-9 at worst, times a constant; the log lags one iteration behind.
TEST(SolveWavefunction, IdentitiesAtConvergence) {
    for (const Molecule& molecule : SomeMolecules()) {
        const LoadedMolecule loaded(With(molecule, {Tight, ManyIterations}));
        SolveWavefunction();
        const std::size_t n = static_cast<std::size_t>(::Run.Basis.OrbitalCount);
        const std::vector<double> p = SquareOf(::Run.Field.TotalDensity), q = SquareOf(::Run.Field.HalfDensity);
        const std::vector<double> f = PlainFock(q, q);
        double trace = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            trace += p[i * n + i];
            for (std::size_t j = 0; j < n; ++j) {
                double square = 0.0, commutator = 0.0;
                for (std::size_t k = 0; k < n; ++k) {
                    square += q[i * n + k] * q[k * n + j];
                    commutator += f[i * n + k] * p[k * n + j] - p[i * n + k] * f[k * n + j];
                }
                ASSERT_NEAR(square, q[i * n + j], 1e-12);
                ASSERT_NEAR(commutator, 0.0, 1e-4);
                ASSERT_EQ(q[i * n + j], 0.5 * p[i * n + j]);
            }
        }
        EXPECT_NEAR(trace, 2.0 * ::Run.Basis.DoublyOccupiedLevels, 1e-12);
        EXPECT_EQ(2 * ::Run.Basis.DoublyOccupiedLevels, ::Run.Basis.ElectronCount);
        double charge = 0.0;
        for (int place = 0; place < ::Run.Molecule.SelectedAtomCount; ++place) {
            charge += static_cast<double>(::Run.Field.NetCharges[place]);
        }
        EXPECT_NEAR(charge, ::Run.Options.TotalCharge, 1e-5);  // 32-bit populations
        const std::vector<double> listed =
            NumbersAfter(loaded.Log(), "(kcal/mol)\n                     Total Energy           =", 1);
        ASSERT_EQ(listed.size(), 1u);
        EXPECT_NEAR(listed[0], TotalEnergy(), 2e-9);
    }
}

// Energies and charges don't feel a rotation, nor the order of the atoms. Both runs are converged to 1.6e-9 Hartree.
TEST(SolveWavefunction, RotationAndOrderOfAtoms) {
    for (const Molecule& molecule : SomeMolecules()) {
        const std::vector<double> expected = EnergyAndCharges(molecule);
        const std::vector<double> rotated = EnergyAndCharges(Rotated(molecule));
        Molecule reversed = molecule;
        std::reverse(reversed.Atoms.begin(), reversed.Atoms.end());
        const std::vector<double> other = EnergyAndCharges(reversed);
        EXPECT_NEAR(rotated[0], expected[0], 1e-7);
        EXPECT_NEAR(other[0], expected[0], 1e-7);
        for (std::size_t i = 1; i < expected.size(); ++i) {
            EXPECT_NEAR(rotated[i], expected[i], 1e-5);
            EXPECT_NEAR(other[expected.size() - i], expected[i], 1e-5);
        }
    }
}

// The three accelerations reach the same field.
TEST(SolveWavefunction, AccelerationDoesNotChangeTheOutcome) {
    const Molecule molecule = With(FormaldehydeMolecule(), {"SemiEmpiricalMethod = TNDO2"});
    EXPECT_NEAR(EnergyAndCharges(With(molecule, {"SCFAccelerateConvergence = yes"}))[0], EnergyAndCharges(molecule)[0],
                1e-8);
}

// The lines "Iteration = n Difference = d" of a log.
static std::vector<double> Differences(const std::string& log) {
    std::vector<double> differences;
    std::size_t at = 0;
    while ((at = log.find("Iteration = ", at)) != std::string::npos) {
        const std::vector<double> line = NumbersAfter(log.substr(at), "Iteration = ", 1);
        EXPECT_EQ(line[0], static_cast<double>(differences.size() + 1));
        differences.push_back(NumbersAfter(log.substr(at), "Difference =", 1)[0]);
        ++at;
    }
    return differences;
}

// Property: the count of progress lines is one behind, and the loop ends one iteration after the difference has fallen
// below the limit: level 4 lists a Fock matrix in each iteration, so that they can be counted.
TEST(SolveWavefunction, ProgressLagsByOneAndOneIterationFollows) {
    const LoadedMolecule loaded(With(WaterMolecule(), {"LogPrintLevel = 4"}));
    loaded.ClearLog();
    SolveWavefunction();
    const std::string log = loaded.Log();
    const std::vector<double> differences = Differences(log);
    ASSERT_GE(differences.size(), 3u);
    const int iterations = CountOf(log, "  Fock Matrix(a.u.)");
    EXPECT_EQ(iterations, static_cast<int>(differences.size()) + 2);
    for (std::size_t i = 0; i + 1 < differences.size(); ++i) {
        EXPECT_GE(differences[i], 0.01);
    }
    EXPECT_LT(differences.back(), 0.01);
    const std::size_t first = log.find("  Fock Matrix(a.u.)"), second = log.find("  Fock Matrix(a.u.)", first + 1);
    const std::size_t line = log.find("Iteration = 1 ");
    EXPECT_GT(line, second);  // the first iteration reports nothing
    EXPECT_LT(line, log.find("  Fock Matrix(a.u.)", second + 1));
}

// A field that isn't converged is reported as any other after SCFIterationLimit + 2 iterations, with one line before.
TEST(SolveWavefunction, IterationLimitEndsTheField) {
    for (const int limit : {-5, -1, 0, 1, 3, 6, 9}) {
        const LoadedMolecule loaded(
            With(WaterMolecule(), {"SCFConvergenceLimit = 0", "LogPrintLevel = 4",
                                   std::string("SCFIterationLimit = ").append(std::to_string(limit))}));
        loaded.ClearLog();
        SolveWavefunction();
        const std::string log = loaded.Log();
        const int expected = std::max(limit + 2, 1);
        EXPECT_EQ(CountOf(log, "  Fock Matrix(a.u.)"), expected) << limit;
        EXPECT_EQ(CountOf(log, "Iteration = "), std::max(expected - 2, 0)) << limit;
        EXPECT_EQ(CountOf(log, "Net Charges and Cartesian Coordinates"), 1);
        EXPECT_EQ(CountOf(log, "arning"), 0);
        EXPECT_EQ(CountOf(log, "CAUTION: field "), 1);
    }
}

// Fock iteration in plain loops, exact throughout and without any extrapolation, from the first iteration of a first or
// a later call.
static std::vector<double> PlainDensity(int iterations, bool firstCall) {
    const std::size_t n = static_cast<std::size_t>(::Run.Basis.OrbitalCount);
    std::vector<double> half(n * n, 0.0), values, vectors;
    for (std::size_t i = 0; i < n; ++i) {
        half[i * n + i] = 0.5;
    }
    for (int iteration = 1; iteration <= iterations; ++iteration) {
        std::vector<double> fock = PlainFock(half, half);
        if (iteration == 1 && firstCall) {
            fock = SquareOf(::Run.Field.CoreHamiltonian);
            for (std::size_t i = 0; i < n; ++i) {
                fock[i * n + i] = ::Run.Field.CoreDiagonal[i];
            }
        }
        JacobiEigen(fock, ::Run.Basis.OrbitalCount, &values, &vectors);
        half.assign(n * n, 0.0);
        for (std::size_t k = 0; k < n * n; ++k) {
            for (std::size_t m = 0; m < static_cast<std::size_t>(::Run.Basis.DoublyOccupiedLevels); ++m) {
                half[k] += vectors[m * n + k / n] * vectors[m * n + k % n];
            }
        }
    }
    return half;
}

// Property: with a limit of 6 or less every iteration is an exact one without extrapolation. Set-up: limits 0 to 6, no
// convergence, so that there are limit + 2 iterations. The reference is the bare iteration in plain loops; the errors
// of the two eigensolvers grow with the iterations. The first call starts from the orbitals' own energies, the second
// from the field of the unit density.
TEST(SolveWavefunction, NearTheEndNothingIsExtrapolated) {
    for (const int limit : {0, 3, 6}) {
        for (const char* acceleration : {"SCFAccelerateConvergence = no", "SCFAccelerateConvergence = yes"}) {
            const LoadedMolecule loaded(
                With(FormaldehydeMolecule(), {"SCFConvergenceLimit = 0", acceleration,
                                              std::string("SCFIterationLimit = ").append(std::to_string(limit))}));
            for (const bool firstCall : {true, false}) {
                SolveWavefunction();
                EXPECT_EQ(::Run.Field.ScfPassCounter, firstCall ? 0 : 1);
                const std::vector<double> expected = PlainDensity(limit + 2, firstCall);
                for (std::size_t k = 0; k < expected.size(); ++k) {
                    ASSERT_NEAR(::Run.Field.HalfDensity[k], expected[k], 1e-10) << limit << " " << firstCall;
                }
            }
        }
    }
}

// The same with a limit of 7 is no bare iteration any more: the first two are not near the end.
TEST(SolveWavefunction, FarFromTheEndTheDensityIsExtrapolated) {
    const LoadedMolecule loaded(With(FormaldehydeMolecule(), {"SCFConvergenceLimit = 0", "SCFIterationLimit = 8"}));
    SolveWavefunction();
    const std::vector<double> bare = PlainDensity(10, true);
    double largest = 0.0;
    for (std::size_t k = 0; k < bare.size(); ++k) {
        largest = std::max(largest, std::fabs(bare[k] - ::Run.Field.HalfDensity[k]));
    }
    EXPECT_GT(largest, 1e-9);
}

// What is kept on purpose shows in the first iteration alone: the second call of a run doesn't start as the first.
TEST(SolveWavefunction, SecondCallStartsFromTheUnitDensity) {
    const LoadedMolecule loaded(With(WaterMolecule(), {"LogPrintLevel = 4"}));
    for (const bool firstCall : {true, false}) {
        loaded.ClearLog();
        SolveWavefunction();
        const std::string log = loaded.Log();
        const std::size_t at = log.find("  Fock Matrix(a.u.)");
        const double listed = NumbersAfter(log.substr(at), "\n  S  O   1  ", 1)[0];
        const double unit = PlainFock({1, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0,
                                       0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1},
                                      std::vector<double>(36))[0];
        const double half = unit + 0.5 * ::Run.Field.GammaMatrix[0];
        EXPECT_NEAR(listed, firstCall ? ::Run.Field.CoreDiagonal[0] : half, 5.1e-6);
    }
}

// Strange systems end, with finite numbers: atoms at one place, 100 bohr apart and farther, all levels filled or none.
TEST(SolveWavefunction, StrangeSystemsEnd) {
    const std::vector<Molecule> strange = {HydrogenMolecule(0.0),
                                           HydrogenMolecule(1e-4),
                                           HydrogenMolecule(52.0),
                                           HydrogenMolecule(52.9177249),
                                           HydrogenMolecule(1e4),
                                           HydrogenMolecule(1e12),
                                           With(HydrogenMolecule(0.7), {"TotalCharge = 2"}),
                                           With(HydrogenMolecule(0.7), {"TotalCharge = -2"}),
                                           {{{"He", 0, 0, 0}}},
                                           {{{"Ne", 0, 0, 0}}},
                                           {{{"C", 0, 0, 0}, {"O", 0, 0, 0}}},
                                           {{{"C", 0, 0, 0}, {"O", 0, 0, 60.0}}},
                                           {{{"Lp", 0, 0, 0}, {"He", 0, 0, 1}}},
                                           {{{"C", 0, 0, 0}}}};
    for (const Molecule& molecule : strange) {
        for (const char* acceleration : {"SCFAccelerateConvergence = no", "SCFAccelerateConvergence = yes"}) {
            const LoadedMolecule loaded(With(molecule, {acceleration}));
            SolveWavefunction();
            EXPECT_EQ(CountOf(loaded.Log(), "nan") + CountOf(loaded.Log(), "inf"), 0) << loaded.Log();
            EXPECT_EQ(CountOf(loaded.Log(), "Net Charges and Cartesian Coordinates"), 1);
        }
    }
}
