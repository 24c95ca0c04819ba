// SPDX-License-Identifier: MIT
// The exact simulator. A spectrum is defined by the whole spin system, and comes from its connected parts.
#pragma once

#include "spectrum/spin_part.h"

// Reads the spin system of Run, fills SpectrumLines and SpectrumLineCount (frequencies in Hz). Raises NoNmrAtom without
// groups, OutOfMemory for too large a system, and refuses more than 32 groups.
void ComputeExactSpectrum();

// The same lines, not yet finished, from the whole system, whatever it costs; their number. For a prepared spin system
// whose SubMatrices are counted. Raises OutOfMemory.
long long SimulateWhole();

// The same from parts, whose levels go to NoteLevels (spectrum/level_coincidences.h) if notesLevels.
long long SimulateParts(const SpinPart* parts, int count, bool notesLevels);
