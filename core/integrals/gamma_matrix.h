// SPDX-License-Identifier: MIT
// The Coulomb integrals of the wavefunction: repulsion of the charge clouds of two orbitals, spherically
// averaged, so that s and p orbitals of an atom count as one cloud and its d orbitals as another (Pople and
// Beveridge 1970).
#pragma once

// Fills gamma [OrbitalCount][OrbitalCount], Hartree, both triangles, from the atoms of the selection, their orbital
// tables and the parameters in force. Two atoms at least 100 bohr apart, or at most 0.001, don't repel at all, on
// purpose. Raises nothing; polls.
void BuildGammaMatrix(double* gamma);

// The repulsion, in Hartree, of two clouds on one centre, with zeta in 1/bohr; 5/8 zeta for n1 = n2 = 1 and equal
// exponents (Roothaan 1951).
double OneCentreCoulomb(int n1, int n2, double zeta1, double zeta2);
