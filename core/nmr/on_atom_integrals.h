// SPDX-License-Identifier: MIT
// Closed integrals over the orbitals of one atom about its own nucleus, for shielding terms 1 and 3 (Slater orbitals).
#pragma once

#include "nmr/orbital_table.h"

// <mu|1/r|nu> times 17.75... of an atom of shell 1, 2 or 3 with exponents s, p, d (1/bohr): a diagonal table, ppm.
void OnAtomChargeTable(int shell, const double* exponents, OrbitalTable& table);

// The tables M1 to M6 of the tensor, tables[6]: three of the diagonal directions, then xy, yz and xz. By element code:
// a code above 18, a capping atom, gives zeros.
void OnAtomTensorTables(int code, const double* exponents, bool hasD, OrbitalTable* tables);

// <nu|L_k/r^3|mu> times factor for moment direction k = 0, 1, 2, in the order of indices that term 3 contracts: T(c,
// r).
void OnAtomMomentTable(int shell, const double* exponents, int k, double factor, OrbitalTable& table);
