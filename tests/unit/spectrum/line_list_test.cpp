// SPDX-License-Identifier: MIT
// Pruning, sorting, merging and filtering of the list of lines.
#include "spectrum/line_list.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>

static std::vector<SpectrumLine> Finished(const std::vector<SpectrumLine>& lines, double minimalIntensity = 1e-7) {
    LoadLines(lines);
    ::Run.Options.MinimalIntensity = minimalIntensity;
    FinishLineList(static_cast<long long>(lines.size()));
    return FinishedLines();
}

static void ExpectLine(const SpectrumLine& line, float frequency, float intensity, int degeneracy) {
    EXPECT_EQ(line.Frequency, frequency);
    EXPECT_EQ(line.Intensity, intensity);
    EXPECT_EQ(line.Degeneracy, degeneracy);
}

// On purpose the distance counts between neighbours: a chain collapses into its lowest member, however long
// it is.
TEST(LineList, ChainMergesIntoItsLowestLine) {
    const auto lines = Finished({{10.0016f, 3, 4}, {10.0f, 1, 1}, {10.0008f, 2, 2}, {11.0f, 1, 1}});
    ASSERT_EQ(lines.size(), 2u);
    ExpectLine(lines[0], 10.0f, 6.0f, 7);
    ExpectLine(lines[1], 11.0f, 1.0f, 1);
}

TEST(LineList, LongChainMergesToo) {
    std::vector<SpectrumLine> chain;
    for (int i = 0; i < 100; ++i) {
        chain.push_back({static_cast<float>(i) * 0.0009f, 1.0f, 2});
    }
    const auto lines = Finished(chain);
    ASSERT_EQ(lines.size(), 1u);
    ExpectLine(lines[0], 0.0f, 100.0f, 200);
}

TEST(LineList, EqualAndNearNeighboursMerge) {
    auto lines = Finished({{5.0f, 1, 1}, {5.0f, 2, 3}});
    ASSERT_EQ(lines.size(), 1u);
    ExpectLine(lines[0], 5.0f, 3.0f, 4);
    lines = Finished({{5.0f, 1, 1}, {5.0009f, 2, 3}});
    ASSERT_EQ(lines.size(), 1u);
    ExpectLine(lines[0], 5.0f, 3.0f, 4);
}

// The distance is that of the stored 32-bit values, in 64 bits. 0.0009765625 (2^-10) and 0.001953125 are
// exact.
TEST(LineList, DistanceIsTestedOnTheStoredValues) {
    EXPECT_EQ(Finished({{1.0f, 1, 1}, {1.0009765625f, 1, 1}}).size(), 1u);
    EXPECT_EQ(Finished({{1.0f, 1, 1}, {1.001953125f, 1, 1}}).size(), 2u);
    EXPECT_EQ(Finished({{0.0f, 1, 1}, {0.001f, 1, 1}}).size(), 2u);  // 0.001f is a little more than 0.001
    EXPECT_EQ(Finished({{1.0f, 1, 1}, {1.001f, 1, 1}}).size(), 2u);  // and this one 1.00100004673
    EXPECT_EQ(Finished({{3.0f, 1, 1}, {3.001f, 1, 1}}).size(), 1u);  // and this one 3.00099992752
}

TEST(LineList, MergeAddsIn32Bits) {
    const auto lines = Finished({{1.0f, 16777216.0f, 1}, {1.0f, 1.0f, 1}});
    ASSERT_EQ(lines.size(), 1u);
    ExpectLine(lines[0], 1.0f, 16777216.0f, 2);
}

TEST(LineList, PrunesBelowTheSmallestIntensity) {
    const auto lines = Finished({{1.0f, 0.99e-10f, 1}, {2.0f, 1.01e-10f, 1}, {3.0f, -5.0f, 1}, {4.0f, 1.0f, 1}}, 1e-12);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].Frequency, 2.0f);
    EXPECT_EQ(lines[1].Frequency, 4.0f);
}

// A line that is pruned no longer joins its neighbours into a chain.
TEST(LineList, PrunesBeforeItMerges) {
    EXPECT_EQ(Finished({{1.0f, 1, 1}, {1.0008f, 1e-11f, 1}, {1.0016f, 1, 1}}).size(), 2u);
}

// The filter runs after the merge: weak lines that coincide survive together although none would alone.
TEST(LineList, FiltersAfterTheMerge) {
    const auto lines = Finished({{1, 0.4f, 1}, {1, 0.4f, 1}, {1, 0.4f, 1}, {2, 0.9f, 1}, {3, 1.0f, 1}}, 1.0);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].Frequency, 1.0f);
    EXPECT_EQ(lines[0].Degeneracy, 3);
    ExpectLine(lines[1], 3.0f, 1.0f, 1);  // at the limit, and so it stays
}

TEST(LineList, EmptyListHasNoLine) {
    EXPECT_EQ(Finished({}).size(), 0u);
    EXPECT_EQ(Finished({{7.0f, 1e-11f, 1}}).size(), 0u);
}

TEST(LineList, SortsNegativeAndPositiveFrequencies) {
    std::mt19937 random(1);
    std::uniform_int_distribution<int> steps(-400000, 400000);
    std::vector<SpectrumLine> lines;
    for (int i = 0; i < 5000; ++i) {
        lines.push_back({static_cast<float>(steps(random)) * 0.25f, 1.0f, 1});
    }
    const auto finished = Finished(lines);
    long long degeneracy = 0;
    for (std::size_t i = 0; i < finished.size(); ++i) {
        degeneracy += finished[i].Degeneracy;
        EXPECT_TRUE(i == 0 || finished[i - 1].Frequency < finished[i].Frequency);
    }
    EXPECT_EQ(degeneracy, 5000);
}

TEST(LineList, ZerosOfBothSignsMerge) {
    EXPECT_EQ(Finished({{0.0f, 1, 1}, {-0.0f, 1, 1}, {-1.0f, 1, 1}}).size(), 2u);
}

TEST(LineList, DegeneraciesSaturate) {
    const auto lines = Finished({{1, 1, INT_MAX - 1}, {1, 1, 5}});
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].Degeneracy, INT_MAX);
}

TEST(LineList, WritesOnlyLinesThatAreKept) {
    LoadLines({{0, 0, 0}, {0, 0, 0}});
    EXPECT_EQ(WriteLine(0, 1.0, 9.0e-11, 1), 0);
    EXPECT_EQ(WriteLine(0, 1.0, 1.0e-9, 1), 1);
    EXPECT_EQ(WriteLine(1, 1.0, -1.0, 1), 1);
}

TEST(LineList, GrowthKeepsWhatStandsThere) {
    LoadLines({{1.5f, 2.5f, 3}});
    ReserveLines(100000);
    EXPECT_GE(::Run.Lines.SpectrumLineCapacity, 100000);
    ExpectLine(::Run.Lines.SpectrumLines[0], 1.5f, 2.5f, 3);
}
