// SPDX-License-Identifier: MIT
// The overlap matrix of the valence orbitals, raw material of the resonance integrals (Pople and Beveridge 1970).
#pragma once

// Orbitals of one atom at most: s, three p, five d.
inline constexpr int OverlapBlockOrder = 9;

// Distance from which on no overlap is computed, bohr.
inline constexpr double FarOverlap = 100.0;

// Overlaps of the orbitals of two atoms, in the molecule's axes: rows for atom j, columns for atom i, in the
// order s, px, py, pz, dx2-y2, dxz, dz2, dyz, dxy.
struct OverlapBlock {
    double Value[OverlapBlockOrder][OverlapBlockOrder];
};

// Fills overlap [OrbitalCount][OrbitalCount], both triangles, with the overlaps of the orbitals of different
// atoms, from the selection, its coordinates in bohr and the parameters in force; orbitals of one atom are taken
// as orthonormal. Atoms 100 bohr apart or more, or less than 0.001, get the numbers of the pair before. Raises
// nothing; polls.
void BuildOverlapMatrix(double* overlap);

// Writes those rows and columns of block that the shells of the two atoms have. Element codes are 1 to 36,
// positions in bohr, exponents those of s, p and d in 1/bohr. At 100 bohr or more, and below 0.001, the block
// stays as it is, on purpose.
void DiatomicOverlapBlock(int codeI, int codeJ, const double* positionI, const double* positionJ,
                          const double* exponentsI, const double* exponentsJ, OverlapBlock* block);
