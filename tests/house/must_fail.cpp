// SPDX-License-Identifier: MIT
// Tests that have to fail; the suite checks that they do. A check that passes whatever happens is no check.
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

TEST(MustFail, WrongFrequency) {
    const std::vector<SpectrumLine> lines = Simulate({{1}, {1}, {1.0}, {0.0}, 100.0, 1e-7, 0});
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].Frequency, 101.0f);  // it is 100
}

TEST(MustFail, FatalErrorWithinATest) {
    Simulate({{1, 1}, {1, 1}, {1.0, 1.0}, {0.0, 0.0, 0.0, 0.0}, 100.0, 1e-7, 1});
}
