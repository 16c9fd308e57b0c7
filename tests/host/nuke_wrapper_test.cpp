// SPDX-License-Identifier: BSD-3-Clause
#include "tests/host/comp.h"

#include <DDImage/CameraOp.h>
#include <DDImage/NukeWrapper.h>

using namespace velmora;
using namespace velmora::host;
using namespace DD::Image;

// A node that adds 100 to its source, in the wrapper with everything; and two images.
class NukeWrapperTest : public CompTest {
protected:
    Node& raise = create("Raise", "up");
    Node& source = create("Ramp", "source");
    Node& mask = create("Ramp", "mask");
    OpTree tree{raise};

    NukeWrapperTest() {
        EXPECT_TRUE(raise.set_input(0, &source));
        set(mask, "level", 0.25); // its alpha
    }

    // Column 2 of row 1: red and green are the column and the row.
    Pixel pixel() {
        const Opened opened(tree.at(1));
        return pulled(opened.iop(), Box(2, 1, 3, 2))[0];
    }
};

TEST_F(NukeWrapperTest, ShowsItsOpWhenNothingIsAdded) {
    EXPECT_EQ(pixel(), (Pixel{102, 101, 100, 101}));
}

TEST_F(NukeWrapperTest, AnswersForItsOp) {
    auto& wrapper = dynamic_cast<NukeWrapper&>(tree.at(1));
    EXPECT_STREQ(wrapper.Class(), "Raise");
    EXPECT_STREQ(wrapper.node_help(), "Adds 100.");
    EXPECT_STREQ(wrapper.displayName(), "Raise");
    EXPECT_STREQ(wrapper.node_shape(), "box");
    EXPECT_EQ(wrapper.node_color(), 0u);
    EXPECT_TRUE(wrapper.can_clone());
    EXPECT_EQ(wrapper.iop(), &wrapper);
    EXPECT_EQ(wrapper.uses_input(0), 1);
    EXPECT_EQ(wrapper.uses_input(1), 1);
    EXPECT_EQ(wrapper.split_input(0), 1);
    EXPECT_EQ(wrapper.split_input(1), 1);
    EXPECT_EQ(wrapper.wrapped_iop()->outputContext(), wrapper.outputContext());
    EXPECT_EQ(wrapper.wrapped_iop()->input(0), wrapper.input(0));
    validate(wrapper);
    EXPECT_EQ(wrapper.info(), wrapper.wrapped_iop()->info());
    EXPECT_EQ(wrapper.channels(), ChannelSet(Mask_RGBA));
    EXPECT_EQ(wrapper.out_channels(), wrapper.wrapped_iop()->out_channels());
}

TEST_F(NukeWrapperTest, PutsTheMaskBehindTheOpsInputs) {
    const Op& op = raise.prototype();
    char buffer[100];
    EXPECT_EQ(op.inputs(), 2);
    EXPECT_EQ(op.maximum_inputs(), 2);
    EXPECT_EQ(op.optional_input(), 1);
    EXPECT_STREQ(op.input_label(0, buffer), "source");
    EXPECT_STREQ(op.input_label(1, buffer), "mask");
    EXPECT_EQ(op.default_input(1), nullptr);
    EXPECT_NE(op.default_input(0), nullptr);
    EXPECT_TRUE(op.test_input(1, &mask.prototype()));
    EXPECT_FALSE(raise.set_input(1, &create("Camera2")));
}

TEST_F(NukeWrapperTest, LeavesOutWhatItIsTold) {
    const Op& op = create("BareRaise").prototype();
    EXPECT_EQ(op.inputs(), 1);
    EXPECT_EQ(op.maximum_inputs(), 1);
    EXPECT_EQ(op.optional_input(), -1);
}

TEST_F(NukeWrapperTest, ChangesTheChosenChannelsAlone) {
    ASSERT_TRUE(raise.knob("channels")->from_script("{rgba.red rgba.alpha}"));
    EXPECT_EQ(pixel(), (Pixel{102, 1, 0, 101}));
    ASSERT_TRUE(raise.knob("channels")->from_script("none"));
    EXPECT_EQ(pixel(), (Pixel{2, 1, 0, 1}));
}

TEST_F(NukeWrapperTest, MixesWithItsSource) {
    set(raise, "mix", 0.5);
    EXPECT_EQ(pixel(), (Pixel{52, 51, 50, 51}));
    set(raise, "mix", 0);
    EXPECT_EQ(pixel(), (Pixel{2, 1, 0, 1}));
}

TEST_F(NukeWrapperTest, HoldsWhereItsMaskDoes) {
    ASSERT_TRUE(raise.set_input(1, &mask));
    EXPECT_EQ(pixel(), (Pixel{27, 26, 25, 26}));
    set(mask, "r", 2); // ends before the pixel
    set(mask, "black_outside", 1);
    EXPECT_EQ(pixel(), (Pixel{2, 1, 0, 1}));
    set(mask, "r", 3);
    EXPECT_EQ(pixel(), (Pixel{27, 26, 25, 26}));
}

TEST_F(NukeWrapperTest, MultipliesMixAndMask) {
    ASSERT_TRUE(raise.set_input(1, &mask));
    ASSERT_TRUE(raise.knob("channels")->from_script("rgb"));
    set(raise, "mix", 0.5);
    EXPECT_EQ(pixel(), (Pixel{14.5, 13.5, 12.5, 1}));
}

TEST_F(NukeWrapperTest, ShowsBlackBeneathWhereThereIsNoSource) {
    ASSERT_TRUE(raise.set_input(0, nullptr));
    EXPECT_EQ(pixel(), (Pixel{0, 0, 0, 0})); // black has no channels to add to
    Node& ramp = create("Sum");
    ASSERT_TRUE(ramp.set_input(0, &source));
    ASSERT_TRUE(raise.set_input(0, &ramp));
    EXPECT_EQ(pixel(), (Pixel{102, 101, 100, 101}));
}

TEST_F(NukeWrapperTest, AsksItsMaskForAlpha) {
    ASSERT_TRUE(raise.set_input(1, &mask));
    const Opened opened(tree.at(1));
    EXPECT_EQ(tree.ops_of(mask)[0]->iop()->requestedBox(), Box(0, 0, 4, 3));
    EXPECT_TRUE(tree.ops_of(mask)[0]->opened());
    EXPECT_TRUE(tree.ops_of(source)[0]->opened());
}

TEST_F(NukeWrapperTest, FailsWithItsMask) {
    ASSERT_TRUE(raise.set_input(1, &mask));
    set_text(mask, "trouble", "error in validate");
    EXPECT_EQ(error_of([&] { validate(tree.at(1)); }), "mask: level 0.25 does not do");
}

TEST_F(NukeWrapperTest, HashesItsOwnKnobsAndTheMask) {
    const Hash before = tree.at(1).hash();
    set(raise, "mix", 0.5);
    EXPECT_NE(tree.at(1).hash(), before);
    set(raise, "mix", 1);
    ASSERT_TRUE(raise.knob("channels")->from_script("rgb"));
    EXPECT_NE(tree.at(1).hash(), before);
    ASSERT_TRUE(raise.knob("channels")->from_script("all"));
    EXPECT_EQ(tree.at(1).hash(), before);
    ASSERT_TRUE(raise.set_input(1, &mask));
    EXPECT_NE(tree.at(1).hash(), before);
}

TEST_F(NukeWrapperTest, LeavesTheRowAloneOnceItIsAborted) {
    ASSERT_TRUE(raise.knob("channels")->from_script("none")); // everything comes from the source
    set(raise, "mix", 0.5);
    const Opened opened(tree.at(1));
    tree.abort();
    Row row(0, 4);
    row.writableConstant(-1, Chan_Red);
    opened.iop().get(1, 0, 4, Mask_RGBA, row);
    EXPECT_EQ(row[Chan_Red][2], -1);
    EXPECT_TRUE(row.is_zero(Chan_Alpha));
}

// ---- around ops of the test's own --------------------------------------------------------------

namespace {

// An image that fails in validate and records whether it was aborted.
class Failing : public Iop {
public:
    explicit Failing(bool& gone) : Iop(nullptr), gone(gone) { inputs(0); }
    ~Failing() override { gone = true; }
    const char* Class() const override { return "Failing"; }
    const char* node_help() const override { return ""; }
    void engine(int, int, int, ChannelMask, Row&) override {}

protected:
    void _validate(bool) override { error("in the middle"); }

private:
    bool& gone;
};

} // namespace

TEST(NukeWrapper, OwnsItsOp) {
    bool gone = false;
    {
        const NukeWrapper wrapper(new Failing(gone));
        EXPECT_FALSE(gone);
    }
    EXPECT_TRUE(gone);
}

TEST(NukeWrapper, TellsTheErrorsOfAnOpInManyWrappers) {
    bool gone = false;
    NukeWrapper outer((new NukeWrapper(new Failing(gone)))->noMask()->noMix());
    outer.validate();
    EXPECT_EQ(outer.error_message(), "in the middle");
    EXPECT_EQ(outer.error_op(), &outer);
    outer.wrapped_iop()->invalidate(); // forgets it for all of them
    EXPECT_FALSE(outer.has_error());
    EXPECT_FALSE(outer.valid());
}

TEST(NukeWrapper, StopsAnOpInManyWrappers) {
    bool gone = false;
    auto* const failing = new Failing(gone);
    NukeWrapper outer(new NukeWrapper(failing));
    std::atomic<bool> stop{false};
    outer.set_abort_switch(&stop);
    EXPECT_FALSE(failing->aborted());
    failing->abort();
    EXPECT_TRUE(stop);
    EXPECT_TRUE(outer.aborted());
}
