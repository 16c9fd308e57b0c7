// SPDX-License-Identifier: BSD-3-Clause
#include "tools/frames/frame_range.h"

#include "tests/tools/failure_in.h"

#include <gtest/gtest.h>
#include <numeric>

using namespace velmora;

typedef std::vector<int> Frames;

static std::string failure_of(const std::string& text) {
    try {
        parse_frame_range(text);
    } catch (const UsageFailure& failure) {
        return failure.what();
    }
    return "no failure";
}

static std::string refusal(const std::string& text, const std::string& why) {
    return "frame range '" + text + "': " + why;
}

static std::string colon_refusal(const std::string& text, const std::string& piece,
                                 const std::string& with_x) {
    return refusal(text, "'" + piece + "' has two readings: every Nth frame, to be written as " +
                             with_x +
                             ", or staggered, every Nth frame first and then the gaps in finer "
                             "steps");
}

static std::string piece_refusal(const std::string& text, const std::string& piece) {
    return refusal(text, "'" + piece + "' is neither a frame nor a range such as 1-100 or 1-100x2");
}

TEST(FrameRange, NamesOneFrame) {
    EXPECT_EQ(parse_frame_range("5"), Frames{5});
    EXPECT_EQ(parse_frame_range("0"), Frames{0});
    EXPECT_EQ(parse_frame_range("0042"), Frames{42});
    EXPECT_EQ(parse_frame_range("-7"), Frames{-7});
}

TEST(FrameRange, IncludesBothEnds) {
    EXPECT_EQ(parse_frame_range("1-4"), (Frames{1, 2, 3, 4}));
    EXPECT_EQ(parse_frame_range("3-3"), Frames{3});
}

TEST(FrameRange, TakesEveryNthFrameFromTheFirstOn) {
    EXPECT_EQ(parse_frame_range("1-10x3"), (Frames{1, 4, 7, 10}));
    EXPECT_EQ(parse_frame_range("1-9x3"), (Frames{1, 4, 7}));
    EXPECT_EQ(parse_frame_range("1-9x100"), Frames{1});
    EXPECT_EQ(parse_frame_range("1-3x1"), (Frames{1, 2, 3}));
}

TEST(FrameRange, CountsDownWhenTheEndsAreSwapped) {
    EXPECT_EQ(parse_frame_range("4-1"), (Frames{4, 3, 2, 1}));
    EXPECT_EQ(parse_frame_range("10-1x3"), (Frames{10, 7, 4, 1}));
    EXPECT_EQ(parse_frame_range("10-2x3"), (Frames{10, 7, 4}));
}

TEST(FrameRange, TakesNegativeFrames) {
    EXPECT_EQ(parse_frame_range("-5--3"), (Frames{-5, -4, -3}));
    EXPECT_EQ(parse_frame_range("-1-1"), (Frames{-1, 0, 1}));
    EXPECT_EQ(parse_frame_range("-3-3x3"), (Frames{-3, 0, 3}));
    EXPECT_EQ(parse_frame_range("1--1"), (Frames{1, 0, -1}));
    EXPECT_EQ(parse_frame_range("-3--5"), (Frames{-3, -4, -5}));
}

TEST(FrameRange, ListsPiecesBetweenCommasAndBlanks) {
    const Frames expected = {1, 5, 8, 9, 10};
    EXPECT_EQ(parse_frame_range("1,5,8-10"), expected);
    EXPECT_EQ(parse_frame_range("1 5 8-10"), expected);
    EXPECT_EQ(parse_frame_range(" 1,\t5 ,  8-10\n"), expected);
}

TEST(FrameRange, NamesEachFrameOnceInTheOrderOfItsFirstMention) {
    EXPECT_EQ(parse_frame_range("3,1-4,2"), (Frames{3, 1, 2, 4}));
    EXPECT_EQ(parse_frame_range("1-9x4,1-9x2"), (Frames{1, 5, 9, 3, 7}));
}

TEST(FrameRange, ReachesTheEndsOfTheIntegers) {
    EXPECT_EQ(parse_frame_range("2147483646-2147483647"), (Frames{2147483646, 2147483647}));
    EXPECT_EQ(parse_frame_range("-2147483648--2147483647"), (Frames{-2147483647 - 1, -2147483647}));
    EXPECT_EQ(parse_frame_range("-2147483648-2147483647x2147483647"),
              (Frames{-2147483647 - 1, -1, 2147483646}));
}

TEST(FrameRange, TakesAMillionFramesAndNoMore) {
    Frames million(1000000);
    std::iota(million.begin(), million.end(), 1);
    EXPECT_EQ(parse_frame_range("1-1000000"), million);
    EXPECT_EQ(parse_frame_range("1-1000000,5"), million);
    for (const std::string text :
         {"1-1000001", "1-1000000,0", "1-600000 -600000--1", "-2147483648-2147483647"})
        EXPECT_EQ(failure_of(text), refusal(text, "more than 1000000 frames"));
}

TEST(FrameRange, RefusesAColonAndSaysWhy) {
    EXPECT_EQ(failure_of("1-100:2"), colon_refusal("1-100:2", "1-100:2", "1-100x2"));
    EXPECT_EQ(failure_of("7,-9--5:3"), colon_refusal("7,-9--5:3", "-9--5:3", "-9--5x3"));
    // Without a range of its own to correct, the message shows one.
    for (const std::string text : {"5:2", "1:10", "1-10:", ":", "1-10:2:3", "1-10:x2"})
        EXPECT_EQ(failure_of(text), colon_refusal(text, text, "1-100x2"));
}

TEST(FrameRange, QuotesThePieceThatIsNone) {
    for (const std::string piece :
         {"x",   "-",  "--1",    "1-",     "1--",  "1-2-3", "1-10x", "1-10x2x3", "5x2", "1..5",
          "1.5", "+5", "1-10X2", "1-10y2", "0x10", "1-2;",  "1e3",   "1-10x-",   "1–5", "#"}) {
        const std::string text = "7, " + piece + " 9";
        EXPECT_EQ(failure_of(text), piece_refusal(text, piece));
    }
    EXPECT_EQ(failure_of("1 - 5"), piece_refusal("1 - 5", "-"));
}

TEST(FrameRange, RefusesStepsBelowOne) {
    EXPECT_EQ(failure_of("1-10x0"), "frame range '1-10x0': the step of '1-10x0' is not 1 or more");
    EXPECT_EQ(failure_of("10-1x-3"),
              "frame range '10-1x-3': the step of '10-1x-3' is not 1 or more");
}

TEST(FrameRange, RefusesNumbersThatNoIntegerHolds) {
    EXPECT_EQ(failure_of("2147483648"), "frame range '2147483648': '2147483648' is out of range");
    EXPECT_EQ(failure_of("1--2147483649"),
              "frame range '1--2147483649': '-2147483649' is out of range");
    EXPECT_EQ(failure_of("1-2x99999999999999999999"),
              "frame range '1-2x99999999999999999999': '99999999999999999999' is out of range");
}

TEST(FrameRange, RefusesNothingAtAll) {
    for (const std::string text : {"", " "})
        EXPECT_EQ(failure_of(text), refusal(text, "no frame given"));
    EXPECT_EQ(failure_of("\t\n"), refusal("\\x09\\x0a", "no frame given"));
}

TEST(FrameRange, RefusesAListThatIsCutOff) {
    for (const std::string text : {",", "1,", ",1", "1,,2", "1-10, ,3"})
        EXPECT_EQ(failure_of(text), refusal(text, "nothing on one side of a comma"));
}

TEST(FrameRange, FailsWithTheStatusOfAWrongArgument) {
    try {
        parse_frame_range("x");
        FAIL() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status, EXIT_USAGE);
    }
}

TEST(FrameRange, RunsFromOneNumberToAnother) {
    EXPECT_EQ(frames_from_to(3, 5), (Frames{3, 4, 5}));
    EXPECT_EQ(frames_from_to(1, -2), (Frames{1, 0, -1, -2}));
    EXPECT_EQ(frames_from_to(7, 7), Frames{7});
    EXPECT_EQ(frames_from_to(1, most_frames).size(), std::size_t(most_frames));
}

TEST(FrameRange, RefusesMoreNumbersThanAText) {
    EXPECT_EQ(failure_in([] { frames_from_to(-1, most_frames); }),
              "usage: frame range '-1-1000000': more than 1000000 frames");
}
