// SPDX-License-Identifier: MIT
// Closed integrals over the orbitals of one atom about its own nucleus, for shielding terms 1 and 3 (Slater orbitals).
#pragma once

#include "nmr/orbital_table.h"
#include "nmr/slater_atom.h"

// IsotropicFactor <mu|1/r|nu>: a diagonal table, ppm.
void OnAtomChargeTable(const SlaterAtom& atom, OrbitalTable& table);

// The tables M1 to M6 of the tensor: three of the diagonal directions, then xy, yz and xz. By element code: a code
// above 18, a capping atom, gives zeros.
void OnAtomTensorTables(int code, const SlaterAtom& atom, OrbitalTable (&tables)[6]);

// <nu|L_k/r^3|mu> times factor for moment direction k = 0, 1, 2, in the order of indices that term 3 contracts: T(c,
// r).
void OnAtomMomentTable(const SlaterAtom& atom, int k, double factor, OrbitalTable& table);
