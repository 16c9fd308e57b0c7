// SPDX-License-Identifier: BSD-3-Clause
#include "tools/pictures/tone.h"

#include "tests/special_values.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace velmora;
using namespace velmora_test::floats;

typedef std::array<std::uint8_t, 3> Bytes;

// What IEC 61966-2-1 decodes a byte to.
static double linear_of_byte(int byte) {
    const double s = byte / 255.0;
    return s <= 0.04045 ? s / 12.92 : std::pow((s + 0.055) / 1.055, 2.4);
}

// The luminance that the shoulder takes to `shown`.
static float light_for(double shown) {
    return float(-std::log(1 - shown));
}

TEST(Tone, ShowsBlackAsBlack) {
    EXPECT_EQ(display_color(0, 0, 0, 0), (Bytes{0, 0, 0}));
    EXPECT_EQ(display_color(0, 0, 0, 100), (Bytes{0, 0, 0}));
}

TEST(Tone, HalvesTheDistanceToWhiteWithEveryLn2OfLight) {
    // sRGB of 1/2, 3/4 and 7/8 is 0.73536, 0.88083 and 0.94290, times 255.
    const float ln2 = float(std::log(2.0));
    EXPECT_EQ(display_color(ln2, ln2, ln2, 0), (Bytes{188, 188, 188}));
    EXPECT_EQ(display_color(2 * ln2, 2 * ln2, 2 * ln2, 0), (Bytes{225, 225, 225}));
    EXPECT_EQ(display_color(3 * ln2, 3 * ln2, 3 * ln2, 0), (Bytes{240, 240, 240}));
}

TEST(Tone, ReachesEveryByte) {
    for (int byte = 0; byte < 255; byte++) {
        const float light = light_for(linear_of_byte(byte));
        const auto expected = std::uint8_t(byte);
        EXPECT_EQ(display_color(light, light, light, 0), (Bytes{expected, expected, expected}));
    }
}

TEST(Tone, DoublesTheLightWithEveryStop) {
    for (const float light : {0.001f, 0.07f, 0.5f, 3.0f}) {
        EXPECT_EQ(display_color(light, light / 2, 0, 3), display_color(8 * light, 4 * light, 0, 0));
        EXPECT_EQ(display_color(light, light / 2, 0, -2),
                  display_color(light / 4, light / 8, 0, 0));
    }
}

TEST(Tone, NeverClipsOneChannelBeforeTheOthers) {
    // Red : green : blue = 4 : 2 : 1 in linear light, at every brightness.
    for (double exposure = -2; exposure <= 10; exposure += 0.25) {
        const Bytes shown = display_color(1, 0.5f, 0.25f, exposure);
        const double level = 1 - std::exp(-std::exp2(exposure));
        for (std::size_t k = 0; k < 3; k++) {
            const double wanted = level / double(1 << k);
            EXPECT_GE(wanted, linear_of_byte(shown[k]) - 0.005) << exposure;
            EXPECT_LE(wanted, linear_of_byte(shown[k]) + 0.005) << exposure;
        }
    }
    // sRGB of 1, 1/2 and 1/4 is 1, 0.73536 and 0.53710.
    EXPECT_EQ(display_color(1e30f, 0.5e30f, 0.25e30f, 0), (Bytes{255, 188, 137}));
    EXPECT_EQ(display_color(1, 0.5f, 0.25f, 2000), (Bytes{255, 188, 137}));
}

TEST(Tone, CountsNegativeLightAsNone) {
    EXPECT_EQ(display_color(-1, -infinity, -0.0f, 0), (Bytes{0, 0, 0}));
    EXPECT_EQ(display_color(-5, light_for(0.5), 0, 0), (Bytes{0, 188, 0}));
}

TEST(Tone, CountsWhatIsNotANumberAsNone) {
    EXPECT_EQ(display_color(not_a_number, not_a_number, not_a_number, 0), (Bytes{0, 0, 0}));
    EXPECT_EQ(display_color(light_for(0.5), not_a_number, 0, 0), (Bytes{188, 0, 0}));
}

TEST(Tone, ShowsEndlessLightFull) {
    EXPECT_EQ(display_color(infinity, infinity, infinity, 0), (Bytes{255, 255, 255}));
    EXPECT_EQ(display_color(infinity, 1, 0, 0), (Bytes{255, 0, 0}));
    EXPECT_EQ(display_color(infinity, not_a_number, infinity, -2000), (Bytes{255, 0, 255}));
}

TEST(Tone, TakesTheSmallestAndTheLargestFloats) {
    const float denormal = std::numeric_limits<float>::denorm_min();
    const float largest = std::numeric_limits<float>::max();
    EXPECT_EQ(display_color(denormal, denormal, 0, 0), (Bytes{0, 0, 0}));
    EXPECT_EQ(display_color(denormal, denormal, 0, 200), (Bytes{255, 255, 0}));
    EXPECT_EQ(display_color(largest, 0, largest, 0), (Bytes{255, 0, 255}));
    EXPECT_EQ(display_color(largest, 0, largest, -2000), (Bytes{0, 0, 0}));
}
