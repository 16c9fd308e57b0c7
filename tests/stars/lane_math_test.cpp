// SPDX-License-Identifier: BSD-3-Clause

// The kernels' own exponentials and error function against the C library's in double. One level is
// enough: the others give the same bits.
#include "stars/fast/lanes_sse2.h"

#define VELMORA_LANES sse2_lanes
#pragma GCC diagnostic ignored "-Wunused-function" // the kernels themselves are not used here
#include "stars/fast/lane_kernels.inc"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace velmora::sse2_lanes;

namespace {

float lane_of(F v) {
    float lanes[float_lanes];
    store(lanes, v);
    return lanes[1];
}

double lane_of(D v) {
    double lanes[double_lanes];
    store(lanes, v);
    return lanes[1];
}

double last_bits(float value, double exact) {
    const float rounded = std::fabs(float(exact));
    return std::fabs(value - exact) / (double(std::nextafter(rounded, 2.0f)) - rounded);
}

} // namespace

TEST(LaneMath, TakesExponentialsToLittleMoreThanALastBit) {
    double worst = 0;
    for (float x = -87; x < 0; x += 1.3e-4f)
        worst = std::max(worst, last_bits(lane_of(exp_lanes(all(x))), std::exp(double(x))));
    EXPECT_LE(worst, 1.1);
    EXPECT_EQ(lane_of(exp_lanes(all(0.0f))), 1);
}

TEST(LaneMath, ReachesZeroThroughTheDenormals) {
    for (float x = -87; x > -103.9f; x -= 0.001f) // a last bit is 2^-149 all the way
        EXPECT_NEAR(lane_of(exp_lanes(all(x))), std::exp(double(x)), 1.6e-45 + 1e-7 * std::exp(x))
            << x;
    EXPECT_EQ(lane_of(exp_lanes(all(-103.97f))), std::ldexp(1.0f, -149));
    for (float x : {-103.98f, -104.0f, -1000.0f, -1e30f, -HUGE_VALF})
        EXPECT_EQ(lane_of(exp_lanes(all(x))), 0) << x;
}

TEST(LaneMath, TakesExponentialsOfDoublesForFloats) {
    double worst = 0;
    for (double x = -690; x < 0; x += 0.0037)
        worst = std::max(worst, std::fabs(lane_of(exp_lanes(all(x))) / std::exp(x) - 1));
    EXPECT_LE(worst, 2e-12);
    EXPECT_EQ(lane_of(exp_lanes(all(0.0))), 1);
    EXPECT_LT(lane_of(exp_lanes(all(-1e300))), 1e-300);
}

TEST(LaneMath, TakesErrorFunctionsToLittleMoreThanALastBit) {
    double worst = 0;
    for (float x = 1e-6f; x < 4.2f; x += x < 0.01f ? x * 1e-3f : 2.3e-5f)
        for (float signed_x : {x, -x})
            worst = std::max(
                worst, last_bits(lane_of(erf_lanes(all(signed_x))), std::erf(double(signed_x))));
    EXPECT_LE(worst, 1.3);
    EXPECT_EQ(lane_of(erf_lanes(all(0.0f))), 0);
}

// erf(3.92) is nearer to 1 than to the float below it, by a hair.
TEST(LaneMath, SaturatesErrorFunctionsAtExactlyOne) {
    for (float x = 3.9195f; x < 50; x *= 1.0001f) {
        EXPECT_EQ(lane_of(erf_lanes(all(x))), 1) << x;
        EXPECT_EQ(lane_of(erf_lanes(all(-x))), -1) << x;
    }
    for (float x : {1e10f, 3e38f, HUGE_VALF}) {
        EXPECT_EQ(lane_of(erf_lanes(all(x))), 1) << x;
        EXPECT_EQ(lane_of(erf_lanes(all(-x))), -1) << x;
    }
}
