// SPDX-License-Identifier: MIT
// Tests of the response to a magnetic field: against the coupled equations in plain loops, symmetry, special systems,
// and the rules of the iteration that are kept on purpose.
#include "molecule/selected_atoms.h"
#include "nmr/magnetic_density.h"
#include "tests/support/molecule_support.h"
#include "wavefunction/solve_wavefunction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

static constexpr char Tndo1[] = "SemiEmpiricalMethod = TNDO1";
static constexpr char Tndo2[] = "SemiEmpiricalMethod = TNDO2";
static constexpr char Tight[] = "SCFConvergenceLimit = 1e-6";
static constexpr char ManyIterations[] = "SCFIterationLimit = 200";
static constexpr char NoCoupling[] = "CalculateCoupling = no";

static constexpr char Accelerated[] = "ResponseAcceleration = yes";

static const struct {
    const char* Method;
    const char* Acceleration;
} BothRoads[] = {{Tndo1, ""}, {Tndo2, ""}, {Tndo1, Accelerated}, {Tndo2, Accelerated}};

static Molecule Shielded(const Molecule& molecule, const char* method = Tndo1) {
    return With(molecule, {method, Tight, ManyIterations, NoCoupling});
}

static Molecule Moved(Molecule molecule, double x, double y, double z) {
    for (MoleculeAtom& atom : molecule.Atoms) {
        atom.X += x;
        atom.Y += y;
        atom.Z += z;
    }
    return molecule;
}

// The wavefunction of the shielding table.
static void Solve() {
    UseShieldingTable();
    SolveWavefunction();
}

static double Largest(const std::vector<double>& matrix) {
    double largest = 0.0;
    for (const double value : matrix) {
        largest = std::max(largest, std::fabs(value));
    }
    return largest;
}

// H' of a field along one axis as the last direction left it: the first scratch buffer.
static std::vector<double> HamiltonianAlongZ() {
    return SquareOf(::Run.Field.FirstScratch);
}

// The first-order density of an antisymmetric field, summed over both spins, by levels: i times it is the change of the
// sum of c(k) c*(l) over the occupied levels.
static std::vector<double> Response(const std::vector<double>& field, std::size_t n) {
    const double* c = ::Run.Field.MolecularOrbitals;
    const double* e = ::Run.Field.OrbitalEnergiesRaw;
    const std::size_t occupied = static_cast<std::size_t>(::Run.Basis.DoublyOccupiedLevels);
    std::vector<double> density(n * n, 0.0);
    for (std::size_t i = 0; i < occupied; ++i) {
        for (std::size_t v = occupied; v < n; ++v) {
            double w = 0.0;
            for (std::size_t k = 0; k < n * n; ++k) {
                w += c[v * n + k / n] * field[k] * c[i * n + k % n];
            }
            w *= 2.0 / (e[i] - e[v]);
            for (std::size_t k = 0; k < n * n; ++k) {
                density[k] += w * (c[v * n + k / n] * c[i * n + k % n] - c[i * n + k / n] * c[v * n + k % n]);
            }
        }
    }
    return density;
}

// The exchange weights of the methods, with the ten threes.
static std::vector<double> ExchangeWeights(std::size_t n) {
    std::vector<double> weights = SquareOf(::Run.Field.GammaMatrix);
    for (int place = 0; ::Run.Options.SemiEmpiricalMethod == 2 && place < ::Run.Molecule.SelectedAtomCount; ++place) {
        const OrbitalRange range = ::Run.Basis.OrbitalRanges[place];
        if (range.Last == range.First) {
            continue;
        }
        const AtomTypeParameters& parameters = ::Run.Parameters.ActiveParameters[SelectedAtom(place).AtomType];
        const std::size_t s = static_cast<std::size_t>(range.First - 1);
        for (std::size_t k = 0; k < 16; ++k) {
            double& weight = weights[(s + k / 4) * n + s + k % 4];
            weight -=
                k / 4 == 0 || k % 4 == 0 ? parameters.SlaterCondonG1 * 0.3333333333 : parameters.SlaterCondonF2 * 0.2;
        }
    }
    return weights;
}

// Property: the stored densities solve the coupled equations. Set-up: formaldehyde off every axis, both methods; H' is
// what the routine left (its elements have tests of their own), iterated 200 times by plain loops. The reference uses
// levels and exchange integrals straight from the theory, with exchange negative; stored is the transposed density.
// Tolerance: the iteration stops at a mean change of 1e-13 over N^2; 1e-9 of densities of 1e-2 leaves room for its
// contraction factor.
TEST(MagneticDensity, SolvesTheCoupledEquations) {
    for (const auto& [method, acceleration] : BothRoads) {
        const LoadedMolecule loaded(With(Shielded(FormaldehydeMolecule(), method), {acceleration}));
        Solve();
        ComputeMagneticDensities();
        const std::size_t n = static_cast<std::size_t>(::Run.Basis.OrbitalCount);
        const std::vector<double> hamiltonian = HamiltonianAlongZ();
        const std::vector<double> weights = ExchangeWeights(n);
        std::vector<double> density(n * n, 0.0);
        for (int iteration = 0; iteration < 200; ++iteration) {
            std::vector<double> field = hamiltonian;
            for (std::size_t k = 0; k < n * n; ++k) {
                field[k] -= 0.5 * weights[k] * density[k];
            }
            density = Response(field, n);
        }
        EXPECT_GT(Largest(density), 1e-3);
        for (std::size_t k = 0; k < n * n; ++k) {
            EXPECT_NEAR(::Run.Shielding.MagneticDensities[2][k], -density[k], 1e-9) << method << " " << k;
        }
    }
}

// The antisymmetric product of an occupied and an empty level, by its place among the pairs.
static std::vector<double> PairDensity(std::size_t pair) {
    const std::size_t n = static_cast<std::size_t>(::Run.Basis.OrbitalCount);
    const std::size_t occupied = static_cast<std::size_t>(::Run.Basis.DoublyOccupiedLevels);
    const double* i = ::Run.Field.MolecularOrbitals + pair / (n - occupied) * n;
    const double* a = ::Run.Field.MolecularOrbitals + (occupied + pair % (n - occupied)) * n;
    std::vector<double> density;
    for (std::size_t k = 0; k < n * n; ++k) {
        density.push_back(i[k / n] * a[k % n] - a[k / n] * i[k % n]);
    }
    return density;
}

static double Product(const std::vector<double>& a, const std::vector<double>& b) {
    return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

// Property: where the operator of the equations has a negative eigenvalue, the log names it, and the densities still
// solve the equations. Set-up: diimide with a stretched bond; the whole operator, gaps less the exchange of both spins,
// by Jacobi rotations. Both factors of a half come from products of antisymmetric matrices.
TEST(MagneticDensity, UnstableWavefunction) {
    for (const char* method : {Tndo1, Tndo2}) {
        const Molecule diimide = {{{"N", 0, 0, 0}, {"N", 0.1, 0, 1.7}, {"H", 0.9, 0.3, -0.4}, {"H", -0.7, 0.4, 2.2}}};
        const LoadedMolecule loaded(With(Shielded(diimide, method), {Accelerated, "SCFAccelerateConvergence = yes"}));
        Solve();
        loaded.ClearLog();
        ComputeMagneticDensities();
        const std::size_t n = static_cast<std::size_t>(::Run.Basis.OrbitalCount);
        const std::size_t occupied = static_cast<std::size_t>(::Run.Basis.DoublyOccupiedLevels);
        const std::size_t pairs = occupied * (n - occupied);
        const std::vector<double> weights = ExchangeWeights(n), hamiltonian = HamiltonianAlongZ();
        std::vector<double> whole, values, vectors, expected(n * n, 0.0);
        for (std::size_t k = 0; k < pairs * pairs; ++k) {
            std::vector<double> field = PairDensity(k / pairs);
            std::transform(field.begin(), field.end(), weights.begin(), field.begin(), std::multiplies<>());
            whole.push_back(-0.5 * Product(field, PairDensity(k % pairs)));
        }
        for (std::size_t k = 0; k < pairs; ++k) {
            whole[k * (pairs + 1)] += ::Run.Field.OrbitalEnergiesRaw[occupied + k % (n - occupied)] -
                                      ::Run.Field.OrbitalEnergiesRaw[k / (n - occupied)];
        }
        JacobiEigen(whole, static_cast<int>(pairs), &values, &vectors);
        char line[100];
        std::snprintf(line, sizeof line,
                      "CAUTION: response unstable: the lowest eigenvalue of the magnetic operator is %.4g Hartree.\n",
                      values[0]);
        EXPECT_LT(values[0], -0.01);
        EXPECT_EQ(CountOf(loaded.Log(), line), 1) << line << loaded.Log();
        EXPECT_EQ(CountOf(loaded.Log(), "CAUTION"), 1) << loaded.Log();
        for (std::size_t k = 0; k < pairs * pairs * pairs; ++k) {
            const std::size_t vector = k / pairs / pairs, left = k / pairs % pairs, right = k % pairs;
            const double share = vectors[vector * pairs + left] * vectors[vector * pairs + right] / values[vector];
            const double element = 0.5 * Product(hamiltonian, PairDensity(right));
            const std::vector<double> density = PairDensity(left);
            for (std::size_t m = 0; m < n * n; ++m) {
                expected[m] += 2.0 * share * element * density[m];
            }
        }
        EXPECT_GT(Largest(expected), 1e-3);
        for (std::size_t k = 0; k < n * n; ++k) {
            EXPECT_NEAR(::Run.Shielding.MagneticDensities[2][k], expected[k], 1e-9) << method << " " << k;
        }
    }
}

// Property: H' along z of water. Set-up: TNDO/1; the p block of oxygen by its table, a pair by sine and core element.
// Hand values: c h = 0.00364865 x 0.57735027. Tolerance: rounding of three products.
TEST(MagneticDensity, HamiltonianElements) {
    const LoadedMolecule loaded(Shielded(Moved(WaterMolecule(), 0.7, -0.4, 0.9)));
    Solve();
    ComputeMagneticDensities();
    const std::vector<double> h = HamiltonianAlongZ();
    const double c = 0.00364865 * 0.57735027;
    const std::size_t n = 6;
    EXPECT_DOUBLE_EQ(h[2 * n + 1], c);
    EXPECT_DOUBLE_EQ(h[1 * n + 2], -c);
    for (const std::size_t k : {0 * n + 1, 0 * n + 2, 0 * n + 3, 1 * n + 3, 2 * n + 3}) {
        EXPECT_EQ(h[k], 0.0);
    }
    const double* o = SelectedPosition(0);
    const double* p = SelectedPosition(1);
    const double sine = std::sin(c * (p[0] * o[1] - p[1] * o[0]));
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_NEAR(h[4 * n + k], sine * ::Run.Field.CoreHamiltonian[4 * n + k], 1e-16);
        EXPECT_EQ(h[k * n + 4], -h[4 * n + k]);
    }
}

// Antisymmetric to the last bit, of all directions.
TEST(MagneticDensity, Antisymmetric) {
    for (const auto& [method, acceleration] : BothRoads) {
        const LoadedMolecule loaded(With(Shielded(FormaldehydeMolecule(), method), {acceleration}));
        Solve();
        ComputeMagneticDensities();
        const long long n = ::Run.Basis.OrbitalCount;
        for (const double* density : ::Run.Shielding.MagneticDensities) {
            EXPECT_GT(Largest(SquareOf(density)), 1e-4);
            for (long long k = 0; k < n * n; ++k) {
                EXPECT_EQ(density[k], -density[k % n * n + k / n]);
            }
        }
    }
}

static Molecule HydrogenTriangle() {
    return {{{"H", 0.3, 0.1, 0.0}, {"H", 1.2, 0.2, 0.1}, {"H", 0.6, 0.9, -0.2}}, {"TotalCharge = 1"}};
}

// Atoms of one orbital have no angular momentum of their own: nothing in the one-centre blocks, sines between atoms.
TEST(MagneticDensity, HydrogenOnly) {
    const LoadedMolecule loaded(Shielded(HydrogenTriangle()));
    Solve();
    ComputeMagneticDensities();
    const std::vector<double> h = HamiltonianAlongZ();
    EXPECT_GT(Largest(h), 1e-6);
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_EQ(h[4 * k], 0.0);
        for (const double* density : ::Run.Shielding.MagneticDensities) {
            EXPECT_EQ(density[4 * k], 0.0);
        }
    }
    EXPECT_GT(Largest(SquareOf(::Run.Shielding.MagneticDensities[2])), 1e-6);
}

// Two hydrogens on a line through the origin: the vector product, H' and P' are 0, and so is the change from the second
// pass on.
TEST(MagneticDensity, LineThroughTheOrigin) {
    const LoadedMolecule loaded(Shielded({{{"H", 0.0, 0.0, -0.3}, {"H", 0.0, 0.0, 0.44}}}));
    Solve();
    loaded.ClearLog();
    ComputeMagneticDensities();
    EXPECT_EQ(Largest(HamiltonianAlongZ()), 0.0);
    for (const double* density : ::Run.Shielding.MagneticDensities) {
        EXPECT_EQ(Largest(SquareOf(density)), 0.0);
    }
    for (const char* name : {"x", "y", "z"}) {
        const std::string label = std::string("Perturbed ") + name + ":  Iter = ";
        EXPECT_EQ(CountOf(loaded.Log(), label), 2);
        EXPECT_EQ(CountOf(loaded.Log(), label + "1  Diff = 0.0000000000"), 1);
    }
}

// The scale that the input gives has no effect, to the bit, and is 1 afterwards.
TEST(MagneticDensity, FinitePerturbationHasNoEffect) {
    std::vector<double> plain;
    for (const char* option : {"FinitePerturbation = 1", "FinitePerturbation = 0.01", "FinitePerturbation = 0"}) {
        const LoadedMolecule loaded(With(Shielded(WaterMolecule()), {option}));
        Solve();
        ComputeMagneticDensities();
        EXPECT_EQ(::Run.Options.FinitePerturbation, 1.0);
        const std::vector<double> density = SquareOf(::Run.Shielding.MagneticDensities[0]);
        if (plain.empty()) {
            plain = density;
        }
        EXPECT_EQ(density, plain);
    }
}

// One pass: no progress line, and the density is the response to H' alone. The reference is the same sum over levels by
// plain loops, transposed; densities of 1e-2, rounding 1e-16 of it times the levels.
TEST(MagneticDensity, SinglePass) {
    const LoadedMolecule loaded(Shielded(FormaldehydeMolecule()));
    Solve();
    ::Run.Options.SCFIterationLimit = 1;
    loaded.ClearLog();
    ComputeMagneticDensities();
    EXPECT_EQ(CountOf(loaded.Log(), "Perturbed"), 0);
    const std::vector<double> density =
        Response(HamiltonianAlongZ(), static_cast<std::size_t>(::Run.Basis.OrbitalCount));
    for (std::size_t k = 0; k < density.size(); ++k) {
        EXPECT_NEAR(::Run.Shielding.MagneticDensities[2][k], -density[k], 1e-15);
    }
}

// No pass at all: the densities stay 0.
TEST(MagneticDensity, NoPass) {
    const LoadedMolecule loaded(Shielded(WaterMolecule()));
    Solve();
    ::Run.Options.SCFIterationLimit = 0;
    ComputeMagneticDensities();
    for (const double* density : ::Run.Shielding.MagneticDensities) {
        EXPECT_EQ(Largest(SquareOf(density)), 0.0);
    }
}

// However coarse the limit, three passes are made in each direction: two progress lines. A limit of 0 goes to the end.
TEST(MagneticDensity, ThreePassesAtLeast) {
    for (const bool coarse : {true, false}) {
        const LoadedMolecule loaded(Shielded(WaterMolecule()));
        Solve();
        ::Run.Options.SCFConvergenceLimit = coarse ? 1e9f : -1.0f;
        ::Run.Options.SCFIterationLimit = 9;
        loaded.ClearLog();
        ComputeMagneticDensities();
        for (const char* name : {"Perturbed x:", "Perturbed y:", "Perturbed z:"}) {
            EXPECT_EQ(CountOf(loaded.Log(), name), coarse ? 2 : 8);
        }
    }
}

// Property: the sine is that of the whole phase. Set-up: water where it is, and 50 Angstrom away. H' differs (each
// pair's phase has the position in it), the one-centre block doesn't, and the elements stay sines times core elements.
// The phase is about 0.2 there: sine and angle differ by 1e-3 relative, far above the tolerance of rounding.
TEST(MagneticDensity, SineOfTheWholePhase) {
    std::vector<double> plain;
    for (const double shift : {0.0, 50.0}) {
        const LoadedMolecule loaded(Shielded(Moved(WaterMolecule(), shift, 0.0, 0.0)));
        Solve();
        ComputeMagneticDensities();
        const std::vector<double> h = HamiltonianAlongZ();
        const double* o = SelectedPosition(0);
        const double* p = SelectedPosition(1);
        const double phase = 0.00364865 * 0.57735027 * (p[0] * o[1] - p[1] * o[0]);
        EXPECT_NEAR(h[4 * 6], std::sin(phase) * ::Run.Field.CoreHamiltonian[4 * 6], 1e-15);
        if (plain.empty()) {
            plain = h;
            continue;
        }
        EXPECT_EQ(h[2 * 6 + 1], plain[2 * 6 + 1]);
        EXPECT_GT(std::fabs(h[4 * 6] - plain[4 * 6]), 1e-3);
        EXPECT_GT(std::fabs((phase - std::sin(phase)) * ::Run.Field.CoreHamiltonian[4 * 6]), 1e-5);
    }
}

// Property: the one-centre response is independent of the position but for the sine. Set-up: water moved by 2 Angstrom.
// Within an atom P' doesn't carry the phase of a pair; the gauge part of H' is a commutator in first order. The next
// order of the sine is phase^3 / 6 with a phase below 0.02: 1e-6 of H', while P' is of order 1e-3.
TEST(MagneticDensity, MovingChangesLittle) {
    std::vector<double> plain;
    for (const double shift : {0.0, 2.0}) {
        const LoadedMolecule loaded(Shielded(Moved(WaterMolecule(), shift, -shift, shift)));
        Solve();
        ComputeMagneticDensities();
        std::vector<double> block;
        for (const double* density : ::Run.Shielding.MagneticDensities) {
            for (const std::size_t k : {1u, 2u, 3u, 8u, 9u, 15u}) {
                block.push_back(density[k]);
            }
        }
        if (plain.empty()) {
            plain = block;
        }
        for (std::size_t k = 0; k < block.size(); ++k) {
            EXPECT_NEAR(block[k], plain[k], 1e-5);
        }
    }
}
