// SPDX-License-Identifier: MIT
// The block structure of an exact simulation. A choice of one total spin for each group gives a SubMatrix; its states
// of one total projection form a SubSubMatrix.
#pragma once

inline constexpr int LargestGroupCount = 32;  // that an exact simulation takes

// Filled by BuildSubMatrices for the whole system; N is the number of groups; spins are doubled.
struct SubMatrixTables {
    int SubMatrixCount;           // combinations of group spins
    int* GroupSpinTable;          // [SubMatrixCount][N] 2J of each group
    int* SubSubMatrixCounts;      // [SubMatrixCount] SubSubMatrices of each SubMatrix
    int* SubSubMatrixDimensions;  // [LargestSubSubCount][SubMatrixCount] dimension of the k-th SubSubMatrix of
                                  // SubMatrix s at row k, column s; not set beyond a SubMatrix's own count
    long long* LevelCounts;       // [LargestSubSubCount] states by level, while the tables are built
    int LevelCount;               // product states of all SubMatrices
    int LargestSubSubDimension;   // of any SubSubMatrix
    int LargestSubSubCount;       // of any SubMatrix
};

extern SubMatrixTables SubMatrices;

// Counts the blocks of groupCount groups of nucleiInGroup[] nuclei and writes the block table to the log. Ends the run
// for more than 32 groups; raises OutOfMemory for more than 62500000 states, or without memory for the tables.
void BuildSubMatrices(int groupCount, const int* nucleiInGroup);

// The combination of group spins after the one in groupSpins[groupCount], like an odometer: the last group turns
// fastest, each group runs n, n - 2, ... down to 1 or 0, from all at n. False after the last one.
bool NextGroupSpins(int* groupSpins, const int* nucleiInGroup, int groupCount);

// Product states of a combination of group spins.
int StateCount(const int* groupSpins, int groupCount);

// Counts of states by block, with a group of so many steps folded in. The number of a block is written in mixed radix:
// its digit of the given stride and radix is the steps below the top that the groups of one kind have made together.
void FoldLadder(long long* counts, int blockCount, int stride, int radix, int steps);
