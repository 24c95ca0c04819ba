// SPDX-License-Identifier: MIT
// Enumerates the total spins and product states of a spin system and sorts them into blocks.
#include "spectrum/sub_matrices.h"

#include "ground/fatal_error.h"
#include "ground/log.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "ground/run_state.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

static constexpr int LargestGroupCount = 32;
static constexpr long long LargestStateCount = 62500000;
static constexpr int LargestTableRow = 20;  // dimensions that a line of the block table holds

SubMatrixTables SubMatrices;

template <class Record> static void AllocateTable(Record*& table, long long count) {
    if (!AllocateArray(table, count)) {
        FatalError(Message::OutOfMemory);
    }
}

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

// An odometer: the last group turns fastest, each group runs n, n - 2, ... down to 1 or 0.
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
        int* next = row + groupCount;
        std::copy(row, next, next);
        for (int g = groupCount - 1; (next[g] -= 2) < 0; --g) {
            next[g] = nucleiInGroup[g];
        }
        row = next;
        PollMessages(1);
    }
}

static int StateCount(const int* groupSpins, int groupCount) {
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
        int levels = 1;
        for (int g = 0; g < groupCount; ++g) {
            levels += groupSpins[g];
        }
        SubMatrices.LargestSubSubCount = std::max(SubMatrices.LargestSubSubCount, levels);
        PollMessages(1);
    }
    SubMatrices.LevelCount = static_cast<int>(total);
}

// How many states of a SubMatrix lie k steps below the highest projection, for each k: the groups' ladders are folded
// into one another. Returns the number of levels.
static int CountLevels(const int* groupSpins, int groupCount, long long* counts) {
    int levels = 1;
    counts[0] = 1;
    for (int g = 0; g < groupCount; ++g) {
        const int steps = groupSpins[g];
        std::fill(counts + levels, counts + levels + steps, 0);
        levels += steps;
        for (int k = levels - 1; k >= 0; --k) {  // downwards, since counts below k are still those without g
            for (int step = 1; step <= std::min(steps, k); ++step) {
                counts[k] += counts[k - step];
            }
        }
    }
    return levels;
}

static void CountSubSubMatrices(int groupCount) {
    const int subMatrixCount = SubMatrices.SubMatrixCount;
    AllocateTable(SubMatrices.LevelCounts, SubMatrices.LargestSubSubCount + 1);
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

// Enumerates the states of one SubMatrix from row base of BasisStates on, and sorts them by counting: a state k steps
// below the highest projection goes to the next free place of level k.
static void FillStates(const int* groupSpins, int groupCount, long long base) {
    const int levels = CountLevels(groupSpins, groupCount, SubMatrices.LevelCounts);
    long long place = base;
    for (int k = 0; k < levels; ++k) {
        place += SubMatrices.LevelCounts[k];
        SubMatrices.LevelCounts[k] = place - SubMatrices.LevelCounts[k];
    }
    const int states = StateCount(groupSpins, groupCount);
    int* row = SubMatrices.BasisStates + base * groupCount;
    std::copy(groupSpins, groupSpins + groupCount, row);
    int level = 0;
    for (int state = 0;; ++state) {
        SubMatrices.LevelOrder[SubMatrices.LevelCounts[level]++] = static_cast<int>(base + state + 1);
        if (state + 1 == states) {
            return;
        }
        int* next = row + groupCount;
        std::copy(row, next, next);
        ++level;
        for (int g = 0; (next[g] -= 2) < -groupSpins[g]; ++g) {
            next[g] = groupSpins[g];
            level -= groupSpins[g];  // the carry lowers the next group by the step that is already counted
        }
        row = next;
        if (state % 4096 == 0) {
            PollMessages(4096);
        }
    }
}

void BuildSubMatrices(int groupCount, const int* nucleiInGroup, double (*workBytes)()) {
    CheckGroups(groupCount, nucleiInGroup);
    FillGroupSpinTable(groupCount, nucleiInGroup);
    CountStates(groupCount);
    CountSubSubMatrices(groupCount);
    if (Run.Report.LogEnabled) {
        ListBlockTable(groupCount);
    }
    const double stateBytes = static_cast<double>(sizeof(int)) * (groupCount + 1.0) * SubMatrices.LevelCount;
    if (!MemoryCanServe(stateBytes + workBytes())) {
        FatalError(Message::OutOfMemory);
    }
    AllocateTable(SubMatrices.BasisStates, static_cast<long long>(SubMatrices.LevelCount) * groupCount);
    AllocateTable(SubMatrices.LevelOrder, SubMatrices.LevelCount);
    long long base = 0;
    for (int s = 0; s < SubMatrices.SubMatrixCount; ++s) {
        const int* groupSpins = SubMatrices.GroupSpinTable + static_cast<long long>(s) * groupCount;
        FillStates(groupSpins, groupCount, base);
        base += StateCount(groupSpins, groupCount);
    }
}
