// SPDX-License-Identifier: MIT
// What both ways to the three-centre integrals fill.
#pragma once

#include "nmr/orbital_table.h"

// Row: orbital of B, column: orbital of C. Only the orbitals that the two atoms have are filled; the other entries stay
// what they are.
struct ThreeCentreTables {
    OrbitalTable Gauge;
    OrbitalTable ReverseGauge;
    OrbitalTable Magnetic[3];
};
