// SPDX-License-Identifier: MIT
// The grammar of nmrspect.in: a fixed sequence of lines that fills the spin system.
#pragma once

#include <cstdio>

// Reads the open file (InputFilePath) into the spin system and the options of Run and closes it. Raises 24626 with the
// number of the step that fails, 24610 for a group count that isn't positive, 24627 for a frequency of zero, 24576
// without memory, 24624 on a read error, and refuses a MinimalIntensity of 1e-08 or less.
void ReadSpectrumInput(std::FILE* file);
