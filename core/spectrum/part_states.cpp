// SPDX-License-Identifier: MIT
// Enumerates the product states of a SubMatrix and sorts them into blocks.
#include "spectrum/part_states.h"

#include "ground/message_poll.h"
#include "spectrum/table_memory.h"

#include <algorithm>

static constexpr int PollBlock = 4096;  // states between two polls

PartStateTables PartStates;

static void SetStrides(const SpinPart& part, const int* groupSpins) {
    PartStates.GroupCount = part.GroupCount;
    std::copy(groupSpins, groupSpins + part.GroupCount, PartStates.GroupSpins);
    std::fill(PartStates.ClassRadix, PartStates.ClassRadix + part.ClassCount, 1);
    PartStates.StateCount = 1;
    for (int i = 0; i < part.GroupCount; ++i) {
        PartStates.StateStride[i] = PartStates.StateCount;
        PartStates.StateCount *= groupSpins[i] + 1;
        PartStates.ClassRadix[part.Classes[i]] += groupSpins[i];
    }
    PartStates.BlockCount = 1;
    for (int c = part.ClassCount - 1; c >= 0; --c) {
        PartStates.ClassStride[c] = PartStates.BlockCount;
        PartStates.BlockCount *= PartStates.ClassRadix[c];
    }
}

void CountPartBlocks(const SpinPart& part, const int* groupSpins) {
    SetStrides(part, groupSpins);
    AllocateTable(PartStates.BlockStarts, PartStates.BlockCount + 1);
    AllocateTable(PartStates.BlockSizes, PartStates.BlockCount);
    std::fill(PartStates.BlockSizes, PartStates.BlockSizes + PartStates.BlockCount, 0);
    PartStates.BlockSizes[0] = 1;
    for (int i = 0; i < part.GroupCount; ++i) {
        const int c = part.Classes[i];
        FoldLadder(PartStates.BlockSizes, PartStates.BlockCount, PartStates.ClassStride[c], PartStates.ClassRadix[c],
                   groupSpins[i]);
        PollMessages(PartStates.BlockCount);
    }
    PartStates.LargestDimension = 0;
    PartStates.BlockStarts[0] = 0;
    for (int block = 0; block < PartStates.BlockCount; ++block) {
        const int dimension = static_cast<int>(PartStates.BlockSizes[block]);
        PartStates.LargestDimension = std::max(PartStates.LargestDimension, dimension);
        PartStates.BlockStarts[block + 1] = PartStates.BlockStarts[block] + dimension;
    }
}

double PartStateBytes() {
    const double states = static_cast<double>(sizeof(int)) * (PartStates.GroupCount + 2.0) * PartStates.StateCount;
    return states + static_cast<double>(sizeof(int) + sizeof(long long)) * (PartStates.BlockCount + 1.0);
}

// Lowers the state by the next step of the enumeration and returns the number of its block.
static int StepState(const SpinPart& part, int* state, int block) {
    for (int i = 0; i < part.GroupCount; ++i) {
        const int stride = PartStates.ClassStride[part.Classes[i]];
        state[i] -= 2;
        block += stride;
        if (state[i] >= -PartStates.GroupSpins[i]) {
            break;
        }
        block -= stride * (PartStates.GroupSpins[i] + 1);
        state[i] = PartStates.GroupSpins[i];
    }
    return block;
}

void BuildPartStates(const SpinPart& part, const int* groupSpins) {
    CountPartBlocks(part, groupSpins);
    const int n = part.GroupCount;
    AllocateTable(PartStates.States, static_cast<long long>(PartStates.StateCount) * n);
    AllocateTable(PartStates.Order, PartStates.StateCount);
    AllocateTable(PartStates.PlaceOfState, PartStates.StateCount);
    std::fill(PartStates.BlockSizes, PartStates.BlockSizes + PartStates.BlockCount, 0);
    int state[LargestGroupCount];
    std::copy(groupSpins, groupSpins + n, state);
    int block = 0;
    for (int number = 0; number < PartStates.StateCount; ++number) {
        std::copy(state, state + n, PartStates.States + static_cast<long long>(number) * n);
        const int place = static_cast<int>(PartStates.BlockSizes[block]++);
        PartStates.PlaceOfState[number] = place;
        PartStates.Order[PartStates.BlockStarts[block] + place] = number;
        block = StepState(part, state, block);
        if (number % PollBlock == 0) {
            PollMessages(PollBlock);
        }
    }
}
