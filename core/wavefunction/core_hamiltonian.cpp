// SPDX-License-Identifier: MIT
// Builds the core Hamiltonian from the overlap matrix, the parameters in force and the gamma matrix.
#include "wavefunction/core_hamiltonian.h"

#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "integrals/environment_terms.h"
#include "molecule/element_tables.h"
#include "molecule/selected_atoms.h"
#include "molecule/units.h"

#include <algorithm>

static constexpr double ResonanceFactor = -0.5 * HartreesPerElectronVolt;
static constexpr double SecondRowResonanceFactor = 0.75 * ResonanceFactor;
static constexpr double SmallestDistance = 0.001;  // bohr

static double* Diagonal = nullptr;  // [N] the diagonal of H while it is built

static double CoreCharge(const AtomRecord& atom) {
    return atom.AtomicNumber > 0 ? CoreChargeTable[atom.AtomicNumber - 1] : 0.0;
}

static void FillCoreDiagonal() {
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const OrbitalRange& range = Run.Basis.OrbitalRanges[place];
        if (range.Last < range.First) {
            continue;
        }
        const AtomTypeParameters& parameters = ParametersOf(SelectedAtom(place));
        double* diagonal = Run.Field.CoreDiagonal + range.First - 1;
        diagonal[0] = parameters.OrbitalEnergyS * HartreesPerElectronVolt;
        for (int k = 1; k <= range.LastSP - range.First; ++k) {
            diagonal[k] = parameters.OrbitalEnergyP * HartreesPerElectronVolt;
        }
        for (int k = range.LastSP + 1; k <= range.Last; ++k) {
            Run.Field.CoreDiagonal[k - 1] = parameters.OrbitalEnergyD * HartreesPerElectronVolt;
        }
    }
}

// The range ends at 19 on purpose: a capping hydrogen counts as a second-row atom, the other capping atoms don't.
static bool IsSecondRow(int code) {
    return code >= 11 && code <= 19;
}

// Multiplies the overlap of each pair of atoms into resonance integrals, in both triangles.
static void ScaleOverlap(double* h) {
    const int n = Run.Basis.OrbitalCount;
    for (int a = 0; a < Run.Molecule.SelectedAtomCount; ++a) {
        const AtomRecord& atomA = SelectedAtom(a);
        for (int b = 0; b < a; ++b) {
            const AtomRecord& atomB = SelectedAtom(b);
            const bool secondRow = IsSecondRow(atomA.AtomicNumber) || IsSecondRow(atomB.AtomicNumber);
            const double bonding = ParametersOf(atomA).BondingParameter + ParametersOf(atomB).BondingParameter;
            for (int mu = Run.Basis.OrbitalRanges[a].First - 1; mu < Run.Basis.OrbitalRanges[a].Last; ++mu) {
                for (int nu = Run.Basis.OrbitalRanges[b].First - 1; nu < Run.Basis.OrbitalRanges[b].Last; ++nu) {
                    const double resonance = h[static_cast<long long>(mu) * n + nu] * bonding *
                                             (secondRow ? SecondRowResonanceFactor : ResonanceFactor);
                    h[static_cast<long long>(mu) * n + nu] = resonance;
                    h[static_cast<long long>(nu) * n + mu] = resonance;
                }
            }
        }
        PollMessages(n);
    }
}

// The potential of the cores, through gamma of the first orbitals, for all orbitals of an atom alike.
static double Attraction(int a, const double* gamma) {
    const long long n = Run.Basis.OrbitalCount;
    const double* row = gamma + (Run.Basis.OrbitalRanges[a].First - 1) * n;
    double sum = 0.0;
    for (int b = 0; b < Run.Molecule.SelectedAtomCount; ++b) {
        const OrbitalRange& range = Run.Basis.OrbitalRanges[b];
        if (range.Last >= range.First) {
            sum += CoreCharge(SelectedAtom(b)) * row[range.First - 1];
        }
    }
    return 0.5 * row[Run.Basis.OrbitalRanges[a].First - 1] - sum;
}

// What TNDO/2 adds to the p orbitals of an atom of the first row.
static double OneCentreCorrectionP(int code, double charge, double g, double f) {
    if (code == 3) {
        return g * 0.08333333333333333;
    }
    if (code == 4) {
        return g * 0.25;
    }
    return (charge - 2.5) * f * 0.08 + g * 0.3333333333333333;
}

// One-centre corrections of TNDO/2, first row only: the exchange terms of the second row have, on purpose, no
// counterpart here. Helium comes under the rule as well, and having no p orbitals it corrects those that follow its
// own, on purpose: they belong to the next atom.
static void AddOneCentreCorrections() {
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const AtomRecord& atom = SelectedAtom(place);
        const int code = atom.AtomicNumber;
        if (code < 2 || code > 9) {
            continue;
        }
        const double g = ParametersOf(atom).SlaterCondonG1;
        const double f = ParametersOf(atom).SlaterCondonF2;
        const int s = Run.Basis.OrbitalRanges[place].First - 1;
        if (code >= 4) {
            Diagonal[s] += (CoreCharge(atom) - 1.5) * g * 0.16666666666666666;
        }
        const double correction = OneCentreCorrectionP(code, CoreCharge(atom), g, f);
        for (int p = s + 1; p <= s + 3 && p < Run.Basis.OrbitalCount; ++p) {
            Diagonal[p] += correction;
        }
    }
}

static void FillDiagonal(double* h, const double* gamma) {
    const int n = Run.Basis.OrbitalCount;
    if (!AllocateArray(Diagonal, n)) {
        FatalError(Message::OutOfMemory);
    }
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const OrbitalRange& range = Run.Basis.OrbitalRanges[place];
        if (range.Last >= range.First) {
            const double attraction = Attraction(place, gamma);
            for (int mu = range.First - 1; mu < range.Last; ++mu) {
                Diagonal[mu] = attraction + Run.Field.CoreDiagonal[mu];
            }
        }
        PollMessages(Run.Molecule.SelectedAtomCount);
    }
    if (Run.Options.SemiEmpiricalMethod == 2) {
        AddOneCentreCorrections();
    }
    for (int mu = 0; mu < n; ++mu) {
        h[static_cast<long long>(mu) * n + mu] = Diagonal[mu];
    }
    FreeArray(Diagonal);
}

static double SumCoreRepulsion() {
    double sum = 0.0;
    for (int a = 0; a < Run.Molecule.SelectedAtomCount; ++a) {
        for (int b = 0; b < a; ++b) {
            const double distance = Distance(SelectedPosition(a), SelectedPosition(b));
            if (distance < SmallestDistance) {
                continue;
            }
            sum += CoreCharge(SelectedAtom(a)) * CoreCharge(SelectedAtom(b)) / distance;
        }
        PollMessages(a);
    }
    return sum;
}

void BuildCoreHamiltonian(double* coreHamiltonian, const double* gamma) {
    FillCoreDiagonal();
    ScaleOverlap(coreHamiltonian);
    FillDiagonal(coreHamiltonian, gamma);
    Run.Field.CoreRepulsion = SumCoreRepulsion();
    if (HasEnvironment()) {
        BuildEnvironmentTerms(coreHamiltonian);
        Run.Field.CoreRepulsion += Run.Field.EnvironmentEnergy;
    }
}
