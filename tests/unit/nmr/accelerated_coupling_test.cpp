// SPDX-License-Identifier: MIT
// Contact responses with ResponseAcceleration: against the plain iteration, against the whole matrix of the operator
// from two-electron integrals one by one, and where the wavefunction is unstable.
#include "molecule/selected_atoms.h"
#include "nmr/contact_coupling.h"
#include "tests/support/molecule_support.h"
#include "wavefunction/first_order_orbitals.h"
#include "wavefunction/response_operator.h"
#include "wavefunction/response_solver.h"
#include "wavefunction/solve_wavefunction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

static constexpr char Tndo1[] = "SemiEmpiricalMethod = TNDO1";
static constexpr char Tndo2[] = "SemiEmpiricalMethod = TNDO2";
static constexpr char NoShielding[] = "CalculateShielding = no";
static constexpr char Accelerated[] = "ResponseAcceleration = yes";
static constexpr char Swinging[] = "SCFAccelerateConvergence = yes";
static constexpr char ManyIterations[] = "SCFIterationLimit = 400";

static Molecule Coupled(const Molecule& molecule, const char* method) {
    return With(molecule, {method, NoShielding, Accelerated, Swinging, ManyIterations});
}

static std::vector<double> Responses() {
    const int count = ::Run.Molecule.NMRAtomCount * ::Run.Molecule.SelectedAtomCount;
    return {::Run.Coupling.CouplingMatrix, ::Run.Coupling.CouplingMatrix + count};
}

static std::size_t SOrbital(int place) {
    return static_cast<std::size_t>(::Run.Basis.OrbitalRanges[place].First - 1);
}

// Hydrogen molecules in a row, or a zigzag of evenly spaced atoms.
static Molecule HydrogenChain(int length, double bond, double spacing) {
    Molecule chain;
    for (int i = 0; i < length; ++i) {
        chain.Atoms.push_back({"H", 0.1 * (i % 3), 0.05 * (i % 5), (i / 2) * spacing + (i % 2) * bond});
    }
    return chain;
}

// The plain iteration with a limit so small that its own error plays no part.
static std::vector<double> PlainResponses() {
    const float limit = ::Run.Options.SCFConvergenceLimit;
    ::Run.Options.ResponseAcceleration = 0;
    ::Run.Options.SCFConvergenceLimit = 1e-9f;
    ComputeCouplingResponses();
    ::Run.Options.ResponseAcceleration = 1;
    ::Run.Options.SCFConvergenceLimit = limit;
    return Responses();
}

static void ExpectBothRoadsAgree(const Molecule& molecule) {
    const LoadedMolecule loaded(molecule);
    SolveWavefunction();
    const std::vector<double> plain = PlainResponses();
    loaded.ClearLog();
    ComputeCouplingResponses();
    const std::vector<double> accelerated = Responses();
    EXPECT_EQ(CountOf(loaded.Log(), "CAUTION"), 0) << loaded.Log();
    for (std::size_t k = 0; k < plain.size(); ++k) {
        EXPECT_NEAR(accelerated[k], plain[k], 1e-9) << k;
    }
    EXPECT_TRUE(std::any_of(plain.begin(), plain.end(), [](double value) { return std::fabs(value) > 1e-3; }));
}

// Property: both roads end at the same responses. Set-up: the default limits against a tight plain iteration; responses
// of 0.01 to 1.
TEST(AcceleratedCoupling, EqualsThePlainIteration) {
    const Molecule chloride = {{{"H", 0.1, 0, 0}, {"Cl", 0, 0.2, 1.27}}};
    for (const char* method : {Tndo1, Tndo2}) {
        for (const Molecule& molecule :
             {HydrogenMolecule(0.74), HeliumHydride(0.8), WaterMolecule(), MethaneMolecule(), FormaldehydeMolecule(),
              Rotated(FormaldehydeMolecule()), chloride, HydrogenChain(8, 0.6, 2.6)}) {
            ExpectBothRoadsAgree(Coupled(molecule, method));
        }
    }
    ExpectBothRoadsAgree(With(Coupled(chloride, Tndo1), {"IncludeDOrbitalsForSecondRow = yes"}));
}

// The same where only some atoms are perturbed, one of them twice, so that the values aren't quadratic forms of what is
// solved; and with more atoms than are solved at once.
TEST(AcceleratedCoupling, SelectionsAndBatches) {
    for (const std::vector<int>& atoms : {std::vector<int>{3}, {4, 1}, {2, 4, 2}}) {
        Molecule molecule = Coupled(FormaldehydeMolecule(), Tndo2);
        molecule.NMRAtoms = atoms;
        ExpectBothRoadsAgree(molecule);
    }
    ExpectBothRoadsAgree(Coupled(HydrogenChain(LargestBlock + 2, 0.6, 2.6), Tndo1));
}

static std::vector<double> LevelOf(std::size_t level) {
    const double* row = ::Run.Field.MolecularOrbitals + level * static_cast<std::size_t>(::Run.Basis.OrbitalCount);
    return {row, row + ::Run.Basis.OrbitalCount};
}

// The whole operator: gaps, and elements of what a spin density of each pair of levels adds to the field of its spin.
static std::vector<double> WholeOperator() {
    const std::size_t n = static_cast<std::size_t>(::Run.Basis.OrbitalCount);
    const std::size_t occupied = static_cast<std::size_t>(::Run.Basis.DoublyOccupiedLevels), empty = n - occupied;
    const std::vector<double> nothing(n * n, 0.0), core = PlainFock(nothing, nothing);
    std::vector<double> matrix;
    for (std::size_t column = 0; column < occupied * empty; ++column) {
        const std::vector<double> j = LevelOf(column / empty), b = LevelOf(occupied + column % empty);
        std::vector<double> alpha(n * n), beta(n * n);
        for (std::size_t k = 0; k < n * n; ++k) {
            alpha[k] = j[k / n] * b[k % n] + b[k / n] * j[k % n];
            beta[k] = -alpha[k];
        }
        const std::vector<double> field = PlainFock(alpha, beta);
        for (std::size_t row = 0; row < occupied * empty; ++row) {
            const std::size_t level = row / empty, other = occupied + row % empty;
            const std::vector<double> i = LevelOf(level), a = LevelOf(other);
            double element =
                row == column ? ::Run.Field.OrbitalEnergiesRaw[other] - ::Run.Field.OrbitalEnergiesRaw[level] : 0.0;
            for (std::size_t k = 0; k < n * n; ++k) {
                element += i[k / n] * (field[k] - core[k]) * a[k % n];
            }
            matrix.push_back(element);
        }
    }
    return matrix;
}

// Property: the operator is symmetric, and is the one that the integrals give. Set-up: its columns, from unit vectors
// side by side. Elements of 0.1 to 2 Hartree; the third of G1 has thirteen digits.
TEST(AcceleratedCoupling, OperatorIsSymmetric) {
    for (const char* method : {Tndo1, Tndo2}) {
        const LoadedMolecule loaded(Coupled(Rotated(FormaldehydeMolecule()), method));
        SolveWavefunction();
        const std::vector<double> whole = WholeOperator();
        ComputeCouplingResponses();  // prepares the operator; what it leaves isn't needed
        const std::size_t size = static_cast<std::size_t>(AmplitudeCount());
        const int n = ::Run.Basis.OrbitalCount, occupied = ::Run.Basis.DoublyOccupiedLevels;
        std::vector<double> columns(size * size, 0.0), gaps(size), products(size);
        std::vector<double> rows(size * static_cast<std::size_t>(n) * static_cast<std::size_t>(occupied));
        FillLevelGaps(gaps.data());
        for (std::size_t k = 0; k < size; ++k) {
            columns[k * (size + 1)] = 1.0;
        }
        ApplyExchange(ContactOperator(), columns.data(), static_cast<int>(size), rows.data());
        for (std::size_t k = 0; k < size; ++k) {
            columns[k * (size + 1)] += gaps[k];
            for (std::size_t l = 0; l < size; ++l) {
                EXPECT_NEAR(columns[k * size + l], whole[k * size + l], 1e-12) << k << " " << l;
            }
        }
        for (std::size_t k = 0; k < size * size; ++k) {
            EXPECT_NEAR(columns[k], columns[k % size * size + k / size], 1e-13) << k;
        }
    }
}

// Responses of all atoms at one another by the eigenvectors of the whole operator: with b the products of both levels
// in the s orbital, 2 times 2 b A^-1 (-b).
static std::vector<double> DenseResponses(const std::vector<double>& values, const std::vector<double>& vectors) {
    const std::size_t n = static_cast<std::size_t>(::Run.Basis.OrbitalCount);
    const std::size_t occupied = static_cast<std::size_t>(::Run.Basis.DoublyOccupiedLevels), empty = n - occupied;
    const std::size_t atoms = static_cast<std::size_t>(::Run.Molecule.SelectedAtomCount), size = values.size();
    std::vector<double> projections(atoms * size, 0.0), responses(atoms * atoms, 0.0);
    for (std::size_t k = 0; k < atoms * size * size; ++k) {
        const std::size_t atom = k / size / size, vector = k / size % size, pair = k % size;
        const std::size_t s = SOrbital(static_cast<int>(atom));
        projections[atom * size + vector] +=
            vectors[vector * size + pair] * LevelOf(pair / empty)[s] * LevelOf(occupied + pair % empty)[s];
    }
    for (std::size_t k = 0; k < atoms * atoms * size; ++k) {
        const std::size_t a = k / size / atoms, b = k / size % atoms, vector = k % size;
        responses[a * atoms + b] -=
            a == b ? 0.0 : 4.0 * projections[a * size + vector] * projections[b * size + vector] / values[vector];
    }
    return responses;
}

// Property: where the operator has a negative eigenvalue, the log names it, and the responses are those of the same
// equations. Set-up: stretched and crowded bonds, whose triplets lie below; the whole matrix by Jacobi rotations. Both
// methods have the same exchange where there is only hydrogen.
TEST(AcceleratedCoupling, UnstableWavefunctions) {
    const Molecule fluorine = {{{"F", 0, 0.1, 0}, {"F", 0.1, 0, 1.42}}};
    const Molecule ozone = {{{"O", 0, 1.08, -0.22}, {"O", 0, 0, 0.44}, {"O", 0, -1.08, -0.22}}};
    const Molecule square = {{{"H", 0.7, 0.75, 0.1}, {"H", 0.7, -0.7, 0}, {"H", -0.7, 0.7, 0}, {"H", -0.7, -0.7, 0}}};
    for (const Molecule& molecule :
         {Coupled(HydrogenMolecule(2.0), Tndo1), Coupled(fluorine, Tndo1), Coupled(fluorine, Tndo2),
          Coupled(ozone, Tndo2), Coupled(square, Tndo2), Coupled(HydrogenChain(8, 1.3, 2.6), Tndo1),
          Coupled({{{"N", 0, 0.1, 0}, {"N", 0.1, 0, 1.4}}}, Tndo2)}) {
        const LoadedMolecule loaded(molecule);
        SolveWavefunction();
        std::vector<double> values, vectors;
        const std::vector<double> whole = WholeOperator();
        JacobiEigen(whole, static_cast<int>(std::sqrt(static_cast<double>(whole.size())) + 0.5), &values, &vectors);
        loaded.ClearLog();
        ComputeCouplingResponses();
        const std::string log = loaded.Log();
        char line[100];
        std::snprintf(line, sizeof line,
                      "CAUTION: response unstable: the lowest eigenvalue of the contact operator is %.4g Hartree.\n",
                      values[0]);
        EXPECT_EQ(CountOf(log, "CAUTION"), values[0] < 0.0 ? 1 : 0) << log;
        EXPECT_EQ(CountOf(log, line), values[0] < 0.0 ? 1 : 0) << line << log;
        const std::vector<double> expected = DenseResponses(values, vectors), responses = Responses();
        for (std::size_t k = 0; k < expected.size(); ++k) {
            EXPECT_NEAR(responses[k], expected[k], 1e-9 * std::max(1.0, std::fabs(expected[k]))) << k;
        }
    }
}

// What the plain iteration gives without an iteration and with one alone, without a progress line.
TEST(AcceleratedCoupling, FewIterations) {
    const LoadedMolecule loaded(Coupled(FormaldehydeMolecule(), Tndo2));
    SolveWavefunction();
    for (const int limit : {-1, 0, 1}) {
        ::Run.Options.SCFIterationLimit = limit;
        const std::vector<double> plain = PlainResponses();
        loaded.ClearLog();
        ComputeCouplingResponses();
        const std::vector<double> accelerated = Responses();
        for (std::size_t k = 0; k < plain.size(); ++k) {
            EXPECT_NEAR(accelerated[k], plain[k], 1e-14) << limit << " " << k;
        }
        EXPECT_EQ(CountOf(loaded.Log(), "Perturbed"), 0);
        EXPECT_EQ(CountOf(loaded.Log(), "no difference was formed"), 4) << loaded.Log();
    }
}

// At every limit of iterations: the last line of each atom tells its difference, and there is a caution exactly if that
// is above the limit. The lines between are those of the atom that is farthest off.
TEST(AcceleratedCoupling, EveryIterationLimit) {
    const LoadedMolecule loaded(Coupled(FormaldehydeMolecule(), Tndo2));
    SolveWavefunction();
    int converged = 0;
    for (int limit = 2; limit <= 20; ++limit) {
        ::Run.Options.SCFIterationLimit = limit;
        loaded.ClearLog();
        ComputeCouplingResponses();
        const std::string log = loaded.Log();
        const int iterations = static_cast<int>(NumbersAfter(log.substr(log.rfind("Iter = ")), "Iter =", 1)[0]);
        EXPECT_LE(iterations, limit - 1);
        EXPECT_EQ(CountOf(log, "Perturbed atom"), iterations + 3) << log;
        int cautions = 0;
        for (int atom = 1; atom <= 4; ++atom) {
            const std::string label = std::string("Perturbed atom ").append(std::to_string(atom)).append(":  Iter = ");
            const std::string last = log.substr(log.rfind(label));
            EXPECT_EQ(NumbersAfter(last, label, 1)[0], iterations);
            cautions += NumbersAfter(last, "Diff =", 1)[0] > 3.2e-6 ? 1 : 0;
        }
        EXPECT_EQ(CountOf(log, "CAUTION: response to the contact perturbation of atom "), cautions) << log;
        converged += cautions == 0 ? 1 : 0;
        EXPECT_TRUE(cautions == 0 || iterations == limit - 1);
    }
    EXPECT_GT(converged, 3);
    EXPECT_LT(converged, 18);
}

// Responses that are 0: a lone pair, an NMR atom outside the selection, only filled levels, only empty ones.
TEST(AcceleratedCoupling, NothingToSolve) {
    Molecule pair = Coupled(WaterMolecule(), Tndo2);
    pair.Atoms.push_back({"Lp", 0, 0, 0.5});
    Molecule lonePair = pair;
    lonePair.NMRAtoms = {4};
    Molecule part = Coupled(WaterMolecule(), Tndo2);
    part.Atoms.push_back({"Ne", 0, 0, 5});
    part.NMRAtoms = {4};
    part.QuantumAtoms = {1, 2, 3};
    for (const Molecule& molecule : {lonePair, part, Coupled({{{"Ne", 0, 0, 0}}}, Tndo1),
                                     With(Coupled(HydrogenMolecule(0.74), Tndo1), {"TotalCharge = 2"})}) {
        const LoadedMolecule loaded(molecule);
        SolveWavefunction();
        loaded.ClearLog();
        ComputeCouplingResponses();
        EXPECT_EQ(CountOf(loaded.Log(), "CAUTION"), 0) << loaded.Log();
        for (const double response : Responses()) {
            EXPECT_EQ(response, 0.0);
        }
    }
    const LoadedMolecule loaded(pair);
    SolveWavefunction();
    ComputeCouplingResponses();
    EXPECT_NE(Responses()[1], 0.0);
    EXPECT_EQ(Responses()[3], 0.0);
    EXPECT_EQ(Responses()[12], 0.0);
}

// The sum of a run's memory has the work of the solver only where it is asked for: six blocks of a vector for each NMR
// atom at least, for so many atoms as are solved at once.
TEST(AcceleratedCoupling, MemoryIsCounted) {
    double before = 0.0;
    for (const int length : {2, 8, LargestBlock, LargestBlock + 2}) {
        const LoadedMolecule loaded(Coupled(HydrogenChain(length, 0.6, 2.6), Tndo1));
        const double amplitudes = 0.25 * length * length;
        EXPECT_EQ(AmplitudeCount(), static_cast<long long>(amplitudes));
        EXPECT_GT(ResponseWorkBytes(), 8.0 * 6.0 * std::min(length, LargestBlock) * amplitudes);
        EXPECT_GT(ResponseWorkBytes(), before);
        before = ResponseWorkBytes();
        ::Run.Options.ResponseAcceleration = 0;
        EXPECT_EQ(ResponseWorkBytes(), 0.0);
    }
}

// The options in the log tell of it only where it is switched on.
TEST(AcceleratedCoupling, LogTellsOfTheOption) {
    EXPECT_EQ(CountOf(LoadedMolecule(Coupled(WaterMolecule(), Tndo1)).Log(), "\nAccelerating the responses?  Yes\n"),
              1);
    EXPECT_EQ(CountOf(LoadedMolecule(WaterMolecule()).Log(), "Accelerating the responses"), 0);
}
