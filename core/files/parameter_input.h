// SPDX-License-Identifier: MIT
// The grammar of nmrparam.in: keyed options in any order and three delimited blocks, the NMR selection, the quantum
// selection and the atoms.
#pragma once

#include <cstdio>

// Reads the open file (InputFilePath) into the options, AtomRecords, InputCoordinates, NMRAtomList and the selection
// states of Run, and closes it. Raises MoleculeTooLarge, UnreadableNmrAtomCount to NoCoordinates and UndefinedElement
// to NoNmrSelection, each with the file's path; draws warning UnknownOption for a line with "=" that is no option. A
// neighbour outside the system is left as -1.
void ReadParameterInput(std::FILE* file);

// Raises BadAtomRecord for the first atom with a neighbour outside the system: after all else that can be wrong with an
// input, since a wrong count of atoms or a wrong selection is the better explanation.
void CheckNeighbours();
