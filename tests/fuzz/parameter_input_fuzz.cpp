// SPDX-License-Identifier: MIT
// Fuzz target: reads the bytes as nmrparam.in, tests what the reader promises about a molecule, and goes on to the
// lists of atoms and to the checks, up to the wavefunction.
#include "files/atom_selection.h"
#include "files/parameter_files.h"
#include "files/parameter_input.h"
#include "ground/run_state.h"
#include "tests/fuzz/fuzz_case.h"
#include "wavefunction/prepare_system.h"

#include <cmath>

static const std::uint8_t* Data;
static std::size_t Size;

static void DemandWholeAtom(const AtomRecord& atom, const AtomPosition& position) {
    Demand(atom.AtomicNumber >= 0 && atom.AtomType >= 0, "an atom has an element and a type");
    Demand(atom.SelectionState == 0 || atom.SelectionState == 1, "an atom is selected or not");
    Demand(std::isfinite(atom.AtomCharge), "a charge is finite");
    for (const double coordinate : position.Position) {
        Demand(std::isfinite(coordinate), "a coordinate is finite");
    }
    Demand(atom.BondCount <= LargestBondCount, "an atom has few neighbours");
    for (int k = 0; k < atom.BondCount; ++k) {
        Demand(atom.BondedAtoms[k] >= 0 && atom.BondedAtoms[k] < Run.Molecule.AtomCount, "a neighbour is an atom");
    }
}

static void DemandWholeMolecule() {
    Demand(Run.Molecule.AtomCount > 0 && Run.Molecule.NMRAtomCount > 0, "there are atoms");
    for (int i = 0; i < Run.Molecule.AtomCount; ++i) {
        DemandWholeAtom(Run.Molecule.AtomRecords[i], Run.Molecule.InputCoordinates[i]);
    }
    for (int i = 0; i < Run.Molecule.NMRAtomCount; ++i) {
        Demand(Run.Molecule.NMRAtomList[i] >= 1 && Run.Molecule.NMRAtomList[i] <= Run.Molecule.AtomCount,
               "a selected nucleus is an atom");
    }
}

static void ReadAndPrepare() {
    StartRun(ParameterRun);
    ReadParameterFiles();
    ReadParameterInput(OpenBytes(Data, Size));
    CheckNeighbours();
    DemandWholeMolecule();
    BuildCappingAtoms();
    BuildSelectedAtomList();
    PrepareSystem();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool written = (WriteFixedParameterFiles(), true);
    Demand(written, "the parameter files are there");
    Data = data;
    Size = size;
    RunCase(ReadAndPrepare);
    return 0;
}
