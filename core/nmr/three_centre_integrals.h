// SPDX-License-Identifier: MIT
// Three-centre integrals of the magnetic shielding: orbitals on two atoms B and C, the nucleus on a third one, A. With
// r_X the electron's position from centre X:
//     gauge          <mu_b| (r_c . r_a) / r_a^3 |nu_c>, 1/bohr
//     reverse gauge  <nu_c| (r_b . r_a) / r_a^3 |mu_b>, 1/bohr
//     magnetic       <mu_b| (r_a x nabla)_k / r_a^3 |nu_c>, 1/bohr^3, for k = x, y, z
// Bare values in molecule axes. The magnetic integral changes its sign when bra and ket are exchanged, so one call
// serves both orders of B and C.
#pragma once

#include "nmr/slater_atom.h"
#include "nmr/three_centre_tables.h"

// Fills the tables for one triple: by quadrature if B and C are of shell 1 or 2, else by six Gaussians for each
// orbital. Polls once, so it may not return. The three positions must differ.
void ThreeCentreIntegrals(const SlaterAtom& b, const SlaterAtom& c, const double* positionA, ThreeCentreTables& tables);
