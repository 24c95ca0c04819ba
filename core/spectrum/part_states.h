// SPDX-License-Identifier: MIT
// The product states of one SubMatrix of a part, sorted into blocks: the states in which each class of groups has one
// total projection. With a single class the blocks are the SubSubMatrices.
#pragma once

#include "spectrum/spin_part.h"

// Filled by BuildPartStates; n groups, M states, projections doubled. The number of a block is written in mixed radix:
// the digit of a class is the steps that its groups are below their highest projection, class 0 has the largest stride.
struct PartStateTables {
    int GroupCount;                      // n
    int GroupSpins[LargestGroupCount];   // [n] 2J of each group
    int StateStride[LargestGroupCount];  // [n] distance in the enumeration of two states that differ by one step
    int ClassStride[LargestGroupCount];  // [classes] distance of two blocks that differ by one step of a class
    int ClassRadix[LargestGroupCount];   // [classes] values that the digit takes
    int StateCount;                      // M
    int BlockCount;
    int LargestDimension;   // states of the largest block
    int* BlockStarts;       // [BlockCount + 1] place in Order of each block's first state
    long long* BlockSizes;  // [BlockCount] states of each block
    int* States;            // [M][n] 2M of each group as enumerated: the first group turns fastest, from +2J
    int* Order;             // [M] number of the state at each sorted place: by block, equals as enumerated
    int* PlaceOfState;      // [M] place of each state within its block
};

extern PartStateTables PartStates;

// Counts the blocks of a SubMatrix of the part, of the given 2J of each group. Raises OutOfMemory.
void CountPartBlocks(const SpinPart& part, const int* groupSpins);

// The same with the states. Raises OutOfMemory.
void BuildPartStates(const SpinPart& part, const int* groupSpins);

// Bytes of the tables of the SubMatrix that was counted last.
double PartStateBytes();

// Steps of a class in a block.
inline int StepsOfClass(int block, int c) {
    return block / PartStates.ClassStride[c] % PartStates.ClassRadix[c];
}
