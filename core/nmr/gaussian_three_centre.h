// SPDX-License-Identifier: MIT
// Three-centre integrals with each Slater orbital replaced by six Gaussians, for triples where B or C is of shell 3.
#pragma once

#include "nmr/slater_atom.h"
#include "nmr/three_centre_tables.h"

// Fills the entries of the tables for atoms of any shell, 1 to 3.
void GaussianThreeCentre(const SlaterAtom& b, const SlaterAtom& c, const double* positionA, ThreeCentreTables& tables);
