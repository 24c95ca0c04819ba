// SPDX-License-Identifier: MIT
// Asks the processor what it has, once in a process.
#include "numerics/instruction_set.h"

static InstructionSet SetInUse = InstructionSetCount;  // none is chosen yet

const char* NameOf(InstructionSet set) {
    static constexpr const char* Names[] = {"baseline", "avx2", "avx512"};
    return Names[set];
}

bool ProcessorHas(InstructionSet set) {
#if defined(__x86_64__)
    if (set == Avx2Set) {
        return __builtin_cpu_supports("avx2");
    }
    if (set == Avx512Set) {
        return __builtin_cpu_supports("avx512f");
    }
#endif
    return set == BaselineSet;
}

InstructionSet InstructionSetInUse() {
    if (SetInUse == InstructionSetCount) {
        int widest = InstructionSetCount - 1;
        while (!ProcessorHas(static_cast<InstructionSet>(widest))) {
            --widest;
        }
        SetInUse = static_cast<InstructionSet>(widest);
    }
    return SetInUse;
}

void UseInstructionSet(InstructionSet set) {
    SetInUse = set;
}
