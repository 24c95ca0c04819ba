// SPDX-License-Identifier: MIT
// The molecule of a parameter run and its selections.
#pragma once

// Neighbours that a record of an atom holds.
inline constexpr int LargestBondCount = 12;

// One atom of the system. Filled by ReadParameterInput; BuildCappingAtoms marks the capping atoms, ValidateSystem turns
// their AtomType to the capping half of the parameter tables.
struct AtomRecord {
    int AtomIndex;       // 0-based position in AtomRecords
    int AtomicNumber;    // element code: 0 lone pair, 1 and up by the periodic table, 18 + Z capping atom
    int AtomType;        // 0-based row of the parameter tables
    int MoleculeIndex;   // 0 before the first molecule line, then 1, 2, ...
    int SelectionState;  // 0 in the calculation, 1 not in it, -1 capping atom
    int BondCount;       // number of neighbours
    int BondedAtoms[LargestBondCount];  // 0-based indices of the neighbours, in any molecule
    float AtomCharge;                   // of an atom outside the selection, elementary charges; 0 for a selected one
};

struct AtomPosition {
    double Position[3];  // x, y, z, in the unit of the array
};

// Atoms and orbitals of the calculation, counted from 1. Filled by BuildSelectedAtomList.
struct QuantumSelectionData {
    int FirstAtom;          // 1
    int LastAtom;           // selected and capping atoms
    int FirstOrbital;       // 1
    int LastOrbital;        // their orbitals
    int* SelectedAtomList;  // [LastAtom] 1-based atom numbers: selected atoms, then capping atoms, in file order
};

// Filled by files/parameter_input.cpp and files/atom_selection.cpp.
struct MoleculeData {
    int AtomCount = 0;                           // atoms of the system
    AtomRecord* AtomRecords = nullptr;           // [AtomCount]
    AtomPosition* InputCoordinates = nullptr;    // [AtomCount] as read, Angstrom; ValidateSystem makes of them
    AtomPosition* AtomCoordinates = nullptr;     // [AtomCount] bohr
    int NMRAtomCount = 0;                        // entries of the NMR selection
    int* NMRAtomList = nullptr;                  // [NMRAtomCount] 1-based atom numbers
    int SelectedAtomCount = 0;                   // atoms of the calculation, capping atoms included once listed
    int CappingAtomCount = 0;                    // capping atoms among them
    QuantumSelectionData QuantumSelection = {};  // the lists of the calculation
};
