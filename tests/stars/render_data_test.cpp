// SPDX-License-Identifier: BSD-3-Clause
#include "stars/render_data.h"

#include <gtest/gtest.h>

using namespace velmora;

TEST(RenderData, TakesUnknownProjectionsForThePerspectiveOne) {
    EXPECT_EQ(projection_of_index(0), OP_STARS_PERSPECTIVE);
    EXPECT_EQ(projection_of_index(1), OP_STARS_HEMISPHERICAL);
    EXPECT_EQ(projection_of_index(2), OP_STARS_AZIMUTHAL_EQUIDISTANT);
    for (int index : {-1, 3, 17, -2147483647})
        EXPECT_EQ(projection_of_index(index), OP_STARS_PERSPECTIVE) << index;
}

TEST(RenderData, TurnsABiasIntoAnExponent) {
    EXPECT_EQ(bias_exponent_of(1), 1);
    EXPECT_EQ(bias_exponent_of(2), 0.5);
    EXPECT_EQ(bias_exponent_of(0.25), 4);
    EXPECT_EQ(bias_exponent_of(-4), -0.25);
    EXPECT_EQ(bias_exponent_of(3), 1.0 / 3.0);
    EXPECT_EQ(bias_exponent_of(1e-300), 1 / 1e-300) << "only exactly 0 is special";
}

TEST(RenderData, TakesTheHundredthPowerForABiasOfZero) {
    EXPECT_EQ(bias_exponent_of(0), 100);
    EXPECT_EQ(bias_exponent_of(-0.0), 100);
}
