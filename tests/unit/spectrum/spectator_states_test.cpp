// SPDX-License-Identifier: MIT
// Lines that stand for all states of the groups that they don't touch.
#include "ground/memory.h"
#include "spectrum/spectator_states.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

// The line of this intensity and own weight beside groups of these nuclei; intensity 0 if it isn't kept.
static SpectrumLine LineBeside(const std::vector<int>& nuclei, double ownWeight, double intensity) {
    StartSpectators();
    for (const int n : nuclei) {
        AddSpectatorGroup(n);
    }
    WeighLines(ownWeight);
    LoadLines({{}});
    const bool kept = WriteWeightedLine(0, 12.5, intensity) == 1;
    const SpectrumLine line = ::Run.Lines.SpectrumLines[0];
    FreeArraysOf(Spectators);
    ResetRun();
    return kept ? line : SpectrumLine{};
}

TEST(SpectatorStates, NoSpectatorLeavesTheLineAsItIs) {
    const SpectrumLine line = LineBeside({}, 2.0, 0.25);
    EXPECT_EQ(line.Frequency, 12.5f);
    EXPECT_EQ(line.Intensity, 0.5f);
    EXPECT_EQ(line.Degeneracy, 2);
}

// n nuclei have 2^n states, so a line of intensity 1 becomes one of 2^n. The states of a group of three: four of
// J = 3/2 once, two of J = 1/2 twice, whose lines count double: 4 + 2 2 coincident transitions, intensity 4 + 2 2.
TEST(SpectatorStates, EveryStateCountsByItsWeight) {
    EXPECT_EQ(LineBeside({1, 1, 1}, 1.0, 1.0).Intensity, 8.0f);
    EXPECT_EQ(LineBeside({1, 1, 1}, 1.0, 1.0).Degeneracy, 8);
    EXPECT_EQ(LineBeside({3}, 1.0, 1.0).Intensity, 8.0f);
    EXPECT_EQ(LineBeside({3}, 1.0, 1.0).Degeneracy, 8);
    EXPECT_EQ(LineBeside({3, 2, 0, 5}, 1.0, 1.0).Intensity, 1024.0f);
}

// Of a line beside a group of three, the transitions of weight 1 fall below 1e-10 and those of weight 2 don't: two
// states of intensity 1.4e-10 stay, each of degeneracy 2.
TEST(SpectatorStates, EachTransitionIsKeptByItsOwnIntensity) {
    const SpectrumLine line = LineBeside({3}, 1.0, 0.7e-10);
    EXPECT_EQ(line.Intensity, 2.8e-10f);
    EXPECT_EQ(line.Degeneracy, 4);
    EXPECT_EQ(LineBeside({3}, 1.0, 0.4e-10).Degeneracy, 0);
}

TEST(SpectatorStates, DegeneracyEndsAtTheLargestInteger) {
    EXPECT_EQ(LineBeside(std::vector<int>(31, 1), 1.0, 1.0).Degeneracy, 2147483647);
    EXPECT_EQ(LineBeside(std::vector<int>(60, 1), 1.0, 1.0).Degeneracy, 2147483647);
    EXPECT_EQ(LineBeside(std::vector<int>(30, 1), 1.0, 1.0).Degeneracy, 1 << 30);
}
