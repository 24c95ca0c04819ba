// SPDX-License-Identifier: MIT
// The numbers that a chemist reads of a wavefunction.
#pragma once

// Computes energies, populations and net charges (into AtomCharge) from OrbitalEnergies, TotalDensity, CoreRepulsion
// and the electronic energy (Hartree), and lists them in the log with the dipole moment.
void ReportWavefunction(double electronicEnergy);
