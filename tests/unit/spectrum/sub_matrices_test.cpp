// SPDX-License-Identifier: MIT
// The block structure of exact simulations: total spins, counts of states, the limits, the block table.
#include "ground/memory.h"
#include "spectrum/sub_matrices.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

static void Build(const std::vector<int>& nuclei) {
    FreeArraysOf(SubMatrices);
    BuildSubMatrices(static_cast<int>(nuclei.size()), nuclei.data());
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

// Property: the dimensions are the numbers of states by projection. The reference counts states one by one.
TEST(SubMatrices, DimensionsCountTheStatesOfEachProjection) {
    const std::vector<int> nuclei = {3, 1, 2, 4};
    Build(nuclei);
    for (int s = 0; s < SubMatrices.SubMatrixCount; ++s) {
        const std::vector<int> spins = Slice(SubMatrices.GroupSpinTable, 4 * s, 4);
        std::vector<int> counts(static_cast<std::size_t>(spins[0] + spins[1] + spins[2] + spins[3] + 1));
        for (int a = 0; a <= spins[0]; ++a) {
            for (int b = 0; b <= spins[1]; ++b) {
                for (int c = 0; c <= spins[2]; ++c) {
                    for (int d = 0; d <= spins[3]; ++d) {
                        ++counts[static_cast<std::size_t>(a + b + c + d)];
                    }
                }
            }
        }
        ASSERT_EQ(SubMatrices.SubSubMatrixCounts[s], static_cast<int>(counts.size())) << s;
        for (int k = 0; k < SubMatrices.SubSubMatrixCounts[s]; ++k) {
            EXPECT_EQ(SubMatrices.SubSubMatrixDimensions[k * SubMatrices.SubMatrixCount + s],
                      counts[static_cast<std::size_t>(k)]);
        }
    }
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
