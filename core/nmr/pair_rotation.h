// SPDX-License-Identifier: MIT
// From the frame of an atom pair to the axes of the molecule: tables of integrals over s, p and d orbitals.
//
// The z axis of the pair frame points from a to b, positions x, y, z in bohr; a and b must differ. Tables are those of
// pair_integrals.h; rows and columns are numbers of orbitals, 1, 4 or 9, and only these entries are changed or read.
#pragma once

#include "nmr/orbital_table.h"

// Row i of axes: the i-th axis of the pair frame in molecule components. Within 1e-6 bohr of the z axis the azimuth
// is 0.
void PairAxes(const double* a, const double* b, double (&axes)[3][3]);

// Orbital rotation R: orbital i of the pair frame = sum over j of R[i][j] orbital j of the molecule.
void PairOrbitalRotation(const double* a, const double* b, OrbitalTable& rotation);

// table := D' table D for orbitals that both sit on one atom. D is the rotation but for the element of dz2 and dx2-y2,
// which is (sqrt(3)/2) sin(theta) sin(phi) cos(2 phi), on purpose.
void RotatePairTable(const double* a, const double* b, OrbitalTable& table, int rows, int columns);

// out := component k (0, 1, 2 = x, y, z) in the molecule of a vector of tables, with both orbital indices rotated:
// R' (sum over i of axes[i][k] table i) R.
void RotatePairVector(const double* a, const double* b, int k, const OrbitalTable (&tables)[3], OrbitalTable& out,
                      int rows, int columns);

// table := R' table R for orbitals on two atoms.
void RotatePairScalars(const double* a, const double* b, OrbitalTable& table, int rows, int columns);

// Rotates only the two Cartesian indices of tables[3 i + j]; the orbitals stay those of the pair frame.
void RotatePairTensor(const double* a, const double* b, int rows, int columns, OrbitalTable (&tables)[9]);
