// SPDX-License-Identifier: MIT
// Three-centre integrals with each Slater orbital replaced by six Gaussians, for triples where B or C is of shell 3.
#pragma once

#include "nmr/three_centre_integrals.h"

// Fills the entries of the tables for atoms of any shell, 1 to 3.
void GaussianThreeCentre(const ThreeCentreAtom& b, const ThreeCentreAtom& c, const double* positionA,
                         ThreeCentreTables* tables);
