// SPDX-License-Identifier: MIT
// The ten terms of the shielding of every selected atom, by number of centres (Ditchfield 1974 in the ZDO setting).
// Without a log only those of the NMR atoms are computed, and the others stay 0.
#pragma once

// Zeroes terms and tensors and forms ShieldingExponents; must run first.
void StartShieldingTerms();

// Terms 1 and 2 from the total density: both orbitals on the nucleus's atom, or both on one other.
void ComputeDiamagneticOnAtomTerms();

// Terms 3 and 4 from the density of field direction j for moment direction k (0, 1, 2): the same of the paramagnetic
// part. Only j = k adds to the terms, every pair to the tensors.
void ComputeParamagneticOnAtomTerms(int j, int k);

// Terms 5, 6 and 7: one orbital on the nucleus's atom and one on another.
void ComputeBondTerms();

// Terms 8, 9 and 10: orbitals on two atoms beside the nucleus's own.
void ComputeThreeCentreTerms();

// ShieldingTotal from the terms; with threeCentre from all ten, else from terms 1 to 4.
void SumShieldingTerms(bool threeCentre);

// Adds the blocks of the tensors up in ShieldingTensor, and puts eigenvalues, isotropic value and anisotropy over the
// first five values of each atom's TensorDiamagneticTwoCentre.
void SolveShieldingTensors();
