// SPDX-License-Identifier: MIT
// What the shielding terms don't depend on: directions in space, and the origin.
#include "tests/unit/nmr/shielding_calculation.h"

// Converged as far as the options allow, with all terms.
static Molecule Converged(const Molecule& molecule) {
    return With(molecule, {Tndo1, NoCoupling, ThreeCentre, "SCFConvergenceLimit = 1e-6", "SCFIterationLimit = 200"});
}

// Property: the totals of a turned molecule. Set-up: formaldehyde as a whole run, as it is and turned about a slanted
// axis through the origin. Space has no directions. Tolerance: the sine of the whole phase has a third order that
// depends on the components of the field; up to 1e-3 ppm with molecules of this size.
TEST(ShieldingTerms, TurnedMolecule) {
    std::vector<double> plain;
    for (const Molecule& molecule : {FormaldehydeMolecule(), Rotated(FormaldehydeMolecule())}) {
        const LoadedMolecule loaded(Converged(molecule));
        Calculate();
        for (std::size_t place = 0; place < 4; ++place) {
            if (plain.size() < 4) {
                plain.push_back(::Run.Shielding.ShieldingTotal[place]);
            } else {
                EXPECT_NEAR(::Run.Shielding.ShieldingTotal[place], plain[place], 1e-3);
            }
        }
    }
}

// Property: terms 6, 7, 9 and 10 together don't depend on the origin, which proves their relative signs: each alone
// moves. Set-up: formaldehyde as a whole run, moved by 2 Angstrom along each axis. Tolerance: the sine isn't linear,
// 1e-2 ppm.
TEST(ShieldingTerms, MovedMolecule) {
    std::vector<double> plain;
    double term6[2] = {};
    for (const double shift : {0.0, 2.0}) {
        Molecule molecule = FormaldehydeMolecule();
        for (MoleculeAtom& atom : molecule.Atoms) {
            atom.X += shift;
            atom.Y -= shift;
            atom.Z += shift;
        }
        const LoadedMolecule loaded(Converged(molecule));
        Calculate();
        term6[shift > 0.0] = Term(6, 0);
        for (std::size_t i = 0; i < 4; ++i) {
            const int place = static_cast<int>(i);
            const double sum = Term(6, place) + Term(7, place) + Term(9, place) + Term(10, place);
            if (plain.size() < 4) {
                plain.push_back(sum);
            } else {
                EXPECT_NEAR(sum, plain[i], 1e-2);
            }
        }
    }
    EXPECT_GT(std::fabs(term6[1] - term6[0]), 0.1);
}

// A turn about a slanted axis: rows are the turned axes.
static constexpr double Turn[3][3] = {
    {2.0 / 3.0, -1.0 / 3.0, 2.0 / 3.0}, {2.0 / 3.0, 2.0 / 3.0, -1.0 / 3.0}, {-1.0 / 3.0, 2.0 / 3.0, 2.0 / 3.0}};

// matrix := D matrix D', D turning the p orbitals of every atom and leaving s orbitals as they are.
static void TurnMatrix(double* matrix) {
    const int n = ::Run.Basis.OrbitalCount;
    std::vector<double> d(static_cast<std::size_t>(n * n), 0.0);
    for (int mu = 0; mu < n; ++mu) {
        for (int nu = 0; nu < n; ++nu) {
            const int p = ::Run.Basis.OrbitalKinds[mu] - 2;
            const int q = ::Run.Basis.OrbitalKinds[nu] - 2;
            const bool sameAtom = ::Run.Basis.OrbitalAtoms[mu] == ::Run.Basis.OrbitalAtoms[nu];
            d[static_cast<std::size_t>(mu * n + nu)] =
                sameAtom && p >= 0 && q >= 0 ? Turn[p][q] : (mu == nu ? 1.0 : 0.0);
        }
    }
    std::vector<double> turned(static_cast<std::size_t>(n * n), 0.0);
    for (int mu = 0; mu < n; ++mu) {
        for (int nu = 0; nu < n; ++nu) {
            for (int a = 0; a < n; ++a) {
                for (int b = 0; b < n; ++b) {
                    turned[static_cast<std::size_t>(mu * n + nu)] += d[static_cast<std::size_t>(mu * n + a)] *
                                                                     matrix[a * n + b] *
                                                                     d[static_cast<std::size_t>(nu * n + b)];
                }
            }
        }
    }
    std::copy(turned.begin(), turned.end(), matrix);
}

// The three densities of the field are the components of a vector as well.
static void TurnFieldDensities() {
    for (double* density : ::Run.Shielding.MagneticDensities) {
        TurnMatrix(density);
    }
    for (int at = 0; at < ::Run.Basis.OrbitalCount * ::Run.Basis.OrbitalCount; ++at) {
        const double old[3] = {::Run.Shielding.MagneticDensities[0][at], ::Run.Shielding.MagneticDensities[1][at],
                               ::Run.Shielding.MagneticDensities[2][at]};
        for (int k = 0; k < 3; ++k) {
            ::Run.Shielding.MagneticDensities[k][at] = Turn[k][0] * old[0] + Turn[k][1] * old[1] + Turn[k][2] * old[2];
        }
    }
}

static void TurnPositions() {
    for (int i = 0; i < ::Run.Molecule.AtomCount; ++i) {
        double* r = ::Run.Molecule.AtomCoordinates[i].Position;
        const double old[3] = {r[0], r[1], r[2]};
        for (int k = 0; k < 3; ++k) {
            r[k] = Turn[k][0] * old[0] + Turn[k][1] * old[1] + Turn[k][2] * old[2];
        }
    }
}

// Property: every single term is a scalar of the molecule and its densities. Set-up: formaldehyde; the molecule, its
// density and the vector of its field densities are turned together, with no new wavefunction. The terms are traces.
// Tolerance: all integrals are good to 1e-11, but the three-centre rule to 3e-7 in every frame alike: TermTolerance.
TEST(ShieldingTerms, TurnedWithItsDensities) {
    const LoadedMolecule loaded(With(Rotated(FormaldehydeMolecule()), {Tndo1, NoCoupling, ThreeCentre}));
    Calculate();
    std::vector<double> plain;
    for (int place = 0; place < 4; ++place) {
        for (int number = 1; number <= 10; ++number) {
            plain.push_back(Term(number, place));
        }
    }
    TurnPositions();
    TurnMatrix(::Run.Field.TotalDensity);
    TurnFieldDensities();
    FormTerms();
    for (int place = 0; place < 4; ++place) {
        for (int number = 1; number <= 10; ++number) {
            const double before = plain[static_cast<std::size_t>(10 * place + number - 1)];
            EXPECT_NEAR(Term(number, place), before, TermTolerance) << "term " << number << ", atom " << place + 1;
        }
    }
}
