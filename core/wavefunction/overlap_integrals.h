// SPDX-License-Identifier: MIT
// Overlap integrals of normalised real Slater orbitals on two atoms in their own frame (Mulliken, Rieke, Orloff
// and Orloff 1949). The z axes of the two atoms lie on the line between them and face each other, their x and y
// axes are parallel: so p sigma lobes that meet overlap positively.
#pragma once

// The integrals of one pair of atoms i and j: [l of i][l of j][m], with m 0 sigma, 1 pi, 2 delta.
struct LocalOverlaps {
    double Value[3][3][3];
};

// One end of a pair.
struct OverlapCentre {
    int Code;             // element code, 1 to 36
    int Shell;            // principal quantum number of s, p and d, 1 to 3
    double Exponents[3];  // Slater exponents of s, p and d, 1/bohr
};

// For codes up to 18: s and p orbitals; all other values become 0. The stored factors have nine digits, and with
// q half the distance times the difference of the exponents the series of the auxiliary functions take off up to
// 3e-7 for |q| up to 0.5, and up to 3e-6 from there to 1 if both shells are the third.
void OverlapClosedForm(const OverlapCentre& i, const OverlapCentre& j, double distance, LocalOverlaps* overlaps);

// For any code: s, p and d orbitals as far as the shells have them; a d exponent at or below 0.3 counts as 0.3.
// The auxiliary functions are those of order 19, whose series take off up to 4e-6 for |q| from 0.5 to 1, up to
// 4e-7 elsewhere below 3; the angular factors of d orbitals have six digits.
void OverlapGeneral(const OverlapCentre& i, const OverlapCentre& j, double distance, LocalOverlaps* overlaps);
