// SPDX-License-Identifier: MIT
// Coulomb repulsion of two spherical Slater charge clouds on two centres (Roothaan 1951).
#pragma once

// The repulsion, in Hartree, of two unit charges whose radial distributions are
//     (2 zeta)^(2n + 1)/(2n)! r^(2n) e^(-2 zeta r),
// distance bohr apart, zeta in 1/bohr. n1 is 1 to 3, n2 is n1 to 5, distance is above 0; each zeta goes with the
// n of the same number. Exactly 1/distance once distance (zeta1 + zeta2) reaches 100. The series of the auxiliary
// functions put the value up to 4e-6 off for distance |zeta1 - zeta2| from 0.5 to 1, and up to 1e-6 elsewhere
// below 3; in molecules it is a tenth of that. Polls: it may not return.
double TwoCentreCoulomb(int n1, int n2, double zeta1, double zeta2, double distance);
