// SPDX-License-Identifier: MIT
// The grammar of nmrspect.in: a fixed sequence of lines that fills the spin system.
#pragma once

#include <cstdio>

// Reads the open file (InputFilePath) into the spin system and the options of Run and closes it. Raises UnreadableLine
// with the number of the step that fails, NmrAtomCountNotPositive for a group count that isn't positive,
// SpectrometerFrequencyZero for a frequency of zero, MoleculeTooLarge without memory, UnreadableInput on a read error,
// and refuses a MinimalIntensity of 1e-08 or less.
void ReadSpectrumInput(std::FILE* file);
