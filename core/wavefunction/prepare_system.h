// SPDX-License-Identifier: MIT
// Preparation of a parameter run: the orbital basis, the checks of the request and of its parameters, electrons and
// levels, coordinates in bohr.
#pragma once

// Runs once, before any integral. Draws warning SecondRowDOrbitalsIgnored; raises what ValidateSystem raises, and
// MoleculeTooLarge.
void PrepareSystem();

// Tests the request, the atoms, the parameters of each file that is going to be used and the electrons, in this order;
// lists the options and counts in the log; makes AtomCoordinates (bohr) of InputCoordinates. Raises TndoOnly to
// NoSuchCouplingAtom, AtomExponentNotPositive, CappingExponentNotPositive, NegativeElectronCount to
// TooManyOccupiedLevels; draws warnings RestraintsIgnored to AtomSlaterCondonNotPositive, CappingIonizationNotPositive,
// CappingBondingNotPositive and CouplingAtomNotSelected.
void ValidateSystem();

// Counts electrons and levels of the selection, whose orbitals are OrbitalCount. Raises NegativeElectronCount to
// TooManyOccupiedLevels.
void CountElectrons();

// Tests the parameters of all atoms in one table, fileName in its messages. Raises AtomExponentNotPositive,
// CappingExponentNotPositive; draws AtomIonizationNotPositive to AtomSlaterCondonNotPositive,
// CappingIonizationNotPositive and CappingBondingNotPositive.
void CheckParameters(const struct AtomTypeParameters* table, const char* fileName);
