// SPDX-License-Identifier: MIT
// What the charges of the atoms outside the selection do to the wavefunction.
#pragma once

inline constexpr int LastEnvironmentElement = 54;

// By element code, that of code c at c - 1.
extern const int PrincipalQuantumTable[LastEnvironmentElement];    // principal quantum number of the valence shell
extern const double ValenceElectronTable[LastEnvironmentElement];  // valence electrons

// Adds to the diagonal of coreHamiltonian [OrbitalCount][OrbitalCount], Hartree, the potential of the charges
// outside the selection, and sets Run.Field.EnvironmentEnergy to their energy with the cores. Raises nothing; polls.
void BuildEnvironmentTerms(double* coreHamiltonian);
