// SPDX-License-Identifier: MIT
// The atom-type and parameter files of a parameter run: names of atom types, and one set of parameters for shielding
// and one for coupling.
#pragma once

// Reads nmrtype.txt, nmr_shft.abp and nmr_cupl.abp of ParameterDirectory into AtomTypeCount, AtomTypeNames,
// ParameterFileShielding, ParameterFileCoupling and CouplingConstants of Run. Raises NoAtomTypes without types,
// ParameterFileNotOpened for a file that can't be opened, MoleculeTooLarge without memory. Damaged records give no
// message: reading stops, zeros follow.
void ReadParameterFiles();
