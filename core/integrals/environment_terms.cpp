// SPDX-License-Identifier: MIT
// Sums, for each atom of the calculation, the Coulomb terms of all charged atoms outside it.
#include "integrals/environment_terms.h"

#include "ground/message_poll.h"
#include "integrals/two_centre_coulomb.h"
#include "molecule/element_tables.h"
#include "molecule/selected_atoms.h"

#include <algorithm>
#include <cmath>

const int PrincipalQuantumTable[LastEnvironmentElement] = {1, 1, 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3, 3,
                                                           4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4,
                                                           5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5};

const double ValenceElectronTable[LastEnvironmentElement] = {
    1.0, 2.0, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0,  1.0,  2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0,
    1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0, 11.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0,
    1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0, 11.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0};

static constexpr double SmallestCharge = 1e-05;    // elementary charges; at or below it an atom has no effect
static constexpr double SmallestDistance = 1e-06;  // bohr, below it the inverse distance is capped
static constexpr double LargestInverse = 1000000.0;
static constexpr double NearDistance = 0.001;
static constexpr double FarDistance = 100.0;
static constexpr double RadiiOfOverlap = 6.0;  // mean radii within which clouds have their own shells

// The valence cloud of an atom.
struct ValenceCloud {
    int Shell;      // principal quantum number
    double Zeta;    // Slater exponent of its s orbital, 1/bohr
    double Radius;  // mean radius, bohr; 0 beyond the third shell
};

// The three sums over the environment of one atom.
struct EnvironmentSums {
    double Potential;  // shift of the atom's orbital energies, Hartree
    double Cores;      // of the environment's cores with a unit core
    double Electrons;  // of the environment's electrons with it
};

static ValenceCloud MakeCloud(int shell, double zeta) {
    static constexpr double RadiusFactor[] = {0.0, 1.5, 2.5, 3.5};
    const bool known = shell >= 1 && shell <= 3;
    return {shell, zeta, known ? RadiusFactor[shell] / zeta : 0.0};
}

static bool IsEnvironment(const AtomRecord& atom) {
    return atom.SelectionState > 0 && atom.AtomicNumber >= 1 &&
           std::fabs(static_cast<double>(atom.AtomCharge)) > SmallestCharge;
}

static double CloseRepulsion(const ValenceCloud& a, const ValenceCloud& b, double distance, double inverse) {
    if (b.Shell < 1 || b.Shell > 5) {
        return 0.0;
    }
    if (a.Shell < 1 || a.Shell > 3) {
        return inverse;
    }
    if (a.Shell <= b.Shell) {
        return TwoCentreCoulomb(a.Shell, b.Shell, a.Zeta, b.Zeta, distance);
    }
    return TwoCentreCoulomb(b.Shell, a.Shell, b.Zeta, a.Zeta, distance);
}

// Apart from each other two clouds count as 1s clouds, whatever their shells are, on purpose.
static double ValenceRepulsion(const ValenceCloud& a, const ValenceCloud& b, double distance, double inverse) {
    const double reach = RadiiOfOverlap * std::max(a.Radius, b.Radius);
    if (distance > NearDistance && reach > distance) {
        return CloseRepulsion(a, b, distance, inverse);
    }
    if (reach <= distance && distance < FarDistance) {
        return TwoCentreCoulomb(1, 1, a.Zeta, b.Zeta, distance);
    }
    return inverse;
}

static void AddEnvironmentAtom(const ValenceCloud& cloud, const double* position, int atom, EnvironmentSums* sums) {
    const AtomRecord& record = Run.Molecule.AtomRecords[atom];
    const double zeta = ParametersOf(record).SlaterExponentS;
    const ValenceCloud other = MakeCloud(PrincipalQuantumTable[record.AtomicNumber - 1], zeta);
    const double distance = Distance(position, Run.Molecule.AtomCoordinates[atom].Position);
    const double inverse = distance < SmallestDistance ? LargestInverse : 1.0 / distance;
    const double g = ValenceRepulsion(cloud, other, distance, inverse);
    const double charge = static_cast<double>(record.AtomCharge);
    const double electrons = ValenceElectronTable[record.AtomicNumber - 1];
    sums->Potential -= charge * g;
    sums->Cores += electrons * inverse;
    sums->Electrons -= (electrons - charge) * g;
}

void BuildEnvironmentTerms(double* coreHamiltonian) {
    Run.Field.EnvironmentEnergy = 0.0;
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const AtomRecord& atom = SelectedAtom(place);
        if (atom.AtomicNumber < 1) {
            continue;
        }
        const OrbitalRange& range = Run.Basis.OrbitalRanges[place];
        const ValenceCloud cloud =
            MakeCloud(Run.Basis.OrbitalPrincipalNumbers[range.First - 1], ParametersOf(atom).SlaterExponentS);
        EnvironmentSums sums = {0.0, 0.0, 0.0};
        for (int other = 0; other < Run.Molecule.AtomCount; ++other) {
            if (IsEnvironment(Run.Molecule.AtomRecords[other])) {
                AddEnvironmentAtom(cloud, SelectedPosition(place), other, &sums);
            }
        }
        PollMessages(Run.Molecule.AtomCount);
        Run.Field.EnvironmentEnergy += (sums.Electrons + sums.Cores) * CoreChargeTable[atom.AtomicNumber - 1];
        for (int orbital = range.First; orbital <= range.Last; ++orbital) {
            coreHamiltonian[(orbital - 1LL) * Run.Basis.OrbitalCount + (orbital - 1)] += sums.Potential;
        }
    }
}
