// SPDX-License-Identifier: MIT
// The product states of a part and their order.
#include "ground/memory.h"
#include "spectrum/part_states.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

static SpinPart PartOf(const std::vector<int>& nuclei, const std::vector<int>& classes) {
    SpinPart part = {};
    part.GroupCount = static_cast<int>(nuclei.size());
    std::iota(part.Groups, part.Groups + part.GroupCount, 0);
    std::copy(nuclei.begin(), nuclei.end(), part.Nuclei);
    std::copy(classes.begin(), classes.end(), part.Classes);
    part.ClassCount = *std::max_element(classes.begin(), classes.end()) + 1;
    return part;
}

static std::vector<int> Slice(const int* table, int first, int count) {
    return {table + first, table + first + count};
}

class PartStatesTest : public testing::Test {
protected:
    void TearDown() override { FreeArraysOf(PartStates); }
};

// States of 2J = (1, 2) by hand: the first group turns fastest.
TEST_F(PartStatesTest, FirstGroupTurnsFastest) {
    const SpinPart part = PartOf({1, 2}, {0, 0});
    BuildPartStates(part, part.Nuclei);
    EXPECT_EQ(Slice(PartStates.States, 0, 12), (std::vector<int>{1, 2, -1, 2, 1, 0, -1, 0, 1, -2, -1, -2}));
    EXPECT_EQ(Slice(PartStates.Order, 0, 6), (std::vector<int>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(Slice(PartStates.BlockStarts, 0, 5), (std::vector<int>{0, 1, 3, 5, 6}));
    EXPECT_EQ(Slice(PartStates.PlaceOfState, 0, 6), (std::vector<int>{0, 0, 1, 0, 1, 0}));
}

// The same states with a class for each group: six blocks of one state.
TEST_F(PartStatesTest, ClassesSplitTheBlocks) {
    const SpinPart part = PartOf({1, 2}, {1, 0});
    BuildPartStates(part, part.Nuclei);
    EXPECT_EQ(PartStates.BlockCount, 6);
    EXPECT_EQ(PartStates.LargestDimension, 1);
    EXPECT_EQ(Slice(PartStates.ClassStride, 0, 2), (std::vector<int>{2, 1}));
    EXPECT_EQ(Slice(PartStates.Order, 0, 6), (std::vector<int>{0, 1, 2, 3, 4, 5}));
}

// Property: the order is that of a stable sort of the enumeration, by descending projection of class 0, then of the
// others. The reference is the library's stable sort.
TEST_F(PartStatesTest, OrderIsAStableSortByProjections) {
    for (const std::vector<int>& classes :
         {std::vector<int>{0, 0, 0, 0}, std::vector<int>{0, 1, 0, 0}, std::vector<int>{1, 2, 0, 1}}) {
        const SpinPart part = PartOf({3, 1, 2, 4}, classes);
        int spins[LargestGroupCount];
        std::copy(part.Nuclei, part.Nuclei + 4, spins);
        do {
            BuildPartStates(part, spins);
            const auto projections = [&](int state) {
                std::vector<int> sums(3);
                for (std::size_t i = 0; i < 4; ++i) {
                    sums[static_cast<std::size_t>(classes[i])] += PartStates.States[4 * state + static_cast<int>(i)];
                }
                return sums;
            };
            std::vector<int> order(static_cast<std::size_t>(PartStates.StateCount));
            std::iota(order.begin(), order.end(), 0);
            std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return projections(a) > projections(b); });
            EXPECT_EQ(Slice(PartStates.Order, 0, PartStates.StateCount), order);
            for (int block = 0; block < PartStates.BlockCount; ++block) {
                const int start = PartStates.BlockStarts[block];
                for (int place = start; place < PartStates.BlockStarts[block + 1]; ++place) {
                    EXPECT_EQ(projections(PartStates.Order[place]), projections(PartStates.Order[start]));
                    EXPECT_EQ(PartStates.PlaceOfState[PartStates.Order[place]], place - start);
                }
            }
        } while (NextGroupSpins(spins, part.Nuclei, 4));
    }
}
