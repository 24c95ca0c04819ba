// SPDX-License-Identifier: MIT
// An atom with its Slater orbitals r^(Shell - 1) e^(-zeta r) times real harmonics, normalised: what all integrals of
// the shielding take.
#pragma once

#include "wavefunction/basis_data.h"

struct SlaterAtom {
    int Shell = 0;                     // valence shell, 1 to 3
    double Zeta[3] = {};               // exponents of s, p and d orbitals, 1/bohr
    int OrbitalCount = 0;              // 1, 4 or 9; 4 in shell 3 as well, for an atom without d orbitals
    const double* Position = nullptr;  // [3] bohr; not read by integrals in the frame of a pair
    OrbitalRange Range = {};           // in the density; not read by any integral
};
