// SPDX-License-Identifier: MIT
// Two-centre integrals over Slater orbitals of the magnetic shielding of a nucleus a by one other atom b, as whole
// tables in the frame of the pair: a at the origin, b at (0, 0, R), x, y, z of all orbitals and operators being the
// axes of this frame. Distances in bohr, exponents in 1/bohr. L_a = r_a x nabla, real, without -i.
//
// All functions poll: they may not return. Each atom is taken with all orbitals of its shell, 1, 4 or 9, whose
// exponents must be above 0: for one of shell 3 without d orbitals that exponent is a stand-in.
#pragma once

#include "nmr/orbital_table.h"
#include "nmr/slater_atom.h"

// Number of orbitals of a shell: 1, 4 or 9; 0 for any other.
int PairOrbitalCount(int shell);

// All integrals between one orbital on each atom; every table is [row = bra][column = ket].
struct PairBondIntegrals {
    OrbitalTable Charge;    // [b][a]: IsotropicFactor <b|1/r_a|a>
    OrbitalTable Gauge;     // [a][b]: IsotropicFactor <a|(r_b . r_a)/r_a^3|b>
    OrbitalTable Bond[3];   // [b][a]: <b|L_a,k/r_a^3|a>, k = x, y, z
    OrbitalTable Cross[3];  // [a][b]: <a|L_a,k/r_a^3|b>; exactly 0 for an s orbital of a
};

// Fills all tables of the pair, entries without orbitals with 0. Quadrature, relative error below 1e-11 at bond
// distances; 0 throughout where the smallest exponent times R reaches 60 (overlap below 1e-20), or an exponent isn't
// above 0.
void BondPairIntegrals(const SlaterAtom& a, const SlaterAtom& b, double r, PairBondIntegrals& result);

// IsotropicFactor <mu_b|(r_b . r_a)/r_a^3|nu_b>. Shell 3 uses the s exponent for all orbitals, on purpose.
void OrbitalMomentIntegrals(const SlaterAtom& b, double r, OrbitalTable& table);

// Tables x, y, z of K <column_b|L_a/r_a^3|row_b>. Shell 2 uses the p exponent for all orbitals and shell 3 the s
// exponent, on purpose; shell 1 gives 0.
void PairMagneticIntegrals(const SlaterAtom& b, double r, double k, OrbitalTable (&tables)[3]);

// tables[3 i + j] := <mu_b|r_b,i r_a,j/r_a^3|nu_b>, each orbital with its own exponent.
void PairTensorIntegrals(const SlaterAtom& b, double r, OrbitalTable (&tables)[9]);
