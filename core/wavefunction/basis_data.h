// SPDX-License-Identifier: MIT
// The orbitals and electrons of a parameter run.
#pragma once

// The orbitals of one atom of SelectedAtomList, by 1-based numbers; an atom without orbitals has Last = First - 1.
struct OrbitalRange {
    int First;   // s
    int LastSP;  // last s or p orbital
    int Last;    // last orbital
};

// N = OrbitalCount. Counts and ranges are filled by wavefunction/prepare_system.cpp, the tables by orbital and the sums
// over atoms by wavefunction/orbital_tables.cpp from the parameter table in force.
struct BasisData {
    OrbitalRange* OrbitalRanges = nullptr;   // [SelectedAtomCount] by place in SelectedAtomList
    int OrbitalCount = 0;                    // orbitals of the calculation
    int ElectronCount = 0;                   // valence electrons
    int DoublyOccupiedLevels = 0;            // levels with two electrons
    int OccupiedLevels = 0;                  // levels with one or two
    int* OrbitalAtoms = nullptr;             // [N] 1-based atom number
    int* OrbitalKinds = nullptr;             // [N] 1 s; 2 to 4 px, py, pz; 5 to 9 dz2, dxz, dyz, dx2-y2, dxy
    int* OrbitalPrincipalNumbers = nullptr;  // [N] principal quantum number
    double IsolatedEnergy = 0;               // of the isolated atoms, kcal/mol
    double HeatOffset = 0;                   // heats of formation of the atoms less IsolatedEnergy, kcal/mol
};
