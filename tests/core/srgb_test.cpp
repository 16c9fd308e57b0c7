// SPDX-License-Identifier: BSD-3-Clause
#include "core/srgb.h"

#include <cmath>
#include <gtest/gtest.h>

using velmora::srgb_of_linear;

// What IEC 61966-2-1 decodes a byte to.
static double linear_of_byte(int byte) {
    const double s = byte / 255.0;
    return s <= 0.04045 ? s / 12.92 : std::pow((s + 0.055) / 1.055, 2.4);
}

TEST(Srgb, EncodesWhatTheStandardDecodes) {
    // A few roundings in double, and the power.
    for (int byte = 0; byte < 256; byte++)
        EXPECT_NEAR(srgb_of_linear(linear_of_byte(byte)), byte / 255.0, 1e-14) << byte;
}

TEST(Srgb, IsLinearNearBlackAndReachesOne) {
    EXPECT_EQ(srgb_of_linear(0), 0);
    EXPECT_DOUBLE_EQ(srgb_of_linear(0.0031308), 12.92 * 0.0031308);
    EXPECT_NEAR(srgb_of_linear(1), 1, 1e-15);
    // The two pieces meet to within the digits that the standard gives them.
    EXPECT_NEAR(srgb_of_linear(0.00313081), srgb_of_linear(0.0031308), 1e-6);
}
