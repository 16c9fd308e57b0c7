// SPDX-License-Identifier: BSD-3-Clause
#include "tests/host/comp.h"

#include <algorithm>
#include <DDImage/CameraOp.h>

using namespace velmora;
using namespace velmora::host;
using namespace DD::Image;

class IopTest : public CompTest {
protected:
    Node& ramp = create("Ramp", "R");
    OpTree tree{ramp};

    // Columns 2 to 5 of rows 1 to 3.
    IopTest() {
        set(ramp, "x", 2);
        set(ramp, "y", 1);
        set(ramp, "r", 6);
        set(ramp, "t", 4);
    }
};

TEST_F(IopTest, IsItsOwnImage) {
    Op& op = tree.at(1);
    ASSERT_NE(op.iop(), nullptr);
    EXPECT_EQ(static_cast<Op*>(op.iop()), &op);
}

TEST_F(IopTest, TellsItsBoxFormatAndChannels) {
    ASSERT_TRUE(ramp.knob("format")->from_script("\"100 50 2\""));
    Op& op = tree.at(1);
    validate(op);
    const Iop& iop = *op.iop();
    EXPECT_EQ(iop.info(), Box(2, 1, 6, 4));
    EXPECT_EQ(iop.x(), 2);
    EXPECT_EQ(iop.y(), 1);
    EXPECT_EQ(iop.r(), 6);
    EXPECT_EQ(iop.t(), 4);
    EXPECT_EQ(iop.w(), 4);
    EXPECT_EQ(iop.h(), 3);
    EXPECT_EQ(iop.format(), Format(100, 50, 2));
    EXPECT_EQ(iop.full_size_format(), Format(100, 50, 2));
    EXPECT_EQ(iop.channels(), ChannelSet(Mask_RGBA));
}

TEST_F(IopTest, RepeatsItsEdgeBesideTheBox) {
    const Opened opened(tree.at(1));
    for (int y = -2; y < 7; y++) {
        for (int x = -4; x < 12; x++) {
            for (int r = x + 1; r <= 12; r++) {
                Row row(x, r);
                opened.iop().get(y, x, r, Mask_RGBA, row);
                for (int column = x; column < r; column++) {
                    ASSERT_EQ(row[Chan_Red][column], float(std::clamp(column, 2, 5)))
                        << y << " " << x << " " << r;
                    ASSERT_EQ(row[Chan_Green][column], float(std::clamp(y, 1, 3)));
                    ASSERT_EQ(row[Chan_Alpha][column], 1);
                }
            }
        }
    }
}

TEST_F(IopTest, IsBlackBesideTheBoxWhenItSaysSo) {
    set(ramp, "black_outside", 1);
    const Opened opened(tree.at(1));
    for (int y = -2; y < 7; y++) {
        for (int x = -4; x < 12; x++) {
            for (int r = x + 1; r <= 12; r++) {
                Row row(x, r);
                opened.iop().get(y, x, r, Mask_RGBA, row);
                for (int column = x; column < r; column++) {
                    const bool inside = y >= 1 && y < 4 && column >= 2 && column < 6;
                    ASSERT_EQ(row[Chan_Red][column], inside ? float(column) : 0)
                        << y << " " << x << " " << r;
                    ASSERT_EQ(row[Chan_Alpha][column], inside ? 1 : 0);
                }
            }
        }
    }
}

TEST_F(IopTest, FillsASpanOfAWiderRowAndNothingElse) {
    const Opened opened(tree.at(1));
    for (const auto& [x, r] : {std::pair(3, 5), std::pair(-1, 8), std::pair(7, 9)}) {
        Row row(-3, 10);
        row.writableConstant(-1, Chan_Red);
        row.writableConstant(-1, Chan_Z);
        opened.iop().get(2, x, r, Mask_RGBA, row);
        for (int column = -3; column < 10; column++) {
            const bool asked = column >= x && column < r;
            EXPECT_EQ(row[Chan_Red][column], asked ? float(std::clamp(column, 2, 5)) : -1);
            EXPECT_EQ(row[Chan_Z][column], -1); // not asked for
        }
    }
}

TEST_F(IopTest, HasZerosInChannelsThatItDoesNotList) {
    set(ramp, "without_blue", 1);
    set(ramp, "timed", 1);
    const Opened opened(tree.at(7));
    Row row(0, 8);
    for (const Channel z : {Chan_Red, Chan_Blue, Chan_Z})
        row.writableConstant(-1, z);
    opened.iop().get(2, 0, 8, ChannelSet(Mask_RGBA) + Mask_Z, row);
    EXPECT_EQ(row[Chan_Red][3], 3);
    EXPECT_TRUE(row.is_zero(Chan_Blue));
    EXPECT_TRUE(row.is_zero(Chan_Z));
}

TEST_F(IopTest, GivesNothingForAnEmptySpan) {
    const Opened opened(tree.at(1));
    Row row(3, 3);
    opened.iop().get(2, 3, 3, Mask_RGBA, row);
    EXPECT_TRUE(row.writable_channels().empty());
}

TEST_F(IopTest, IsAlsoAskedByARow) {
    const Opened opened(tree.at(1));
    Row row(2, 4);
    row.get(opened.iop(), 3, 2, 4, Mask_RGB);
    EXPECT_EQ(row[Chan_Red][3], 3);
    EXPECT_EQ(row[Chan_Green][3], 3);
    EXPECT_TRUE(row.is_zero(Chan_Alpha));
}

TEST_F(IopTest, RemembersWhatIsRequestedOfIt) {
    Node& raise = create("BareRaise");
    ASSERT_TRUE(raise.set_input(0, &ramp));
    OpTree raised(raise);
    Op& op = raised.at(1);
    validate(op);
    op.iop()->request(3, 1, 5, 2, Mask_Red, 1);
    op.iop()->request(Box(4, 0, 6, 4), Mask_Alpha, 1);
    EXPECT_EQ(op.iop()->requestedBox(), Box(3, 0, 6, 4));
    const Iop* const below = raised.ops_of(ramp)[0]->iop();
    EXPECT_EQ(below->requestedBox(), Box(3, 0, 6, 4)); // passed on
    op.iop()->request(Mask_Green, 2);
    EXPECT_EQ(op.iop()->requestedBox(), Box(2, 0, 6, 4)); // all of its box

    set(ramp, "level", 2); // another image forgets the requests
    op.validate();
    raised.at(1).iop()->request(0, 0, 1, 1, Mask_Red, 1);
    EXPECT_EQ(op.iop()->requestedBox(), Box(0, 0, 1, 1));
}

TEST_F(IopTest, TakesImagesOnlyAndBlackInPlaceOfNone) {
    Node& raise = create("BareRaise");
    OpTree raised(raise);
    const Op& op = raised.at(1);
    EXPECT_STREQ(op.input(0)->Class(), "Black");
    EXPECT_FALSE(raise.set_input(0, &create("Camera2")));
    EXPECT_EQ(row_of(raised, 1, 5, -3, -1, Chan_Red), (std::vector<float>{0, 0}));
    const Iop* const black = op.input(0)->iop();
    EXPECT_TRUE(black->channels().empty());
    EXPECT_TRUE(black->info().black_outside());
    EXPECT_EQ(black->format(), graph.format());
}

namespace {

// Looks at its inputs in the ways that an op may.
class Looker : public Iop {
public:
    Looker() : Iop(nullptr) { inputs(3); }
    const char* Class() const override { return "Looker"; }
    const char* node_help() const override { return ""; }
    void engine(int, int, int, ChannelMask, Row&) override {}
    void copy_info_of(int n) { copy_info(n); }
    IopInfo& own_info() { return info_; }
    using Iop::set_out_channels;
};

} // namespace

TEST_F(IopTest, SeesInputsAsImagesWhereTheyAreSome) {
    Op& op = tree.at(1);
    CameraOp camera(nullptr);
    Looker looker, other;
    looker.set_input(0, &op, 0, 0);
    looker.set_input(1, &other, 1, 0);
    looker.set_input(2, &camera, 2, 0);
    EXPECT_EQ(looker.input(0), op.iop());
    EXPECT_EQ(&looker.input0(), op.iop());
    EXPECT_EQ(&looker.input1(), &other);
    EXPECT_EQ(looker.input(2), nullptr);
    EXPECT_EQ(looker.Op::input(2), &camera);
    EXPECT_EQ(looker.input(2, 0), nullptr);
    EXPECT_EQ(looker.input(0, 0), op.iop());
    EXPECT_EQ(looker.input(0, 1), nullptr);
}

TEST_F(IopTest, ShowsItsFirstInputsInfoUnlessItSaysOtherwise) {
    Looker looker;
    EXPECT_EQ(looker.default_input(0), nullptr); // no node, no project
    looker.set_input(0, &tree.at(1), 0, 0);
    looker.validate();
    EXPECT_EQ(looker.info(), Box(2, 1, 6, 4));
    EXPECT_EQ(looker.channels(), ChannelSet(Mask_RGBA));
    looker.copy_info_of(2); // unconnected
    EXPECT_EQ(looker.info(), Box(2, 1, 6, 4));
    ChannelSet channels = Mask_Red;
    looker.in_channels(0, channels);
    EXPECT_EQ(channels, ChannelSet(Mask_Red));
}

TEST_F(IopTest, ChangesAllChannelsUnlessItSaysOtherwise) {
    Looker looker;
    EXPECT_TRUE(ChannelSet(looker.out_channels()).all());
    looker.set_out_channels(Mask_RGB);
    EXPECT_EQ(looker.out_channels(), ChannelSet(Mask_RGB));
}

TEST_F(IopTest, IsValidatedByForce) {
    Op& op = tree.at(1);
    validate(op);
    set(ramp, "r", 9);
    DD::Image::Hash ignored;
    ramp.store_all(op, ignored);
    op.validate();
    EXPECT_EQ(op.iop()->r(), 6); // its hash has not changed
    op.iop()->force_validate();
    EXPECT_EQ(op.iop()->r(), 9);
}

TEST(IopInfo, TurnsChannelsOnAndOff) {
    IopInfo info;
    EXPECT_TRUE(info.channels().empty());
    info.channels(Mask_RGB);
    info.turn_on(Mask_Z);
    info.turn_off(Mask_Green);
    EXPECT_EQ(info.channels(), ChannelSet(Mask_Red) + Mask_Blue + Mask_Z);
    info.channels() += Mask_Alpha;
    EXPECT_TRUE(info.channels().contains(Chan_Alpha));
    EXPECT_FALSE(info.black_outside());
    EXPECT_TRUE(info.format().is_none());
    EXPECT_EQ(info.first_frame(), 1);
    info.first_frame(5);
    info.last_frame(9);
    EXPECT_EQ(info.first_frame(), 5);
    EXPECT_EQ(info.last_frame(), 9);
}
