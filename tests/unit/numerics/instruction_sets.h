// SPDX-License-Identifier: MIT
// A loop over the instruction sets of this processor, for tests that expect the same bytes from each.
#pragma once

#include "numerics/instruction_set.h"

// Calls check(set) with each set in use in turn, the baseline first.
template <class Check> void WithEachInstructionSet(Check check) {
    const InstructionSet before = InstructionSetInUse();
    for (int i = 0; i < InstructionSetCount; ++i) {
        const InstructionSet set = static_cast<InstructionSet>(i);
        if (ProcessorHas(set)) {
            UseInstructionSet(set);
            check(set);
        }
    }
    UseInstructionSet(before);
}
