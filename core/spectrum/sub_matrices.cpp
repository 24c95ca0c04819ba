// SPDX-License-Identifier: MIT
// Enumerates the total spins of a spin system and counts its blocks.
#include "spectrum/sub_matrices.h"

#include "ground/fatal_error.h"
#include "ground/log.h"
#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "spectrum/table_memory.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

static constexpr long long LargestStateCount = 62500000;
static constexpr int LargestTableRow = 20;  // dimensions that a line of the block table holds

SubMatrixTables SubMatrices;

// Refuses what is too large before anything grows with it. The SubMatrix of the highest spins is the largest, so that
// the limit on each SubMatrix is tested on it alone; the limit on the total doesn't count the last SubMatrix.
static void CheckGroups(int groupCount, const int* nucleiInGroup) {
    if (groupCount > LargestGroupCount) {
        WriteFatalFile("There are too many nuclei.  Please switch to using Week Coupling Approximation, if possible.");
    }
    long long states = 1;
    for (int g = 0; g < groupCount; ++g) {
        states *= nucleiInGroup[g] + 1;
        if (states > LargestStateCount) {
            FatalError(Message::OutOfMemory);
        }
    }
}

bool NextGroupSpins(int* groupSpins, const int* nucleiInGroup, int groupCount) {
    for (int g = groupCount - 1; g >= 0; --g) {
        groupSpins[g] -= 2;
        if (groupSpins[g] >= 0) {
            return true;
        }
        groupSpins[g] = nucleiInGroup[g];
    }
    return false;
}

static void FillGroupSpinTable(int groupCount, const int* nucleiInGroup) {
    SubMatrices.SubMatrixCount = 1;
    for (int g = 0; g < groupCount; ++g) {
        SubMatrices.SubMatrixCount *= (nucleiInGroup[g] + 2) / 2;
    }
    const long long entries = static_cast<long long>(SubMatrices.SubMatrixCount) * groupCount;
    AllocateTable(SubMatrices.GroupSpinTable, entries);
    int* row = SubMatrices.GroupSpinTable;
    std::copy(nucleiInGroup, nucleiInGroup + groupCount, row);
    for (int s = 1; s < SubMatrices.SubMatrixCount; ++s) {
        std::copy(row, row + groupCount, row + groupCount);
        row += groupCount;
        NextGroupSpins(row, nucleiInGroup, groupCount);
        PollMessages(1);
    }
}

int StateCount(const int* groupSpins, int groupCount) {
    int states = 1;
    for (int g = 0; g < groupCount; ++g) {
        states *= groupSpins[g] + 1;
    }
    return states;
}

static void CountStates(int groupCount) {
    long long total = 0;
    SubMatrices.LargestSubSubCount = 1;
    for (int s = 0; s < SubMatrices.SubMatrixCount; ++s) {
        if (total > LargestStateCount) {
            FatalError(Message::OutOfMemory);
        }
        const int* groupSpins = SubMatrices.GroupSpinTable + static_cast<long long>(s) * groupCount;
        total += StateCount(groupSpins, groupCount);
        const int levels = std::accumulate(groupSpins, groupSpins + groupCount, 1);
        SubMatrices.LargestSubSubCount = std::max(SubMatrices.LargestSubSubCount, levels);
        PollMessages(1);
    }
    SubMatrices.LevelCount = static_cast<int>(total);
}

void FoldLadder(long long* counts, int blockCount, int stride, int radix, int steps) {
    for (int block = blockCount - 1; block >= 0; --block) {  // downwards: counts below are still those without it
        const int possible = std::min(steps, block / stride % radix);
        for (int step = 1; step <= possible; ++step) {
            counts[block] += counts[block - step * stride];
        }
    }
}

// How many states of a SubMatrix lie k steps below the highest projection, for each k; returns the number of levels.
static int CountLevels(const int* groupSpins, int groupCount, long long* counts) {
    const int levels = std::accumulate(groupSpins, groupSpins + groupCount, 1);
    std::fill(counts, counts + levels, 0);
    counts[0] = 1;
    for (int g = 0; g < groupCount; ++g) {
        FoldLadder(counts, levels, 1, levels, groupSpins[g]);
    }
    return levels;
}

static void CountSubSubMatrices(int groupCount) {
    const int subMatrixCount = SubMatrices.SubMatrixCount;
    AllocateTable(SubMatrices.LevelCounts, SubMatrices.LargestSubSubCount);
    AllocateTable(SubMatrices.SubSubMatrixCounts, subMatrixCount);
    AllocateTable(SubMatrices.SubSubMatrixDimensions,
                  static_cast<long long>(SubMatrices.LargestSubSubCount) * subMatrixCount);
    SubMatrices.LargestSubSubDimension = 0;
    for (int s = 0; s < subMatrixCount; ++s) {
        const int* groupSpins = SubMatrices.GroupSpinTable + static_cast<long long>(s) * groupCount;
        const int levels = CountLevels(groupSpins, groupCount, SubMatrices.LevelCounts);
        SubMatrices.SubSubMatrixCounts[s] = levels;
        for (int k = 0; k < levels; ++k) {
            const int dimension = static_cast<int>(SubMatrices.LevelCounts[k]);
            SubMatrices.SubSubMatrixDimensions[static_cast<long long>(k) * subMatrixCount + s] = dimension;
            SubMatrices.LargestSubSubDimension = std::max(SubMatrices.LargestSubSubDimension, dimension);
        }
        PollMessages(levels);
    }
}

// A SubMatrix of more than 20 SubSubMatrices has, on purpose, no line.
static void ListBlockTable(int groupCount) {
    char line[256];
    const int subMatrixCount = SubMatrices.SubMatrixCount;
    std::snprintf(line, sizeof line, "\nNumber of SubMatrices = %d", subMatrixCount);
    LogAppend(line);
    std::snprintf(line, sizeof line, "Number of Energy Levels = %d", SubMatrices.LevelCount);
    LogAppend(line);
    std::snprintf(line, sizeof line, "Largest Dimension of Sub-SubMatrix = %d", SubMatrices.LargestSubSubDimension);
    LogAppend(line);
    std::snprintf(line, sizeof line, "Maximum Number of Sub-SubMatrix in the SubMatrices = %d\n",
                  SubMatrices.LargestSubSubCount);
    LogAppend(line);
    LogAppend(" Sub-     Dim of   No Sub    Dimension of Each Sub-SubMatrix\n Matrix   Sub     SubMat\n");
    for (int s = 0; s < subMatrixCount; ++s) {
        const int levels = SubMatrices.SubSubMatrixCounts[s];
        if (levels > LargestTableRow) {
            continue;
        }
        const int* groupSpins = SubMatrices.GroupSpinTable + static_cast<long long>(s) * groupCount;
        const int* dimensions = SubMatrices.SubSubMatrixDimensions + s;
        int length = std::snprintf(line, sizeof line, "%7d    %5d    %4d    %4d", s + 1,
                                   StateCount(groupSpins, groupCount), levels, dimensions[0]);
        for (int k = 1; k < levels; ++k) {
            length += std::snprintf(line + length, sizeof line - static_cast<std::size_t>(length), " %4d",
                                    dimensions[static_cast<long long>(k) * subMatrixCount]);
        }
        LogAppend(line);
    }
}

void BuildSubMatrices(int groupCount, const int* nucleiInGroup) {
    CheckGroups(groupCount, nucleiInGroup);
    FillGroupSpinTable(groupCount, nucleiInGroup);
    CountStates(groupCount);
    CountSubSubMatrices(groupCount);
    if (Run.Report.LogEnabled) {
        ListBlockTable(groupCount);
    }
}
