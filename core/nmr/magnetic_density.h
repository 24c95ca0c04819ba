// SPDX-License-Identifier: MIT
// Response of the wavefunction to a uniform magnetic field, with field-dependent orbitals (London 1937; Ditchfield
// 1974): the imaginary first-order densities that the paramagnetic terms contract.
#pragma once

// Fills MagneticDensities[0..2], for the field along x, y and z: real antisymmetric matrices that stand for the
// imaginary ones, of a field of 0.57735027 atomic units. Sets FinitePerturbation to 1. Spoils FirstScratch,
// SecondScratch, FockMatrix and HalfDensity. Raises OutOfMemory.
void ComputeMagneticDensities();
