// SPDX-License-Identifier: MIT
// Builds the lists of the atoms of a calculation.
#include "files/atom_selection.h"

#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "molecule/element_tables.h"

static constexpr int CappingOrbitals = 4;  // one s and three p, also on a capping hydrogen

// The negation is a toggle, on purpose: an atom between two selected ones is turned twice and closes no bond, one with
// three bonds into the selection does.
static void ToggleNeighbours(const AtomRecord& atom) {
    for (int k = 0; k < atom.BondCount; ++k) {
        AtomRecord& neighbour = Run.Molecule.AtomRecords[atom.BondedAtoms[k]];
        if (neighbour.SelectionState == 1) {
            neighbour.AtomicNumber = -neighbour.AtomicNumber;
        }
    }
}

void BuildCappingAtoms() {
    Run.Molecule.SelectedAtomCount = 0;
    Run.Molecule.CappingAtomCount = 0;
    for (int i = 0; i < Run.Molecule.AtomCount; ++i) {
        PollReading(RecordUnits);
        AtomRecord& atom = Run.Molecule.AtomRecords[i];
        if (atom.SelectionState == 0) {
            ToggleNeighbours(atom);
            atom.AtomCharge = 0.0f;
            ++Run.Molecule.SelectedAtomCount;
        }
    }
    for (int i = 0; i < Run.Molecule.AtomCount; ++i) {
        PollReading(RecordUnits);
        AtomRecord& atom = Run.Molecule.AtomRecords[i];
        if (atom.AtomicNumber < 0) {
            atom.SelectionState = -1;
            atom.AtomicNumber = LastElement - atom.AtomicNumber;
            ++Run.Molecule.CappingAtomCount;
        }
    }
}

// Appends the numbers of the atoms of one state to the list, from place on; returns the next place.
static int AppendAtoms(int state, int place) {
    for (int i = 0; i < Run.Molecule.AtomCount; ++i) {
        PollReading(RecordUnits);
        if (Run.Molecule.AtomRecords[i].SelectionState == state) {
            Run.Molecule.QuantumSelection.SelectedAtomList[place++] = i + 1;
        }
    }
    return place;
}

static int OrbitalsOfElement(int code) {
    if (code < 1) {
        return 0;  // a lone pair
    }
    return code <= 2 ? 1 : 4;
}

void BuildSelectedAtomList() {
    QuantumSelectionData& selection = Run.Molecule.QuantumSelection;
    if (!AllocateArray(selection.SelectedAtomList,
                       static_cast<long long>(Run.Molecule.SelectedAtomCount) + Run.Molecule.CappingAtomCount)) {
        FatalError(Message::MoleculeTooLarge);
    }
    const int selected = AppendAtoms(0, 0);
    AppendAtoms(-1, selected);
    Run.Basis.OrbitalCount = 0;
    for (int i = 0; i < selected; ++i) {
        PollReading(RecordUnits);
        Run.Basis.OrbitalCount +=
            OrbitalsOfElement(Run.Molecule.AtomRecords[selection.SelectedAtomList[i] - 1].AtomicNumber);
    }
    --Run.Field.LevelShiftStartIteration;  // from 0 to -1: the level shifter of the wavefunction stays off
    Run.Molecule.SelectedAtomCount += Run.Molecule.CappingAtomCount;
    Run.Basis.OrbitalCount += CappingOrbitals * Run.Molecule.CappingAtomCount;
    selection.FirstAtom = 1;
    selection.LastAtom = Run.Molecule.SelectedAtomCount;
    selection.FirstOrbital = 1;
    selection.LastOrbital = Run.Basis.OrbitalCount;
}
