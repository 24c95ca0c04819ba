// SPDX-License-Identifier: MIT
// Whole runs as fuzz cases: from the command line through the message loop to the result file, in this process. The
// linker hands CalculateNmrParameters and TakeMessage to wrappers.
#pragma once

#include <cstddef>
#include <cstdint>

struct ProgramRun {
    int Kind;           // SpectrumRun or ParameterRun
    bool (*IsSmall)();  // asked behind the reader whether the calculation is made; may lower limits in Run
    int StopAtLook;     // the window is closed as the run looks at its messages for that time; 0 for no stop
    int Files;          // in the directory of the target, the output file with them
};

// Makes a run on the files of that directory, over an older output file, and looks at what it leaves.
void RunProgram(const ProgramRun& run);

// A last byte of 0xc0 or more asks for a stop: how many looks at the messages from the beginning; 0 for no stop.
int StopOfBytes(const std::uint8_t* data, std::size_t size);
