// SPDX-License-Identifier: MIT
// From the atoms that were read to the atoms of the calculation: the selected ones, and capping atoms where the
// selection cuts a bond.
#pragma once

// Marks the capping atoms of the selection and counts SelectedAtomCount and CappingAtomCount. Raises MoleculeTooLarge.
void BuildCappingAtoms();

// Fills QuantumSelection: selected atoms first, capping atoms last, each in file order; counts their orbitals and adds
// the capping atoms to SelectedAtomCount. Raises MoleculeTooLarge.
void BuildSelectedAtomList();
