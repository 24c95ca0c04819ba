// SPDX-License-Identifier: MIT
// The choice of the instruction set: one for all kernels.
#include "tests/unit/numerics/instruction_sets.h"

#include "nmr/three_centre_kernels.h"
#include "numerics/dense_kernels.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

// The widest set that the processor has is in use, and every processor has the baseline.
TEST(InstructionSet, BaselineComesFirstAndWidestIsUsed) {
    const InstructionSet used = InstructionSetInUse();
    std::vector<InstructionSet> sets;
    WithEachInstructionSet([&](InstructionSet set) { sets.push_back(set); });
    ASSERT_FALSE(sets.empty());
    EXPECT_EQ(sets.front(), BaselineSet);
    EXPECT_STREQ(NameOf(sets.front()), "baseline");
    EXPECT_EQ(used, sets.back());
    EXPECT_EQ(InstructionSetInUse(), used);
}

// Both tables of kernels follow the one choice: each set has its own.
TEST(InstructionSet, AllKernelsFollowIt) {
    std::set<const DenseKernels*> dense;
    std::set<const ThreeCentreKernels*> threeCentre;
    std::size_t count = 0;
    WithEachInstructionSet([&](InstructionSet) {
        ++count;
        dense.insert(&Kernels());
        threeCentre.insert(&KernelsOfThreeCentres());
    });
    EXPECT_EQ(dense.size(), count);
    EXPECT_EQ(threeCentre.size(), count);
}
