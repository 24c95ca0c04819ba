// SPDX-License-Identifier: MIT
// Preparation of a parameter run: the orbital basis, the checks of the request and of its parameters, electrons and
// levels, coordinates in bohr.
#pragma once

// Runs once, before any integral. Draws warning 16384; raises what ValidateSystem raises, and 24576.
void PrepareSystem();

// Tests the request, the atoms, the parameters of each file that is going to be used and the electrons, in this order;
// lists the options and counts in the log; makes AtomCoordinates (bohr) of InputCoordinates. Raises 24640 to 24650,
// 24656, 24657, 24672 to 24678; draws warnings 16385 to 16388, 16400, 16401 and 16435.
void ValidateSystem();

// Counts electrons and levels of the selection, whose orbitals are OrbitalCount. Raises 24672 to 24678.
void CountElectrons();

// Tests the parameters of all atoms in one table, fileName in its messages. Raises 24656, 24657; draws 16386 to 16388,
// 16400 and 16401.
void CheckParameters(const struct AtomTypeParameters* table, const char* fileName);
