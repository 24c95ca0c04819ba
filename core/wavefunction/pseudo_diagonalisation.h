// SPDX-License-Identifier: MIT
// An approximate decoupling of occupied and empty levels, cheaper than the eigensolver (Stewart, Csaszar, Pulay 1982).
#pragma once

// Rotates the rows of MolecularOrbitals against FockMatrix, with the energies of the last exact diagonalisation in
// OrbitalEnergiesRaw, which stay as they are. Spoils FirstScratch and SecondScratch.
void PseudoDiagonalise();
