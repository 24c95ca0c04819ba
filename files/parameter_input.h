// SPDX-License-Identifier: MIT
// The grammar of nmrparam.in: keyed options in any order and three delimited blocks, the NMR selection, the quantum
// selection and the atoms.
#pragma once

#include <cstdio>

// Reads the open file (InputFilePath) into the options, AtomRecords, AtomCoordinates, NMRAtomList and the selection
// states of Run, and closes it. Raises 24576, 24609 to 24625 and 24629 to 24631, each with the file's path; draws
// warning 16432 for a line with "=" that is no option.
void ReadParameterInput(std::FILE* file);

// Frees what the reader keeps of the selections until they are resolved.
void FreeSelectionEntries();
