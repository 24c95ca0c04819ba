// SPDX-License-Identifier: MIT
// The self-consistent field: closed-shell orbitals, energies and density for the parameter table in force.
#pragma once

// Rebuilds integrals and core Hamiltonian from the geometry and ActiveParameters, iterates, and reports. Leaves
// MolecularOrbitals, OrbitalEnergies, TotalDensity, HalfDensity, CoreHamiltonian and GammaMatrix in Run. A field that
// doesn't converge is reported as it stands. Raises OutOfMemory.
void SolveWavefunction();
