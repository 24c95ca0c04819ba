// SPDX-License-Identifier: MIT
// Dipole moment of a wavefunction, in point-charge and hybridisation terms.
#pragma once

// Sets the origin of the dipole (bohr): the origin of the coordinates, or the centre of mass of an ion.
void ComputeReferencePoint();

// Bytes of the hybridisation factors, for the atoms of Run.
double DipoleFactorBytes();

// Sets the hybridisation factors of each atom of the selection from ActiveParameters. Raises OutOfMemory. (Pople, Segal
// 1966; Santry, Segal 1967 for the d orbitals.)
void PrepareDipoleFactors();

// Computes the dipole (Debye) from TotalDensity and the net charges and lists it; nothing for a single atom.
void ComputeDipole();
