// SPDX-License-Identifier: BSD-3-Clause

// Sizes that cannot be drawn: told at validation, black, and never read past the image.
#include "host/knobs/format_knob.h"
#include "tests/node/comp.h"
#include "tests/node/sky.h"
#include "tests/stars/sky.h"

#include <climits>
#include <unistd.h>

using namespace node_test;
using DD::Image::Box;
using DD::Image::Format;
using DD::Image::Op;
using DD::Image::Row;

namespace {

const DD::Image::Channel channels[] = {DD::Image::Chan_Red, DD::Image::Chan_Green,
                                       DD::Image::Chan_Blue, DD::Image::Chan_Alpha};

class NodeLimits : public testing::Test {
protected:
    const ScratchFolder folder;
    Comp comp;

    NodeLimits() { comp.set_star_file(folder.write("sky", sky(60))); }

    void set_format(int width, int height) {
        dynamic_cast<velmora::host::FormatKnob&>(*comp.stars.knob("format"))
            .set_format(Format(width, height));
    }

    // What a validation says.
    std::string told() {
        Op& op = comp.tried();
        return op.has_error() ? op.error_message() : "";
    }

    // Whether engine fills columns [x, r) of row y with black, for a host that asks for any.
    testing::AssertionResult is_black(Op& op, int y, int x, int r) {
        Row row(x, r);
        for (const DD::Image::Channel channel : channels)
            row.writableConstant(7, channel);
        const_cast<VelmoraNK&>(inside(op)).engine(y, x, r, DD::Image::Mask_RGBA, row);
        for (const DD::Image::Channel channel : channels)
            for (int column = x; column < r; column++)
                if (row[channel][column] != 0)
                    return testing::AssertionFailure()
                           << "row " << y << " column " << column << ": " << row[channel][column];
        return testing::AssertionSuccess();
    }

    void open(Op& op) {
        op.iop()->request(Box(0, 0, 1, 1), DD::Image::Mask_RGBA, 1);
        op.open();
    }
};

const int far_away[] = {INT_MIN, -1000000, -1, 0, 1, 15, 16, 1000000, INT_MAX - 1};

} // namespace

TEST_F(NodeLimits, RefuseFormatsOfFourGigabytesAndMore) {
    const struct {
        int width, height;
    } formats[] = {{16384, 16384}, {16385, 16384}, {32768, 8192},      {65536, 65536},
                   {1, 268435456}, {268435456, 1}, {2000000, 2000000}, {INT_MAX, INT_MAX}};
    for (const auto& format : formats) {
        set_format(format.width, format.height);
        EXPECT_EQ(told(), "Format " + std::to_string(format.width) + " x " +
                              std::to_string(format.height) +
                              " is too large: an image takes 16 bytes per pixel and must stay "
                              "below 4 GiB");
        Op& op = comp.tree.at(1);
        EXPECT_EQ(inside(op).star_input, nullptr) << "nothing is opened";
        open(op);
        EXPECT_EQ(inside(op).image, nullptr);
        for (const int y : far_away)
            for (const int x : {-5, 0, 16380, 1000000})
                EXPECT_TRUE(is_black(op, y, x, x + 9)) << format.width << " x " << format.height;
        op.close();
    }
}

TEST_F(NodeLimits, RefuseFormatsWithoutPixels) {
    const struct {
        int width, height;
    } formats[] = {
        {0, 0},      {0, 10}, {10, 0}, {-1, 10}, {10, -1}, {-65536, -65536}, {INT_MIN, INT_MIN},
        {INT_MIN, 1}};
    for (const auto& format : formats) {
        set_format(format.width, format.height);
        EXPECT_EQ(told(), "Format " + std::to_string(format.width) + " x " +
                              std::to_string(format.height) + " has no pixels");
        Op& op = comp.tree.at(1);
        open(op);
        EXPECT_EQ(inside(op).image, nullptr);
        for (const int y : far_away)
            EXPECT_TRUE(is_black(op, y, -3, 12));
        op.close();
    }
}

TEST_F(NodeLimits, DrawAgainOnceTheFormatFits) {
    const Pixels expected = comp.picture();
    set_format(16384, 16384);
    EXPECT_NE(told(), "");
    set_format(24, 16);
    EXPECT_EQ(told(), "");
    EXPECT_TRUE(same_bits(comp.picture(), expected));
}

// 1 x 268435455 is the last that fits; drawing it would take 4 GiB.
TEST_F(NodeLimits, TakeTheLargestFormatsThatFit) {
    const struct {
        int width, height;
    } formats[] = {{1, 268435455}, {268435455, 1}, {16384, 16383}};
    for (const auto& format : formats) {
        set_format(format.width, format.height);
        EXPECT_EQ(told(), "");
    }
}

TEST_F(NodeLimits, GiveBlackBesideThePicture) {
    Op& op = comp.validated();
    open(op);
    for (const int y : far_away) {
        if (y >= 0 && y < 16)
            continue;
        for (const int x : {-30, 0, 20})
            EXPECT_TRUE(is_black(op, y, x, x + 10));
    }
    for (int y = 0; y < 16; y++) {
        EXPECT_TRUE(is_black(op, y, -8, 0));
        EXPECT_TRUE(is_black(op, y, 24, 40));
        EXPECT_TRUE(is_black(op, y, 100000000, 100000008));
        EXPECT_TRUE(is_black(op, y, -100000008, -100000000));
        EXPECT_TRUE(is_black(op, y, 5, 5));
    }
    op.close();
}

TEST_F(NodeLimits, GiveThePictureBetweenTheBlack) {
    const Pixels expected = comp.picture();
    Op& op = comp.validated();
    open(op);
    for (int y = 0; y < 16; y++) {
        Row row(-6, 31);
        const_cast<VelmoraNK&>(inside(op)).engine(y, -6, 31, DD::Image::Mask_RGBA, row);
        for (int k = 0; k < 4; k++)
            for (int x = -6; x < 31; x++)
                EXPECT_EQ(row[channels[k]][x], x < 0 || x >= 24 ? 0 : expected.at(x, y)[k]) << x;
    }
    op.close();
}

TEST_F(NodeLimits, GiveBlackAfterClosing) {
    Op& op = comp.validated();
    EXPECT_TRUE(is_black(op, 3, 0, 24)) << "never opened";
    open(op);
    op.close();
    EXPECT_TRUE(is_black(op, 3, 0, 24));
}

TEST_F(NodeLimits, RefuseMoreSegmentsThanTheMost) {
    for (const int segments : {100001, 1000000000, INT_MAX - 1, INT_MAX}) {
        comp.set("blur_segs", std::to_string(segments));
        EXPECT_EQ(told(), "Motion Blur Segments " + std::to_string(segments) +
                              " are too many: the most is 100000");
        Op& op = comp.tree.at(1);
        EXPECT_EQ(op.split_input(1), 1);
        open(op);
        EXPECT_EQ(inside(op).image, nullptr);
        EXPECT_TRUE(is_black(op, 3, 0, 24));
        op.close();
    }
    comp.set("blur_segs", "2");
    EXPECT_EQ(told(), "");
    EXPECT_FALSE(comp.picture().is_black());
}

TEST_F(NodeLimits, TakeTheMostSegments) {
    comp.set("blur_segs", "100000");
    EXPECT_EQ(told(), "");
    EXPECT_EQ(inside(comp.tree.at(1)).cameras.len(), 100001u);
}

// A file that nobody writes to would be waited for, for ever.
TEST_F(NodeLimits, RefuseADatabaseThatIsNoRegularFile) {
    const std::string pipe = folder.file("pipe");
    OSAPI::make_named_pipe(pipe.c_str());
    alarm(20);
    comp.set_star_file(pipe);
    EXPECT_EQ(told(), "Star database file '" + pipe + "' is missing or invalid");
    comp.set_star_file("/dev/zero");
    EXPECT_EQ(told(), "Star database file '/dev/zero' is missing or invalid");
    alarm(0);
    EXPECT_EQ(inside(comp.tree.at(1)).star_input, nullptr);
}

// A sparse file: no byte of its stars is on the disk.
TEST_F(NodeLimits, RefuseADatabaseOfMoreRecordsThanCanBeCounted) {
    const std::string path = folder.write("many", stars_test::header_bytes());
    ASSERT_EQ(truncate(path.c_str(), off_t(1) << 37), 0);
    comp.set_star_file(path);
    EXPECT_EQ(told(), "Star database file '" + path + "' is missing or invalid");
}
