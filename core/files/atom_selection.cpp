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
        AtomRecord& neighbour = Run.AtomRecords[atom.BondedAtoms[k]];
        if (neighbour.SelectionState == 1) {
            neighbour.AtomicNumber = -neighbour.AtomicNumber;
        }
    }
}

void BuildCappingAtoms() {
    Run.SelectedAtomCount = 0;
    Run.CappingAtomCount = 0;
    for (int i = 0; i < Run.AtomCount; ++i) {
        PollReading(RecordUnits);
        AtomRecord& atom = Run.AtomRecords[i];
        if (atom.SelectionState == 0) {
            ToggleNeighbours(atom);
            atom.AtomCharge = 0.0f;
            ++Run.SelectedAtomCount;
        }
    }
    for (int i = 0; i < Run.AtomCount; ++i) {
        PollReading(RecordUnits);
        AtomRecord& atom = Run.AtomRecords[i];
        if (atom.AtomicNumber < 0) {
            atom.SelectionState = -1;
            atom.AtomicNumber = LastElement - atom.AtomicNumber;
            ++Run.CappingAtomCount;
        }
    }
}

// Appends the numbers of the atoms of one state to the list, from place on; returns the next place.
static int AppendAtoms(int state, int place) {
    for (int i = 0; i < Run.AtomCount; ++i) {
        PollReading(RecordUnits);
        if (Run.AtomRecords[i].SelectionState == state) {
            Run.QuantumSelection.SelectedAtomList[place++] = i + 1;
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
    QuantumSelection& selection = Run.QuantumSelection;
    FreeArray(selection.SelectedAtomList);
    selection.SelectedAtomList =
        AllocateArray<int>(static_cast<long long>(Run.SelectedAtomCount) + Run.CappingAtomCount);
    if (selection.SelectedAtomList == nullptr) {
        FatalError(24576);
    }
    const int selected = AppendAtoms(0, 0);
    AppendAtoms(-1, selected);
    Run.OrbitalCount = 0;
    for (int i = 0; i < selected; ++i) {
        PollReading(RecordUnits);
        Run.OrbitalCount += OrbitalsOfElement(Run.AtomRecords[selection.SelectedAtomList[i] - 1].AtomicNumber);
    }
    --Run.LevelShiftStartIteration;  // from 0 to -1: the level shifter of the wavefunction stays off
    Run.SelectedAtomCount += Run.CappingAtomCount;
    Run.OrbitalCount += CappingOrbitals * Run.CappingAtomCount;
    selection.FirstAtom = 1;
    selection.LastAtom = Run.SelectedAtomCount;
    selection.FirstOrbital = 1;
    selection.LastOrbital = Run.OrbitalCount;
}
