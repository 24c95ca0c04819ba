// SPDX-License-Identifier: MIT
// Constants that are made from other ones, of the shielding and of units.
#include "nmr/shielding_constants.h"

#include "molecule/units.h"
#include "numerics/mathematical_constants.h"

#include <gtest/gtest.h>

// Property: each has the digits that results depend on.
TEST(ShieldingConstants, KeepTheirDigits) {
    EXPECT_EQ(IsotropicFactor, 17.7504539779);
    EXPECT_EQ(HalfIsotropicFactor, 8.87522698895);
    EXPECT_EQ(LondonFactor, 8.87522698895);
    EXPECT_EQ(ThirdIsotropicFactor, 5.916817992633334);
    EXPECT_EQ(OneCentreTensorFactor, 13.312840483425001);
    EXPECT_EQ(TwoCentreTensorFactor, 26.625680966850002);
    EXPECT_EQ(RoundedRootThree, 1.7320508);
    EXPECT_EQ(InverseOfRoundedRoot, 0.5773502717125849);
    EXPECT_EQ(HartreesPerElectronVolt, 0.03674930900274282);
    EXPECT_EQ(HartreesPerKcal, 0.001593569619711464);
    EXPECT_EQ(ListedElectronVoltsPerHartree, 27.211395f);
    EXPECT_EQ(0.75 * (-0.5 * HartreesPerElectronVolt), -0.013780990876028559);
}
