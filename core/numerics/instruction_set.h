// SPDX-License-Identifier: MIT
// The sets of instructions that kernels are built for, and the choice among them: one for all kernels of the program.
#pragma once

// From the narrowest registers to the widest. Every processor of the platform has the first one.
enum InstructionSet {
    BaselineSet,
#if defined(__x86_64__)
    Avx2Set,    // 256-bit registers
    Avx512Set,  // 512-bit registers
#endif
    InstructionSetCount
};

// What users call a set.
const char* NameOf(InstructionSet set);

// Whether this processor can run what was built for the set.
bool ProcessorHas(InstructionSet set);

// The set in use: at first the widest that the processor has.
InstructionSet InstructionSetInUse();

// Uses that set, which the processor must have, from now on. For tests: results are the same with each.
void UseInstructionSet(InstructionSet set);
