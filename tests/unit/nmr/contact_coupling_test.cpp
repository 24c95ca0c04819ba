// SPDX-License-Identifier: MIT
// Coupling by the contact response: against finite differences of an unrestricted field in plain loops, symmetry, and
// the rules of the iteration that are kept on purpose.
#include "molecule/selected_atoms.h"
#include "nmr/contact_coupling.h"
#include "nmr/coupling_table.h"
#include "tests/support/molecule_support.h"
#include "wavefunction/first_order_orbitals.h"
#include "wavefunction/solve_wavefunction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

static constexpr char Tndo1[] = "SemiEmpiricalMethod = TNDO1";
static constexpr char Tndo2[] = "SemiEmpiricalMethod = TNDO2";
static constexpr char Tight[] = "SCFConvergenceLimit = 1e-6";
static constexpr char ManyIterations[] = "SCFIterationLimit = 200";
static constexpr char NoShielding[] = "CalculateShielding = no";

static constexpr char Accelerated[] = "ResponseAcceleration = yes";

static const struct {
    const char* Method;
    const char* Acceleration;
} BothRoads[] = {{Tndo1, ""}, {Tndo2, ""}, {Tndo1, Accelerated}, {Tndo2, Accelerated}};

static std::string Limit(const char* key, int value) {
    return std::string(key).append(" = ").append(std::to_string(value));
}

static Molecule Coupled(const Molecule& molecule, const char* method) {
    return With(molecule, {method, Tight, ManyIterations, NoShielding});
}

static double Response(int row, int place) {
    return ::Run.Coupling.CouplingMatrix[row * ::Run.Molecule.SelectedAtomCount + place];
}

static std::size_t SOrbital(int place) {
    return static_cast<std::size_t>(::Run.Basis.OrbitalRanges[place].First - 1);
}

// One spin's density of the lowest levels of a field that a step h on one s orbital disturbs.
static std::vector<double> SpinDensity(std::vector<double> fock, std::size_t s, double h) {
    const std::size_t n = static_cast<std::size_t>(::Run.Basis.OrbitalCount);
    std::vector<double> values, vectors, density(n * n, 0.0);
    fock[s * (n + 1)] += h;
    JacobiEigen(fock, ::Run.Basis.OrbitalCount, &values, &vectors);
    for (std::size_t k = 0; k < n * n; ++k) {
        for (std::size_t m = 0; m < static_cast<std::size_t>(::Run.Basis.DoublyOccupiedLevels); ++m) {
            density[k] += vectors[m * n + k / n] * vectors[m * n + k % n];
        }
    }
    return density;
}

// Spin population of every orbital per Hartree: an unrestricted field with +h for one spin and -h for the other.
static std::vector<double> FiniteResponse(std::size_t s, double h) {
    const std::size_t n = static_cast<std::size_t>(::Run.Basis.OrbitalCount);
    std::vector<double> alpha = SquareOf(::Run.Field.HalfDensity), beta = alpha;
    double change = 1.0;
    for (int iteration = 0; iteration < 400 && change > 1e-14; ++iteration) {
        const std::vector<double> a = SpinDensity(PlainFock(alpha, beta), s, h);
        const std::vector<double> b = SpinDensity(PlainFock(beta, alpha), s, -h);
        change = 0.0;
        for (std::size_t k = 0; k < n * n; ++k) {
            change = std::max({change, std::fabs(a[k] - alpha[k]), std::fabs(b[k] - beta[k])});
        }
        alpha = a;
        beta = b;
    }
    EXPECT_LT(change, 1e-12);
    std::vector<double> spin;
    for (std::size_t k = 0; k < n; ++k) {
        spin.push_back((alpha[k * (n + 1)] - beta[k * (n + 1)]) / h);
    }
    return spin;
}

// Property: the response of every s orbital to a step on every other one. Set-up: steps of 1e-4 and 2e-4 Hartree, from
// which the cubic error is taken out. The reference has both spins, its own integrals and eigensolver, and no
// perturbation theory. Left over: the iteration (1e-14 / h = 1e-10), the limit of the response (1e-11 times N squared),
// the field of the run (its density is off by about the root of 1.6e-9, and with it the gaps): 2e-5.
TEST(ContactCoupling, EqualsTheFiniteDifference) {
    for (const Molecule& molecule : {MethaneMolecule(), WaterMolecule(), FormaldehydeMolecule(), HeliumHydride(0.8)}) {
        for (const auto& [method, acceleration] : BothRoads) {
            const LoadedMolecule loaded(With(Coupled(molecule, method), {acceleration}));
            SolveWavefunction();
            std::vector<std::vector<double>> finite;
            for (int place = 0; place < ::Run.Molecule.SelectedAtomCount; ++place) {
                const std::vector<double> one = FiniteResponse(SOrbital(place), 1e-4);
                const std::vector<double> two = FiniteResponse(SOrbital(place), 2e-4);
                finite.push_back(one);
                for (std::size_t k = 0; k < one.size(); ++k) {
                    finite.back()[k] = (4.0 * one[k] - two[k]) / 3.0;
                }
            }
            ComputeCouplingResponses();
            for (int a = 0; a < ::Run.Molecule.SelectedAtomCount; ++a) {
                for (int b = 0; b < ::Run.Molecule.SelectedAtomCount; ++b) {
                    const double expected = a == b ? 0.0 : finite[static_cast<std::size_t>(a)][SOrbital(b)];
                    EXPECT_NEAR(Response(a, b), expected, 2e-5) << method << " " << a << " " << b;
                }
            }
        }
    }
}

// Property: with one iteration the response is the uncoupled sum over states, 4 sum c c c c / (e - e), without a
// progress line. The reference is the sum in plain loops. Direct arithmetic.
TEST(ContactCoupling, OneIterationIsTheUncoupledSum) {
    for (const char* method : {Tndo1, Tndo2}) {
        const LoadedMolecule loaded(With(FormaldehydeMolecule(), {method, NoShielding}));
        SolveWavefunction();
        ::Run.Options.SCFIterationLimit = 1;
        loaded.ClearLog();
        ComputeCouplingResponses();
        EXPECT_EQ(CountOf(loaded.Log(), "Perturbed"), 0);
        const std::size_t n = static_cast<std::size_t>(::Run.Basis.OrbitalCount);
        const auto c = [&](std::size_t level, std::size_t orbital) {
            return ::Run.Field.MolecularOrbitals[level * n + orbital];
        };
        const std::size_t occupied = static_cast<std::size_t>(::Run.Basis.DoublyOccupiedLevels);
        for (int a = 0; a < 4; ++a) {
            for (int b = 0; b < 4; ++b) {
                double sum = 0.0;
                for (std::size_t i = 0; a != b && i < occupied; ++i) {
                    for (std::size_t v = occupied; v < n; ++v) {
                        sum += 4.0 * c(i, SOrbital(a)) * c(v, SOrbital(a)) * c(i, SOrbital(b)) * c(v, SOrbital(b)) /
                               (::Run.Field.OrbitalEnergiesRaw[i] - ::Run.Field.OrbitalEnergiesRaw[v]);
                    }
                }
                EXPECT_NEAR(Response(a, b), sum, 1e-14);
            }
        }
    }
}

// Property: the coupled response of two levels. By hand: P' = w (c0 c1' + c1 c0') has P'11 = -P'22 = w and P'12 = 0, F'
// is diagonal with 1 - g11 w and g11 w, so that w = (1 - 2 g11 w) / (2 d), d = e0 - e1, w = 1 / (2 d + 2 g11); the
// response is 2 P'22 = -2 w. Tolerance: a hundred times the limit of the iteration.
TEST(ContactCoupling, HydrogenMoleculeByHand) {
    for (const char* method : {Tndo1, Tndo2}) {
        const LoadedMolecule loaded(Coupled(HydrogenMolecule(0.74), method));
        SolveWavefunction();
        const double d = ::Run.Field.OrbitalEnergiesRaw[0] - ::Run.Field.OrbitalEnergiesRaw[1];
        const double w = 1.0 / (2.0 * d + 2.0 * ::Run.Field.GammaMatrix[0]);
        ComputeCouplingResponses();
        EXPECT_NEAR(Response(0, 1), -2.0 * w, 1e-9);
        EXPECT_NEAR(Response(1, 0), -2.0 * w, 1e-9);
        EXPECT_EQ(Response(0, 0), 0.0);
        EXPECT_EQ(Response(1, 1), 0.0);
    }
}

// A whole calculation of the couplings, as the driver does it.
static void ComputeCouplings() {
    SolveWavefunction();
    ComputeCouplingResponses();
    ConvertCouplingConstants(::Run.Field.FirstScratch);
}

// Property: methane: four equal 1J, twelve equal 2J, (A, B) equals (B, A). Set-up: exact tetrahedron along the
// diagonals. Limit: the responses are converged to 1e-11 N^2, times 900 Hz per unit; the field to the root of its
// limit: 0.01 Hz.
TEST(ContactCoupling, MethaneIsSymmetric) {
    for (const char* method : {Tndo1, Tndo2}) {
        const LoadedMolecule loaded(Coupled(MethaneMolecule(), method));
        ComputeCouplings();
        for (int a = 1; a < 5; ++a) {
            EXPECT_NEAR(Response(0, a), Response(0, 1), 0.01);
            EXPECT_NEAR(Response(a, 0), Response(0, 1), 0.01);
            for (int b = 1; b < 5; ++b) {
                EXPECT_NEAR(Response(a, b), a == b ? 0.0 : Response(1, 2), 0.01);
            }
        }
        EXPECT_GT(Response(0, 1), 50.0);
    }
    // published for this method and geometry: 122.92 and -6.13 Hz, with physical constants of its time
    const LoadedMolecule loaded(Coupled(MethaneMolecule(), Tndo2));
    ComputeCouplings();
    EXPECT_NEAR(Response(0, 1), 122.92, 0.1);
    EXPECT_NEAR(Response(1, 2), -6.13, 0.02);
}

// Separately computed values of a pair agree as far as the iteration has converged, and no farther with a coarse limit.
TEST(ContactCoupling, ExchangedPairsAgree) {
    for (const char* method : {Tndo1, Tndo2}) {
        const LoadedMolecule loaded(Coupled(FormaldehydeMolecule(), method));
        ComputeCouplings();
        for (int a = 0; a < 4; ++a) {
            for (int b = 0; b < a; ++b) {
                EXPECT_NEAR(Response(a, b), Response(b, a), 1e-3);
            }
        }
    }
}

// Couplings don't feel a rotation of the molecule.
TEST(ContactCoupling, Rotation) {
    std::vector<double> plain;
    for (const Molecule& molecule : {FormaldehydeMolecule(), Rotated(FormaldehydeMolecule())}) {
        const LoadedMolecule loaded(Coupled(molecule, Tndo2));
        ComputeCouplings();
        for (int k = 0; k < 16; ++k) {
            if (plain.size() < 16) {
                plain.push_back(::Run.Coupling.CouplingMatrix[k]);
            } else {
                EXPECT_NEAR(::Run.Coupling.CouplingMatrix[k], plain[static_cast<std::size_t>(k)], 0.01);
            }
        }
    }
}

// Fewer than one iteration leaves no response; a limit of 0 runs to the end.
TEST(ContactCoupling, IterationLimits) {
    for (const int limit : {-3, 0}) {
        const LoadedMolecule loaded(With(WaterMolecule(), {NoShielding, Limit("SCFIterationLimit", limit)}));
        ComputeCouplings();
        for (int k = 0; k < 9; ++k) {
            EXPECT_EQ(::Run.Coupling.CouplingMatrix[k], 0.0);
        }
    }
    const LoadedMolecule loaded(With(FormaldehydeMolecule(), {NoShielding}));
    SolveWavefunction();
    ::Run.Options.SCFIterationLimit = 7;
    ::Run.Options.SCFConvergenceLimit = 0.0f;
    loaded.ClearLog();
    ComputeCouplingResponses();
    EXPECT_EQ(CountOf(loaded.Log(), "Perturbed atom 1:"), 6);
    EXPECT_EQ(CountOf(loaded.Log(), "Perturbed atom 4:"), 6);
    EXPECT_EQ(loaded.Log().find("Perturbed atom 1:  Iter = 1  Diff = 0."), 0u);
}

// However coarse the limit is, three iterations are made: two progress lines.
TEST(ContactCoupling, ThreeIterationsAtLeast) {
    const LoadedMolecule loaded(With(WaterMolecule(), {NoShielding, "SCFConvergenceLimit = 1e9"}));
    SolveWavefunction();
    loaded.ClearLog();
    ComputeCouplingResponses();
    for (const char* atom : {"Perturbed atom 1:", "Perturbed atom 2:", "Perturbed atom 3:"}) {
        EXPECT_EQ(CountOf(loaded.Log(), atom), 2);
    }
}

// The divisor N squared stands outside the root, on purpose; iteration 0 gives 99.9. Hand values.
TEST(ContactCoupling, ChangeIsDividedByTheSquareOfN) {
    const LoadedMolecule loaded(HydrogenMolecule(0.74));
    std::vector<double> previous = {0, 0, 0, 0};
    const std::vector<double> density = {3, 0, 0, 4};
    EXPECT_EQ(MeasureDensityChange(density.data(), previous.data(), 0), 99.9);
    EXPECT_EQ(previous, density);
    previous = {0, 0, 0, 0};
    EXPECT_DOUBLE_EQ(MeasureDensityChange(density.data(), previous.data(), 1), 5.0 / 4.0);
    EXPECT_EQ(previous, density);
    EXPECT_EQ(MeasureDensityChange(density.data(), previous.data(), 2), 0.0);
}

// Property: K and J are products of the stored constants, in their order. Set-up: a given response. Exact.
TEST(ContactCoupling, StoredConstantsInOrder) {
    const LoadedMolecule loaded(With(WaterMolecule(), {NoShielding}));
    ComputeCouplings();
    const NuclearConstants o = ::Run.Parameters.CouplingConstants[SelectedAtom(0).AtomType];
    const NuclearConstants h = ::Run.Parameters.CouplingConstants[SelectedAtom(1).AtomType];
    for (int k = 0; k < 9; ++k) {
        ::Run.Coupling.CouplingMatrix[k] = 0.0123456789 * (k + 1);
    }
    ConvertCouplingConstants(::Run.Field.FirstScratch);
    const double t = 0.0123456789 * 2 * 1.2438805210547523e-8 * o.SDensity * h.SDensity * 5.069040731147547e29;
    EXPECT_EQ(::Run.Field.FirstScratch[1], t);
    EXPECT_EQ(::Run.Coupling.CouplingMatrix[1], (o.GFactor * h.GFactor) * t * 3.850008004857603e-21);
}

// An atom with s = 0 has K and J of 0, and the table lists it so.
TEST(ContactCoupling, NoDensityAtTheNucleus) {
    const LoadedMolecule loaded(With(WaterMolecule(), {NoShielding}));
    ::Run.Parameters.CouplingConstants[SelectedAtom(0).AtomType].SDensity = 0.0;
    ComputeCouplings();
    loaded.ClearLog();
    ListCouplingConstants(::Run.Field.FirstScratch);
    EXPECT_NE(loaded.Log().find("    1( O)     2( H)"), std::string::npos);
    EXPECT_EQ(CountOf(loaded.Log(), "  0.0000000e+00"), 4);
}

// Rows for NMR atoms, in their order; other atoms appear as partners only; no line for an atom with itself.
TEST(ContactCoupling, TableHasRowsForNMRAtoms) {
    Molecule molecule = With(WaterMolecule(), {NoShielding});
    molecule.NMRAtoms = {3, 1};
    const LoadedMolecule loaded(molecule);
    ComputeCouplings();
    loaded.ClearLog();
    ListCouplingConstants(::Run.Field.FirstScratch);
    const std::string log = loaded.Log();
    const std::vector<std::string> lines = {"    3( H)     1( O)", "    3( H)     2( H)", "    1( O)     2( H)",
                                            "    1( O)     3( H)"};
    std::size_t at = 0;
    for (const std::string& line : lines) {
        const std::size_t found = log.find("\n" + line, at);
        ASSERT_NE(found, std::string::npos) << log;
        at = found;
    }
    EXPECT_EQ(CountOf(log, "( H)") + CountOf(log, "( O)"), 8);
    EXPECT_NEAR(NumbersAfter(log.substr(log.find(lines[0])), "    3( H)     1( O)", 6)[5], Response(0, 0), 5.1e-5);
}

// A lone pair takes part in nothing: no line, and zeros in the matrix.
TEST(ContactCoupling, LonePairs) {
    Molecule molecule = With(WaterMolecule(), {NoShielding});
    molecule.Atoms.insert(molecule.Atoms.begin() + 1, {"Lp", 0.0, 0.0, -0.5});
    const LoadedMolecule loaded(molecule);
    ComputeCouplings();
    loaded.ClearLog();
    ListCouplingConstants(::Run.Field.FirstScratch);
    EXPECT_EQ(CountOf(loaded.Log(), "Lp"), 0);
    EXPECT_EQ(CountOf(loaded.Log(), "( H)") + CountOf(loaded.Log(), "( O)"), 12);
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(Response(1, k), 0.0);
        EXPECT_EQ(Response(k, 1), 0.0);
    }
    EXPECT_NE(Response(0, 2), 0.0);
}

// TNDO/1 has no such terms at all: G1 doesn't matter to it.
TEST(ContactCoupling, OneCentreExchangeIsForTndo2Only) {
    std::vector<double> outcomes;
    for (const char* method : {Tndo1, Tndo2}) {
        for (const double g : {0.0, 0.3}) {
            const LoadedMolecule loaded(With(WaterMolecule(), {method, NoShielding}));
            SolveWavefunction();
            ParametersAt(0).SlaterCondonG1 = g;
            ComputeCouplingResponses();
            outcomes.push_back(Response(0, 1));
        }
    }
    EXPECT_EQ(outcomes[0], outcomes[1]);
    EXPECT_GT(std::fabs(outcomes[2] - outcomes[3]), 1e-3);
}

// On purpose the third has thirteen threes here as well. Set-up: no gamma, no F2, a huge G1, two iterations: the
// response is then -G third L, with L from the bare response by plain loops in long double. The digits after the
// thirteenth make 1e-13 of it, the rounding of the products some 1e-15.
TEST(ContactCoupling, ThirteenThrees) {
    const double g = 1e20;
    const LoadedMolecule loaded(With(WaterMolecule(), {Tndo2, NoShielding}));
    SolveWavefunction();
    SetSquare(::Run.Field.GammaMatrix, std::vector<double>(36, 0.0));
    ParametersAt(0).SlaterCondonG1 = g;
    ParametersAt(0).SlaterCondonF2 = 0.0;
    const auto respond = [](const long double(&fock)[6][6], long double(&density)[6][6]) {
        const double* c = ::Run.Field.MolecularOrbitals;
        for (int k = 0; k < 36; ++k) {
            density[k / 6][k % 6] = 0.0L;
        }
        for (int pair = 0; pair < 8; ++pair) {
            const int i = pair % 4, v = 4 + pair / 4;
            long double w = 0.0L;
            for (int k = 0; k < 36; ++k) {
                w += static_cast<long double>(c[v * 6 + k / 6]) * fock[k / 6][k % 6] * c[i * 6 + k % 6];
            }
            w /= static_cast<long double>(::Run.Field.OrbitalEnergiesRaw[i]) - ::Run.Field.OrbitalEnergiesRaw[v];
            for (int k = 0; k < 36; ++k) {
                density[k / 6][k % 6] += w * (static_cast<long double>(c[i * 6 + k / 6]) * c[v * 6 + k % 6] +
                                              static_cast<long double>(c[v * 6 + k / 6]) * c[i * 6 + k % 6]);
            }
        }
    };
    long double fock[6][6] = {}, density[6][6];
    fock[0][0] = 1.0L;
    respond(fock, density);
    fock[0][0] = density[1][1] + density[2][2] + density[3][3];
    for (int p = 1; p < 4; ++p) {
        fock[0][p] = fock[p][0] = density[0][p];
        fock[p][p] = density[0][0];
    }
    respond(fock, density);
    ::Run.Options.SCFIterationLimit = 2;
    ComputeCouplingResponses();
    const double third = static_cast<double>(-Response(0, 1) / (2.0L * density[4][4]) / g);
    EXPECT_NEAR(third, 0.3333333333333, 8e-15);
}

// Hydrogen is skipped by the exchange whatever its parameters are.
TEST(ContactCoupling, HydrogenHasNoExchange) {
    std::vector<double> outcomes;
    for (const double g : {0.0, 5.0}) {
        const LoadedMolecule loaded(With(WaterMolecule(), {Tndo2, NoShielding}));
        SolveWavefunction();
        ParametersAt(1).SlaterCondonG1 = g;
        ParametersAt(1).SlaterCondonF2 = g;
        ComputeCouplingResponses();
        outcomes.push_back(Response(0, 1));
    }
    EXPECT_EQ(outcomes[0], outcomes[1]);
}

// Atoms at one place, far apart, full levels and none: finite numbers, and an end.
TEST(ContactCoupling, StrangeSystemsEnd) {
    for (const Molecule& molecule :
         {HydrogenMolecule(0.0), HydrogenMolecule(53.0), HydrogenMolecule(1e6),
          With(HydrogenMolecule(0.7), {"TotalCharge = 2"}), With(HydrogenMolecule(0.7), {"TotalCharge = -2"}),
          Molecule{{{"C", 0, 0, 0}, {"O", 0, 0, 0}}}, Molecule{{{"Ne", 0, 0, 0}}}, Molecule{{{"C", 0, 0, 0}}}}) {
        const LoadedMolecule loaded(With(molecule, {NoShielding}));
        ComputeCouplings();
        for (int k = 0; k < ::Run.Molecule.NMRAtomCount * ::Run.Molecule.SelectedAtomCount; ++k) {
            EXPECT_TRUE(std::isfinite(::Run.Coupling.CouplingMatrix[k]));
        }
    }
}
