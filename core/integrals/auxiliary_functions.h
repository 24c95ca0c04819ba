// SPDX-License-Identifier: MIT
// The one-dimensional integrals that every two-centre integral over Slater orbitals is a sum of, once it is
// written in the elliptical coordinates of the two centres (Mulliken, Rieke, Orloff and Orloff 1949; Barnett and
// Coulson 1951).
#pragma once

// Entries of a table A or B: indices 0 to 19.
inline constexpr int AuxiliaryTableSize = 20;
inline constexpr int LargestAuxiliaryOrder = AuxiliaryTableSize - 1;

// B(2i, 0) = 2/(2i + 1), stored with twelve digits on purpose: the stored values are the result, not the quotients.
extern const double EvenMomentTable[AuxiliaryTableSize / 2];

// Fills entries 0 to order of two tables of AuxiliaryTableSize and sets all others to 0:
//     A(n) = integral of t^n e^(-pt) for t from 1 to infinity; all 0 unless 1e-6 < |p| < 100
//     B(n) = integral of t^n e^(-qt) for t from -1 to 1;       all 0 if |q| >= 100
// An order outside 0 to 19 counts as 19. The order also chooses between recursion and series for B, so that a
// higher order can change the low entries, by up to 6e-6: results depend on the order that each caller asks for.
// The two tables must be distinct. Raises nothing.
void AuxiliaryIntegrals(double* tableA, double* tableB, double p, double q, int order);

// x to the power n by binary exponentiation; 0 for x = 0, on purpose for n = 0 too.
double PowerOf(double x, int n);
