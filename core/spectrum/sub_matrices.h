// SPDX-License-Identifier: MIT
// The block structure of an exact simulation. A choice of one total spin for each group gives a SubMatrix; its states
// of one total projection form a SubSubMatrix, the unit that is diagonalised.
#pragma once

// Filled by BuildSubMatrices; N is the number of groups; spins and projections are doubled.
struct SubMatrixTables {
    int SubMatrixCount;           // combinations of group spins
    int* GroupSpinTable;          // [SubMatrixCount][N] 2J of each group
    int* SubSubMatrixCounts;      // [SubMatrixCount] SubSubMatrices of each SubMatrix
    int* SubSubMatrixDimensions;  // [LargestSubSubCount][SubMatrixCount] dimension of the k-th SubSubMatrix of
                                  // SubMatrix s at row k, column s; not set beyond a SubMatrix's own count
    int* BasisStates;             // [LevelCount][N] 2M of each group in each product state, in the order of
                                  // enumeration inside each SubMatrix: the first group's 2M turns fastest, from +2J
    int* LevelOrder;              // [LevelCount] 1-based row in BasisStates of the state at each sorted place: inside
                                  // a SubMatrix by descending total projection, equals as enumerated
    long long* LevelCounts;       // [LargestSubSubCount + 1] places or counts by level, while the tables are built
    int LevelCount;               // product states of all SubMatrices
    int LargestSubSubDimension;   // of any SubSubMatrix
    int LargestSubSubCount;       // of any SubMatrix
};

extern SubMatrixTables SubMatrices;

// Builds the tables for groupCount groups of nucleiInGroup[] nuclei and writes the block table to the log. Ends the
// run for more than 32 groups; raises OutOfMemory for more than 62500000 states, or without memory for the tables and
// for what the caller is going to need beside them: workBytes tells it, once the counts and dimensions are there.
void BuildSubMatrices(int groupCount, const int* nucleiInGroup, double (*workBytes)());
