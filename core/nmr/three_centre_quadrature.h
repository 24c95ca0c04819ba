// SPDX-License-Identifier: MIT
// Three-centre integrals over Slater orbitals of shells 1 and 2. Each exponential becomes a superposition of Gaussians
// (Shavitt and Karplus 1965); the product of two of them lies about P = u B + (1 - u) C, its scale is integrated in
// closed form to Bessel functions, and 14 nodes in u and 32 in t do the rest.
#pragma once

#include "nmr/slater_atom.h"
#include "nmr/three_centre_tables.h"

// Fills the entries of the tables for atoms of shell 1 or 2.
void QuadratureThreeCentre(const SlaterAtom& b, const SlaterAtom& c, const double* positionA,
                           ThreeCentreTables& tables);
