// SPDX-License-Identifier: MIT
// The block structure of exact simulations: total spins, product states, their order, the limits, the block
// table.
#include "ground/memory.h"
#include "spectrum/sub_matrices.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>

// What three matrices of the largest block take.
static double MatrixBytes() {
    return 3.0 * sizeof(double) * SubMatrices.LargestSubSubDimension * SubMatrices.LargestSubSubDimension;
}

static void Build(const std::vector<int>& nuclei) {
    FreeArraysOf(SubMatrices);
    BuildSubMatrices(static_cast<int>(nuclei.size()), nuclei.data(), MatrixBytes);
}

static std::vector<int> Slice(const int* table, int first, int count) {
    return {table + first, table + first + count};
}

TEST(SubMatrices, LastGroupTurnsFastestAmongTotalSpins) {
    Build({3, 2});
    EXPECT_EQ(SubMatrices.SubMatrixCount, 4);
    EXPECT_EQ(Slice(SubMatrices.GroupSpinTable, 0, 8), (std::vector<int>{3, 2, 3, 0, 1, 2, 1, 0}));
    EXPECT_EQ(SubMatrices.LevelCount, 12 + 4 + 6 + 2);
}

// States of 2J = (1, 2) by hand: the first group turns fastest, and equal projections keep that order.
TEST(SubMatrices, FirstGroupTurnsFastestAmongStates) {
    Build({1, 2});
    EXPECT_EQ(SubMatrices.SubMatrixCount, 2);
    EXPECT_EQ(Slice(SubMatrices.BasisStates, 0, 12), (std::vector<int>{1, 2, -1, 2, 1, 0, -1, 0, 1, -2, -1, -2}));
    EXPECT_EQ(Slice(SubMatrices.LevelOrder, 0, 6), (std::vector<int>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(Slice(SubMatrices.BasisStates, 12, 4), (std::vector<int>{1, 0, -1, 0}));
    EXPECT_EQ(Slice(SubMatrices.LevelOrder, 6, 2), (std::vector<int>{7, 8}));
}

TEST(SubMatrices, DimensionsOfTwoSpinsAre121) {
    Build({1, 1});
    EXPECT_EQ(SubMatrices.SubMatrixCount, 1);
    EXPECT_EQ(SubMatrices.SubSubMatrixCounts[0], 3);
    EXPECT_EQ(Slice(SubMatrices.SubSubMatrixDimensions, 0, 3), (std::vector<int>{1, 2, 1}));
    EXPECT_EQ(SubMatrices.LargestSubSubDimension, 2);
    EXPECT_EQ(SubMatrices.LargestSubSubCount, 3);
}

TEST(SubMatrices, GroupOfTwoHasATripletAndASinglet) {
    Build({2});
    EXPECT_EQ(SubMatrices.SubMatrixCount, 2);
    EXPECT_EQ(Slice(SubMatrices.SubSubMatrixCounts, 0, 2), (std::vector<int>{3, 1}));
    EXPECT_EQ(SubMatrices.LevelCount, 4);
}

TEST(SubMatrices, GroupOfNoNucleiIsOneState) {
    Build({0, 1});
    EXPECT_EQ(SubMatrices.SubMatrixCount, 1);
    EXPECT_EQ(SubMatrices.LevelCount, 2);
}

// Property: the order is that of a stable sort of the enumeration by descending projection. The reference is
// the library's stable sort.
TEST(SubMatrices, OrderIsAStableSortByProjection) {
    const std::vector<int> nuclei = {3, 1, 2, 4};
    const int n = static_cast<int>(nuclei.size());
    Build(nuclei);
    int first = 0;
    for (int s = 0; s < SubMatrices.SubMatrixCount; ++s) {
        int states = 1;
        for (int g = 0; g < n; ++g) {
            states *= SubMatrices.GroupSpinTable[s * n + g] + 1;
        }
        std::vector<int> order;
        for (int i = 0; i < states; ++i) {
            order.push_back(first + i + 1);
        }
        const auto projection = [n](int state) {
            int sum = 0;
            for (int g = 0; g < n; ++g) {
                sum += SubMatrices.BasisStates[(state - 1) * n + g];
            }
            return sum;
        };
        std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return projection(a) > projection(b); });
        EXPECT_EQ(Slice(SubMatrices.LevelOrder, first, states), order) << s;
        int place = 0;
        for (int k = 0; k < SubMatrices.SubSubMatrixCounts[s]; ++k) {
            const int dimension = SubMatrices.SubSubMatrixDimensions[k * SubMatrices.SubMatrixCount + s];
            for (int i = 0; i < dimension; ++i) {
                EXPECT_EQ(projection(order[static_cast<std::size_t>(place + i)]),
                          projection(order[static_cast<std::size_t>(place)]));
            }
            place += dimension;
        }
        EXPECT_EQ(place, states);
        first += states;
    }
    EXPECT_EQ(first, SubMatrices.LevelCount);
}

// Outcome of the limits in a child that writes its refusal to a file; "" when the system is taken.
static std::string Refusal(const std::vector<int>& nuclei) {
    TemporaryDirectory work;
    ExitCodeOfChild([&] {
        UseFilesIn(work.Path);
        ::Run.Report.LogEnabled = 0;
        Build(nuclei);
    });
    const std::string text = ReadText(work.Path + "/nmrspect.out");
    return text == "(no file)" ? "" : text;
}

static constexpr char TooMany[] =
    "ERRMSG: There are too many nuclei.  Please switch to using Week Coupling Approximation, if possible.\n";
static constexpr char NoMemory[] = "ERRMSG: This application has exhausted all available memory.\n";

TEST(SubMatrices, MoreThan32GroupsAreTooMany) {
    EXPECT_EQ(Refusal(std::vector<int>(33, 1)), TooMany);
    EXPECT_EQ(Refusal(std::vector<int>(32, 1)), NoMemory);
    EXPECT_EQ(Refusal(std::vector<int>(32, 0)), "");
}

// The limit of 62500000 states: 2^26 exceeds it. The largest SubMatrix of five groups of 24 has 25^5 =
// 9765625 states, but 2J + 1 sums up to 169 for each group, and 169^5 is far beyond.
TEST(SubMatrices, RefusesTooManyStates) {
    EXPECT_EQ(Refusal(std::vector<int>(26, 1)), NoMemory);
    EXPECT_EQ(Refusal({24, 24, 24, 24, 24}), NoMemory);
    EXPECT_EQ(Refusal({169, 169, 169, 169}), NoMemory);
}

TEST(SubMatrices, RefusesMatricesBeyondTheMemory) {
    EXPECT_EQ(Refusal(std::vector<int>(25, 1)), NoMemory);
    EXPECT_EQ(Refusal(std::vector<int>(20, 1)), NoMemory);
}

// On purpose a SubMatrix of more than 20 SubSubMatrices has no row in the table, and one of 20 has.
TEST(SubMatrices, BlockTableLeavesOutLongRows) {
    TemporaryDirectory work;
    UseFilesIn(work.Path);
    Build({20});
    const std::string log = ReadText(work.Path + "/run.log");
    EXPECT_NE(log.find("\nNumber of SubMatrices = 11\nNumber of Energy Levels = 121\n"
                       "Largest Dimension of Sub-SubMatrix = 1\nMaximum Number of Sub-SubMatrix in the SubMatrices "
                       "= 21\n\n"
                       " Sub-     Dim of   No Sub    Dimension of Each Sub-SubMatrix\n Matrix   Sub     SubMat\n\n"
                       "      2       19      19       1    1"),
              std::string::npos)
        << log;
    WriteText(work.Path + "/run.log", "");
    Build({19});
    EXPECT_NE(ReadText(work.Path + "/run.log").find("\n      1       20      20       1    1"), std::string::npos);
    ::Run.Report.LogEnabled = 0;
    ResetRun();
}
