// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/chan.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::host;

static std::string error_of(const std::string& text) {
    try {
        Chan::parse(text, "shot.chan");
    } catch (const ChanError& error) {
        return error.what();
    }
    return "no error";
}

// The sample's columns as in the file; 0 for a missing field of view.
static std::vector<double> columns_of(const ChanSample& sample) {
    const auto& t = sample.transform.translate;
    const auto& r = sample.transform.rotate;
    return {t[0], t[1], t[2], r[0], r[1], r[2], sample.vfov.value_or(0)};
}

typedef std::vector<double> Columns;

TEST(Chan, GivesAFramesNumbersBackExactly) {
    const Chan chan = Chan::parse("1 0.1 0.2 0.3 10.7 20.9 -30.3 45.1\n"
                                  "3 1e-3 +2 -.5 1e2 400 .25 60\n",
                                  "shot.chan");
    EXPECT_EQ(columns_of(chan.sample(1)), (Columns{0.1, 0.2, 0.3, 10.7, 20.9, -30.3, 45.1}));
    EXPECT_EQ(columns_of(chan.sample(3)), (Columns{0.001, 2, -0.5, 100, 400, 0.25, 60}));
    EXPECT_EQ(chan.first_frame(), 1);
    EXPECT_EQ(chan.last_frame(), 3);
    EXPECT_TRUE(chan.has_vfov());
}

TEST(Chan, GoesStraightFromFrameToFrameInEveryColumn) {
    const Chan chan = Chan::parse("10 0 0 0 0 350 0 40\n"
                                  "14 4 8 -4 2 10 360 60\n"
                                  "15 5 8 0 2 12 0 60\n",
                                  "shot.chan");
    // A quarter of the way; angles are numbers, so 350 goes down to 10.
    EXPECT_EQ(columns_of(chan.sample(11)), (Columns{1, 2, -1, 0.5, 265, 90, 45}));
    EXPECT_EQ(columns_of(chan.sample(12.5)), (Columns{2.5, 5, -2.5, 1.25, 137.5, 225, 52.5}));
    EXPECT_EQ(columns_of(chan.sample(14.5)), (Columns{4.5, 8, -2, 2, 11, 180, 60}));
}

TEST(Chan, StandsStillBeforeTheFirstFrameAndAfterTheLast) {
    const Chan chan = Chan::parse("1 1 2 3 4 5 6\n2 7 8 9 10 11 12\n", "shot.chan");
    const Columns first = {1, 2, 3, 4, 5, 6, 0}, last = {7, 8, 9, 10, 11, 12, 0};
    EXPECT_EQ(columns_of(chan.sample(0.999)), first);
    EXPECT_EQ(columns_of(chan.sample(-1e30)), first);
    EXPECT_EQ(columns_of(chan.sample(2.001)), last);
    EXPECT_EQ(columns_of(chan.sample(1e30)), last);
}

TEST(Chan, HoldsOneFrameForAllTime) {
    const Chan chan = Chan::parse("7 1 2 3 4 5 6 50", "shot.chan");
    for (const double time : {-100.0, 7.0, 7.5, 100.0})
        EXPECT_EQ(columns_of(chan.sample(time)), (Columns{1, 2, 3, 4, 5, 6, 50}));
}

TEST(Chan, StaysFiniteBetweenTheLargestNumbers) {
    const Chan chan = Chan::parse("1 1e308 0.1 0 0 0 0\n2 -1e308 0.1 0 0 0 0\n", "shot.chan");
    EXPECT_EQ(columns_of(chan.sample(1.5)), (Columns{0, 0.1, 0, 0, 0, 0, 0}));
}

TEST(Chan, HasNoFieldOfViewWithSevenColumns) {
    const Chan chan = Chan::parse("1 1 2 3 4 5 6\n2 1 2 3 4 5 6\n", "shot.chan");
    EXPECT_FALSE(chan.sample(1).vfov.has_value());
    EXPECT_FALSE(chan.sample(1.5).vfov.has_value());
}

TEST(Chan, SkipsCommentsAndEmptyLines) {
    const Chan chan = Chan::parse("# frame tx ty tz rx ry rz\n"
                                  "\n"
                                  "  \t 1\t1 2   3 4 5 6 \t\n"
                                  "   # a pause\n"
                                  "2 7 8 9 10 11 12 # the end",
                                  "shot.chan");
    EXPECT_EQ(columns_of(chan.sample(1)), (Columns{1, 2, 3, 4, 5, 6, 0}));
    EXPECT_EQ(columns_of(chan.sample(2)), (Columns{7, 8, 9, 10, 11, 12, 0}));
}

TEST(Chan, TakesLinesThatEndInCarriageReturns) {
    const Chan chan = Chan::parse("1 1 2 3 4 5 6\r\n\r\n2 7 8 9 10 11 12\r\n", "shot.chan");
    EXPECT_EQ(columns_of(chan.sample(2)), (Columns{7, 8, 9, 10, 11, 12, 0}));
}

TEST(Chan, TakesFramesThatAreNotWhole) {
    const Chan chan = Chan::parse("-0.5 0 0 0 0 0 0\n0.5 2 0 0 0 0 0\n", "shot.chan");
    EXPECT_EQ(chan.sample(0).transform.translate[0], 1);
}

TEST(Chan, NamesTheLineAndTheWordAtFault) {
    const struct {
        const char *text, *error;
    } cases[] = {
        {"1 2 3\n", "shot.chan:1: 3 columns, but a frame takes 7 or 8"},
        {"1\n", "shot.chan:1: 1 column, but a frame takes 7 or 8"},
        {"\n1 2 3 4 5 6 7 8 9\n", "shot.chan:2: 9 columns, but a frame takes 7 or 8"},
        {"1 1 2 3 4 5 6\n\n2 1 2 3 4 5 6 50\n",
         "shot.chan:3: 8 columns, but the frames before have 7"},
        {"1 1 2 3 4 5 6 50\n2 1 2 3 4 5 6\n",
         "shot.chan:2: 7 columns, but the frames before have 8"},
        {"1 1 2 three 4 5 6\n", "shot.chan:1: 'three' is not a number"},
        {"1 1 2 3 4 5 6,5\n", "shot.chan:1: '6,5' is not a number"},
        {"1 1 2 3 4 5 0x10\n", "shot.chan:1: '0x10' is not a number"},
        {"1 1 2 3 4 5 +\n", "shot.chan:1: '+' is not a number"},
        {"1 1 2 3 4 5 +-1\n", "shot.chan:1: '+-1' is not a number"},
        {"1 1 2 3 4 5 6#\n", "shot.chan:1: '6#' is not a number"},
        {"x 1 2 3 4 5 6\n", "shot.chan:1: 'x' is not a number"},
        {"1 1e999 2 3 4 5 6\n", "shot.chan:1: '1e999' is out of range"},
        {"1 1 2 3 nan 5 6\n", "shot.chan:1: 'nan' is not a finite number"},
        {"1 1 2 3 4 -inf 6\n", "shot.chan:1: '-inf' is not a finite number"},
        {"1 1 2 3 4 5 6 0\n", "shot.chan:1: field of view '0' is not between 0 and 180 degrees"},
        {"1 1 2 3 4 5 6 180\n",
         "shot.chan:1: field of view '180' is not between 0 and 180 degrees"},
        {"1 1 2 3 4 5 6\n1 1 2 3 4 5 6\n", "shot.chan:2: frame '1' does not come after frame '1'"},
        {"2 1 2 3 4 5 6\n1.5 1 2 3 4 5 6\n",
         "shot.chan:2: frame '1.5' does not come after frame '2'"},
        {"1e10 1 2 3 4 5 6\n", "shot.chan:1: frame '1e10' is out of range"},
        {"", "shot.chan: no frame in the file"},
        {"# nothing\n\n", "shot.chan: no frame in the file"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(error_of(c.text), c.error);
}

TEST(Chan, KeepsPlaceAndReasonOfAnErrorApart) {
    try {
        Chan::parse("1\n", "shot.chan");
        FAIL() << "no error";
    } catch (const ChanError& error) {
        EXPECT_EQ(error.where, "shot.chan:1");
        EXPECT_EQ(error.why, "1 column, but a frame takes 7 or 8");
    }
}

TEST(Chan, ReadsATextOfAnyLength) {
    std::string text;
    for (int frame = 1; frame <= 1000; frame++)
        text += std::to_string(frame) + " 1 2 3 4 5 " + std::to_string(2 * frame) + "\n";
    const Chan chan = Chan::parse(text, "shot.chan");
    EXPECT_EQ(columns_of(chan.sample(777.5)), (Columns{1, 2, 3, 4, 5, 1555, 0}));
}

TEST(Chan, NeedsAFrame) {
    EXPECT_EQ(error_of(""), "shot.chan: no frame in the file");
}
