// SPDX-License-Identifier: MIT
// The numbers that a chemist reads of a wavefunction.
#pragma once

// NetCharges from TotalDensity and the core charges; a lone pair keeps its own (Mulliken 1955, without overlaps).
void ComputeNetCharges();

// Lists energies, populations, NetCharges and the dipole moment in the log, from OrbitalEnergies, TotalDensity,
// CoreRepulsion and the electronic energy (Hartree).
void ReportWavefunction(double electronicEnergy);
