// SPDX-License-Identifier: MIT
// Access to the atoms of the calculation by their place in SelectedAtomList, from 0.
#pragma once

#include "ground/run_state.h"

#include <cmath>

// Number of the atom in the system, from 1. A record without a line in the input doesn't know it.
inline int SelectedAtomNumber(int place) {
    return Run.Molecule.QuantumSelection.SelectedAtomList[place];
}

inline AtomRecord& SelectedAtom(int place) {
    return Run.Molecule.AtomRecords[SelectedAtomNumber(place) - 1];
}

// Parameters of an atom in the table in force.
inline const AtomTypeParameters& ParametersOf(const AtomRecord& atom) {
    return Run.Parameters.ActiveParameters[atom.AtomType];
}

// False for a lone pair.
inline bool HasOrbitals(int place) {
    return SelectedAtom(place).AtomicNumber >= 1;
}

// The row of the NMR atom at a place in NMRAtomList, its first one; -1 if it is none, or has no values.
inline int NMRRowOf(int place) {
    const int number = SelectedAtomNumber(place);
    for (int row = 0; HasOrbitals(place) && row < Run.Molecule.NMRAtomCount; ++row) {
        if (Run.Molecule.NMRAtomList[row] == number) {
            return row;
        }
    }
    return -1;
}

// x, y, z in bohr.
inline const double* SelectedPosition(int place) {
    return Run.Molecule.AtomCoordinates[SelectedAtomNumber(place) - 1].Position;
}

// Distance of two points, in their unit.
inline double Distance(const double* a, const double* b) {
    const double x = a[0] - b[0];
    const double y = a[1] - b[1];
    const double z = a[2] - b[2];
    return std::sqrt(x * x + y * y + z * z);
}

// Whether the selection leaves out atoms of the system.
inline bool HasEnvironment() {
    return Run.Molecule.SelectedAtomCount < Run.Molecule.AtomCount;
}
