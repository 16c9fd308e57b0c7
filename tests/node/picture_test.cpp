// SPDX-License-Identifier: BSD-3-Clause

// What comes out of the node: rows of the frame that it rendered as it was opened.
#include "host/runtime/checks.h"
#include "tests/node/comp.h"
#include "tests/node/sky.h"

using namespace node_test;
using DD::Image::Box;
using DD::Image::ChannelSet;
using DD::Image::Iop;
using DD::Image::Op;
using DD::Image::Row;
using velmora::host::Opened;

namespace {

class NodePicture : public testing::Test {
protected:
    const ScratchFolder folder;
    Comp comp;

    NodePicture() { comp.set_star_file(folder.write("sky", sky(60))); }
};

const float untouched = 12345.5f;

// Rows as a host may have them: with all four channels in use, and something in them.
void fill(Row& row) {
    for (const DD::Image::Channel channel :
         {DD::Image::Chan_Red, DD::Image::Chan_Green, DD::Image::Chan_Blue, DD::Image::Chan_Alpha})
        row.writableConstant(untouched, channel);
}

// The frame as the node has it in memory, of four floats per pixel, the top row first.
std::vector<float> memory_of(const VelmoraNK& node) {
    const float* const first = reinterpret_cast<const float*>(node.image->data);
    return {first, first + 4 * node.image->width * node.image->height};
}

} // namespace

// ---- engine ------------------------------------------------------------------------------------

TEST_F(NodePicture, HasItsLastRowInMemoryAtTheBottom) {
    Op& op = comp.validated();
    const Opened opened(op);
    const std::vector<float> memory = memory_of(inside(op));
    const int width = 24, height = 16;
    int lit_rows = 0;
    for (int y = 0; y < height; y++) {
        Row row(0, width);
        opened.iop().get(y, 0, width, DD::Image::Mask_RGBA, row);
        const float* const from = &memory[std::size_t(4 * width * (height - 1 - y))];
        bool lit = false;
        for (int x = 0; x < width; x++) {
            EXPECT_EQ(row[DD::Image::Chan_Alpha][x], from[4 * x]);
            EXPECT_EQ(row[DD::Image::Chan_Red][x], from[4 * x + 1]);
            EXPECT_EQ(row[DD::Image::Chan_Green][x], from[4 * x + 2]);
            EXPECT_EQ(row[DD::Image::Chan_Blue][x], from[4 * x + 3]);
            lit = lit || from[4 * x + 1] > 0;
        }
        lit_rows += lit;
    }
    EXPECT_GT(lit_rows, height / 2) << "rows that are all black show no order";
}

// One star in the upper left quarter, where the renderer's rows and columns are small: to the right
// goes the right ascension's other way, up the declination.
TEST_F(NodePicture, StandsOnItsFeet) {
    comp.set("blur_segs", "0");
    comp.set_star_file(folder.write(
        "one", stars_test::sky_bytes("VELMORA1", {stars_test::make_star(100, 8, 10)})));
    const Pixels picture = comp.picture();
    int brightest_x = 0, brightest_y = 0;
    for (int y = 0; y < 16; y++)
        for (int x = 0; x < 24; x++)
            if (picture.at(x, y)[0] > picture.at(brightest_x, brightest_y)[0]) {
                brightest_x = x;
                brightest_y = y;
            }
    // 10 and 8 degrees off the axis: 3.2 tan 10 = 0.56 of 1.5 to the left, and 3.2 tan 8 / cos 10 =
    // 0.46 of 1 up: 24 (0.5 - 0.56 / 3) = 7.5 from the left, 16 (0.5 + 0.46 / 2) - 1 = 10.7 from
    // the bottom, as pixel (x, y) is sampled at (x, y) from the top.
    EXPECT_TRUE(brightest_x == 7 || brightest_x == 8) << brightest_x;
    EXPECT_TRUE(brightest_y == 10 || brightest_y == 11) << brightest_y;
}

TEST_F(NodePicture, WritesAllFourChannelsWhateverIsAsked) {
    Op& op = comp.validated();
    const Opened opened(op);
    const Pixels expected = pulled(opened.iop());
    const DD::Image::ChannelSetInit asked[] = {DD::Image::Mask_Red, DD::Image::Mask_Alpha,
                                               DD::Image::Mask_RGB, DD::Image::Mask_RGBA};
    for (const DD::Image::ChannelSetInit channels : asked) {
        Row row(0, 24);
        opened.iop().get(5, 0, 24, channels, row);
        EXPECT_TRUE(row.writable_channels() == ChannelSet(DD::Image::Mask_RGBA)) << channels;
        Pixels line(Box(0, 5, 24, 6)), expected_line(Box(0, 5, 24, 6));
        line.take(row, 5, 0, 24);
        std::copy(expected.at(0, 5), expected.at(0, 5) + 4 * 24, expected_line.at(0, 5));
        EXPECT_TRUE(same_bits(line, expected_line)) << channels;
    }
}

TEST_F(NodePicture, ComesInSpansOfAnyLength) {
    velmora::host::set_checks_plugins(true); // no float beside a span
    Op& op = comp.validated();
    const Opened opened(op);
    const Pixels whole = pulled(opened.iop());
    EXPECT_FALSE(whole.is_black());
    for (const int span : {1, 2, 5, 23, 24, 100}) {
        velmora::host::Pulling pulling;
        pulling.span = span;
        pulling.shuffled = unsigned(span);
        EXPECT_TRUE(same_bits(pulled(opened.iop(), pulling), whole)) << span;
    }
    Row none(7, 7);
    opened.iop().get(3, 7, 7, DD::Image::Mask_RGBA, none);
}

// The box of the format is a window onto the frame, whose corner stays at (0, 0).
TEST_F(NodePicture, IsCutToTheFormatsBox) {
    const Pixels whole = comp.picture();
    comp.set("format", "\"24 16 3 2 20 11 1 cut\"");
    const Pixels cut = comp.picture();
    ASSERT_TRUE(cut.box == Box(3, 2, 20, 11));
    for (int y = 2; y < 11; y++)
        for (int x = 3; x < 20; x++)
            for (int k = 0; k < 4; k++)
                EXPECT_EQ(cut.at(x, y)[k], whole.at(x, y)[k]) << x << " " << y;
}

TEST_F(NodePicture, LeavesTheRowsOfAnAbortedRenderAlone) {
    Op& op = comp.validated();
    const Opened opened(op);
    comp.tree.abort();
    Row filled(0, 24), empty(0, 24);
    fill(filled);
    opened.iop().get(8, 0, 24, DD::Image::Mask_RGBA, filled);
    opened.iop().get(8, 0, 24, DD::Image::Mask_RGBA, empty);
    for (const DD::Image::Channel channel :
         {DD::Image::Chan_Red, DD::Image::Chan_Green, DD::Image::Chan_Blue, DD::Image::Chan_Alpha})
        for (int x = 0; x < 24; x++)
            EXPECT_EQ(filled[channel][x], untouched);
    EXPECT_TRUE(empty.writable_channels() == ChannelSet(DD::Image::Mask_None));
}

// ---- open and close ----------------------------------------------------------------------------

TEST_F(NodePicture, IsThereFromOpenToClose) {
    Op& op = comp.validated();
    EXPECT_EQ(inside(op).image, nullptr);
    {
        const Opened opened(op);
        EXPECT_NE(inside(op).image, nullptr);
    }
    EXPECT_EQ(inside(op).image, nullptr);
    EXPECT_NE(inside(op).star_input, nullptr);
}

TEST_F(NodePicture, IsOfTheFormatsSizeEachTimeItIsOpened) {
    for (const char* const format : {"\"24 16\"", "\"5 40\"", "\"1 1\"", "\"33 7\""}) {
        comp.set("format", format);
        Op& op = comp.validated();
        const Opened opened(op);
        const Kess::Image& image = *inside(op).image;
        EXPECT_EQ(image.width, opened.iop().format().width());
        EXPECT_EQ(image.height, opened.iop().format().height());
        EXPECT_EQ(image.stride, u32(16 * image.width));
    }
}

TEST_F(NodePicture, IsWholeAgainAfterAnAbortedOne) {
    const Pixels expected = comp.picture();
    {
        Op& op = comp.validated();
        const Opened opened(op);
        comp.tree.abort();
        EXPECT_EQ(pulled(opened.iop()).at(0, 0)[0], Pixels::guard) << "nothing is delivered";
    }
    EXPECT_TRUE(same_bits(comp.picture(), expected));
}

TEST_F(NodePicture, OfTwoNodesComesFromTwoFrames) {
    Comp other;
    other.set_star_file(folder.write("other", sky(60, 2)));
    const Pixels a = comp.picture(), b = other.picture();
    Op& op = comp.validated();
    Op& other_op = other.validated();
    const Opened opened(op), other_opened(other_op);
    EXPECT_TRUE(same_bits(pulled(opened.iop()), a));
    EXPECT_TRUE(same_bits(pulled(other_opened.iop()), b));
    EXPECT_FALSE(same_bits(a, b));
}
