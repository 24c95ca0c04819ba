// SPDX-License-Identifier: MIT
// The exact simulation of one part of a spin system: block-wise diagonalisation of the spin Hamiltonian of composite
// particles.
#pragma once

#include "spectrum/spin_part.h"

// Bytes that SimulatePart takes beside the list of lines.
double PartBytes(const SpinPart& part);

// Writes the lines of a part of the spin system of Run into SpectrumLines from lineCount on, each for all states of
// the spectators (spectrum/spectator_states.h); returns the number of lines then. Energies in Hz go to NoteLevels
// (spectrum/level_coincidences.h) if notesLevels. Raises OutOfMemory.
long long SimulatePart(const SpinPart& part, long long lineCount, bool notesLevels);
