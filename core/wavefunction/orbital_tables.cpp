// SPDX-License-Identifier: MIT
// Fills the tables by orbital.
#include "wavefunction/orbital_tables.h"

#include "ground/run_state.h"
#include "molecule/element_tables.h"
#include "molecule/selected_atoms.h"
#include "molecule/units.h"

static void FillOrbitals(const AtomRecord& atom, const OrbitalRange& range) {
    for (int orbital = range.First; orbital <= range.Last; ++orbital) {
        Run.Basis.OrbitalAtoms[orbital - 1] = atom.AtomIndex + 1;
        Run.Basis.OrbitalKinds[orbital - 1] = orbital - range.First + 1;
        Run.Basis.OrbitalPrincipalNumbers[orbital - 1] = ValenceShellTable[atom.AtomicNumber - 1];
    }
}

void PrepareOrbitalTables() {
    double isolated = 0.0;
    double heat = 0.0;
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const AtomRecord& atom = SelectedAtom(place);
        if (atom.AtomicNumber < 1) {
            continue;
        }
        const AtomTypeParameters& parameters = ParametersOf(atom);
        isolated +=
            Run.Options.SemiEmpiricalMethod == 1 ? parameters.IsolatedEnergyTndo1 : parameters.IsolatedEnergyTndo2;
        heat += parameters.AtomHeat;
        FillOrbitals(atom, Run.Basis.OrbitalRanges[place]);
    }
    Run.Basis.IsolatedEnergy = isolated * KcalPerElectronVolt;
    Run.Basis.HeatOffset = heat - Run.Basis.IsolatedEnergy;
}
