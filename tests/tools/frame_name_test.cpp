// SPDX-License-Identifier: BSD-3-Clause
#include "tools/frames/frame_name.h"

#include "tools/failure.h"

#include <climits>
#include <cstdio>
#include <gtest/gtest.h>

using namespace velmora;

static std::string failure_of(const std::string& pattern) {
    try {
        FrameName name(pattern);
    } catch (const UsageFailure& failure) {
        return failure.what();
    }
    return "no failure";
}

static std::string refusal(const std::string& pattern, const std::string& why) {
    return "output name '" + pattern + "': " + why;
}

TEST(FrameName, FillsHashesWithAsManyDigits) {
    EXPECT_EQ(FrameName("sky.####.exr").at(7), "sky.0007.exr");
    EXPECT_EQ(FrameName("sky.##.exr").at(7), "sky.07.exr");
    EXPECT_EQ(FrameName("######").at(1001), "001001");
}

TEST(FrameName, TakesAHashByItselfForFourDigits) {
    EXPECT_EQ(FrameName("sky.#.exr").at(7), "sky.0007.exr");
}

TEST(FrameName, FillsPercentSequences) {
    EXPECT_EQ(FrameName("sky.%04d.exr").at(7), "sky.0007.exr");
    EXPECT_EQ(FrameName("sky.%d.exr").at(7), "sky.7.exr");
    EXPECT_EQ(FrameName("%012d").at(7), "000000000007");
    EXPECT_EQ(FrameName("%01d").at(7), "7");
}

TEST(FrameName, LetsLongNumbersOutgrowTheirPlace) {
    EXPECT_EQ(FrameName("sky.##.exr").at(12345), "sky.12345.exr");
    EXPECT_EQ(FrameName("sky.%02d.exr").at(-12345), "sky.-12345.exr");
}

TEST(FrameName, WritesNumbersAsPrintfDoes) {
    for (const int frame : {0, 1, 9, 10, 999, 12345, -1, -9, -10, -999, -12345, INT_MAX, INT_MIN}) {
        for (int width = 1; width <= 20; width++) {
            char expected[32];
            snprintf(expected, sizeof expected, "%0*d", width, frame);
            const std::string percent = "%0" + std::to_string(width) + "d";
            EXPECT_EQ(FrameName(percent).at(frame), expected);
            if (width > 1) {
                EXPECT_EQ(FrameName(std::string(std::size_t(width), '#')).at(frame), expected);
            }
        }
    }
}

TEST(FrameName, FillsEveryPlace) {
    EXPECT_EQ(FrameName("##/sky.%03d.#").at(5), "05/sky.005.0005");
    EXPECT_EQ(FrameName("%d%d##").at(5), "5505");
}

TEST(FrameName, KeepsPercentSignsThatAreDoubled) {
    EXPECT_EQ(FrameName("100%%.#.exr").at(7), "100%.0007.exr");
    EXPECT_EQ(FrameName("%%04d").at(7), "%04d");
    EXPECT_EQ(FrameName("%%%d%%").at(7), "%7%");
}

TEST(FrameName, KnowsWhetherItHasAPlace) {
    EXPECT_TRUE(FrameName("sky.#.exr").has_frame());
    EXPECT_TRUE(FrameName("sky.%d.exr").has_frame());
    EXPECT_FALSE(FrameName("sky.exr").has_frame());
    EXPECT_FALSE(FrameName("100%%.exr").has_frame());
    EXPECT_EQ(FrameName("sky.exr").at(7), "sky.exr");
}

TEST(FrameName, RefusesOtherPercentSequences) {
    for (const std::string rest : {"%", "%s", "%4d", "%0d", "%00d", "%0", "%04", "%004d", "%0100d",
                                   "%-4d", "%+d", "%04i", "%04ld", "%x", "% d", "%V.exr"})
        EXPECT_EQ(failure_of("sky." + rest),
                  refusal("sky." + rest, "'" + rest +
                                             "' does not begin with %d, %04d or the like; "
                                             "a percent sign itself is %%"));
}

TEST(FrameName, RefusesNoNameAtAll) {
    EXPECT_EQ(failure_of(""), refusal("", "no file named"));
}
