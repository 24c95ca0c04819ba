// SPDX-License-Identifier: MIT
// The angular part of integrals over two orbitals of one atom b of the field r_a/r_a^3 of a nucleus a, as lists made by
// the compiler: which multipoles of the product of the two orbitals make the field at a, with which factor.
#pragma once

// One multipole of a density about b: adds Factor times the radial field of multipole L to entry [Row][Column] and its
// mirror of table Table. Axial: the field along the pair axis, otherwise across it.
struct FieldTerm {
    double Factor;
    unsigned char Row;
    unsigned char Column;  // >= Row
    unsigned char Table;
    unsigned char L;
    bool Axial;
};

struct FieldTermList {
    int Count;
    FieldTerm Terms[900];
};

// Of mu nu r_b,i/r_b r_a,j/r_a^3: table 3 i + j. Symmetric in mu and nu.
extern const FieldTermList TensorTerms;

// Of <mu|L_a,k/r_a^3|nu> for orbitals of equal radial function: table k. Antisymmetric.
extern const FieldTermList MagneticTerms;
