// SPDX-License-Identifier: MIT
// The connected parts of a spin system.
#include "spectrum/spin_part.h"
#include "spectrum/spin_system.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

static std::vector<SpinPart> PartsOf(const SpinSystem& system) {
    LoadSpinSystem(system);
    PrepareSpinSystem();
    SpinPart parts[LargestGroupCount];
    const int count = FindConnectedParts(parts);
    ResetRun();
    return {parts, parts + count};
}

static std::vector<int> GroupsOf(const SpinPart& part) {
    return {part.Groups, part.Groups + part.GroupCount};
}

TEST(SpinPart, CouplingsConnectAcrossThirdGroups) {
    // couplings 0-3, 3-1 and 2-4, row by row above the diagonal
    const auto parts = PartsOf(LikeSpins({1, 2, 3, 4, 5, 6}, {0, 0, 5, 0, 0, 0, 5, 0, 0, 0, -1, 0, 0, 0, 0}));
    ASSERT_EQ(parts.size(), 3u);
    EXPECT_EQ(GroupsOf(parts[0]), (std::vector<int>{0, 1, 3}));
    EXPECT_EQ(GroupsOf(parts[1]), (std::vector<int>{2, 4}));
    EXPECT_EQ(GroupsOf(parts[2]), (std::vector<int>{5}));
}

// A coupling that rounds to nothing doesn't connect: what is simulated is the rounded system.
TEST(SpinPart, RoundedCouplingsCount) {
    EXPECT_EQ(PartsOf(LikeSpins({1, 2}, {0.0004})).size(), 2u);
    EXPECT_EQ(PartsOf(LikeSpins({1, 2}, {0.0006})).size(), 1u);
}

TEST(SpinPart, UnlikeIsotopesConnectAndHaveClassesOfTheirOwn) {
    SpinSystem system = LikeSpins({1, 2, 3, 4}, {5, 5, 5, 5, 5, 5});
    system.Isotopes = {31, 1, 19, 1};
    system.Nuclei = {1, 1, 3, 1};
    const auto parts = PartsOf(system);
    ASSERT_EQ(parts.size(), 1u);
    EXPECT_EQ(parts[0].ClassCount, 3);
    EXPECT_EQ((std::vector<int>{parts[0].Classes, parts[0].Classes + 4}), (std::vector<int>{2, 1, 0, 1}));
}
