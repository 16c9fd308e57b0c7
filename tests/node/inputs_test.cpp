// SPDX-License-Identifier: BSD-3-Clause

// What may be connected, and which moments of it the node asks for.
#include "tests/node/comp.h"

#include <DDImage/CameraOp.h>

using namespace node_test;
using DD::Image::Op;
using DD::Image::OutputContext;

namespace {

class NodeInputs : public testing::Test {
protected:
    Comp comp;
    Node& camera = comp.graph.create("Camera2");
    Node& axis = comp.graph.create("Axis2");
    Node& image = comp.graph.create("VelmoraNK");

    Op& op(double frame = 1) { return comp.tree.at(frame); }

    std::vector<double> times(int input, double frame) {
        Op& now = op(frame);
        std::vector<double> frames;
        for (int m = 0; m < now.split_input(input); m++) {
            OutputContext scratch;
            scratch.setFrame(-1e9); // nothing of it may be left
            scratch.setView(99);
            frames.push_back(now.inputContext(input, m, scratch).frame());
        }
        return frames;
    }
};

} // namespace

TEST_F(NodeInputs, AreLabelled) {
    char buffer[32] = "";
    EXPECT_STREQ(op().input_label(0, buffer), "parent");
    EXPECT_STREQ(op().input_label(1, buffer), "cam");
}

// The host counts them from one.
TEST_F(NodeInputs, LeaveOtherLabelsToTheHost) {
    char buffer[32] = "";
    EXPECT_STREQ(op().input_label(2, buffer), "3");
    EXPECT_STREQ(op().input_label(9, buffer), "10");
}

TEST_F(NodeInputs, TakeAxesAndCamerasInTheirPlaces) {
    Op& axis_op = axis.prototype();
    Op& camera_op = camera.prototype();
    Op& image_op = image.prototype();
    EXPECT_TRUE(op().test_input(0, nullptr));
    EXPECT_TRUE(op().test_input(0, &axis_op));
    EXPECT_TRUE(op().test_input(0, &camera_op)) << "a camera is an axis with a lens";
    EXPECT_FALSE(op().test_input(0, &image_op));

    EXPECT_TRUE(op().test_input(1, nullptr));
    EXPECT_TRUE(op().test_input(1, &camera_op));
    EXPECT_FALSE(op().test_input(1, &axis_op));
    EXPECT_FALSE(op().test_input(1, &image_op));
}

// Images only.
TEST_F(NodeInputs, LeaveOtherIndicesToTheHost) {
    for (const int n : {2, 3, -1}) {
        EXPECT_TRUE(op().test_input(n, &image.prototype())) << n;
        EXPECT_FALSE(op().test_input(n, &camera.prototype())) << n;
        EXPECT_FALSE(op().test_input(n, nullptr)) << n;
    }
}

TEST_F(NodeInputs, AreRefusedByTheGraphAlike) {
    EXPECT_TRUE(comp.stars.set_input(0, &axis));
    EXPECT_FALSE(comp.stars.set_input(1, &axis));
    EXPECT_TRUE(comp.stars.set_input(1, &camera));
    EXPECT_FALSE(comp.stars.set_input(0, &image));
    EXPECT_EQ(comp.stars.input(0), &axis);
    EXPECT_EQ(comp.stars.input(1), &camera);
}

TEST_F(NodeInputs, HaveNoOpWhereNothingIsConnected) {
    for (int n = -1; n < 4; n++)
        EXPECT_EQ(op().default_input(n), nullptr) << n;
    EXPECT_EQ(op().Op::input(0), nullptr);
    EXPECT_EQ(op().Op::input(1, 0), nullptr);
    EXPECT_EQ(op().Op::input(1, 1), nullptr);
}

TEST_F(NodeInputs, AskForOneCopyMoreThanThereAreSegments) {
    const struct {
        const char* segments;
        int copies;
    } rows[] = {{"1", 2}, {"3", 4}, {"10", 11}, {"25", 26}, {"0", 1}, {"-1", 1}, {"-7", 1}};
    for (const auto& row : rows) {
        comp.set("blur_segs", row.segments);
        EXPECT_EQ(op().split_input(1), row.copies) << row.segments;
        EXPECT_EQ(op().split_input(0), 1) << row.segments;
        EXPECT_EQ(op().split_input(2), 1) << row.segments;
    }
}

TEST_F(NodeInputs, SpreadTheCopiesOverTheShutter) {
    comp.set("blur_segs", "3");
    comp.set("shutter", "0.75");
    comp.set("shutter_offset", "-0.5");
    EXPECT_EQ(times(1, 10), (std::vector<double>{9.5, 9.75, 10, 10.25}));
    EXPECT_EQ(times(0, 10), (std::vector<double>{10}));
}

// (frame + n · shutter / segments) + offset, for numbers at which any other order of the operations
// gives other bits somewhere.
TEST_F(NodeInputs, WorkOutTheTimesInTheirOrder) {
    comp.set("blur_segs", "7");
    comp.set("shutter", "0.7");
    comp.set("shutter_offset", "-0.3");
    const double frame = 0.1, shutter = 0.7, offset = -0.3;
    const std::vector<double> given = times(1, frame);
    ASSERT_EQ(given.size(), 8u);
    int offset_first = 0, offset_inside = 0, quotient_first = 0;
    for (int n = 0; n < 8; n++) {
        const double expected = (frame + n * shutter / 7) + offset;
        EXPECT_EQ(given[std::size_t(n)], expected) << n;
        offset_first += (frame + offset) + n * shutter / 7 != expected;
        offset_inside += frame + (n * shutter / 7 + offset) != expected;
        quotient_first += (frame + n * (shutter / 7)) + offset != expected;
    }
    EXPECT_GT(offset_first, 0);
    EXPECT_GT(offset_inside, 0);
    EXPECT_GT(quotient_first, 0);
}

TEST_F(NodeInputs, AreAskedForAtTheFrameItselfWithoutSegments) {
    comp.set("shutter", "2");
    comp.set("shutter_offset", "-1");
    for (const char* segments : {"0", "-3"}) {
        comp.set("blur_segs", segments);
        EXPECT_EQ(times(1, 42), std::vector<double>{42}) << segments;
    }
}

TEST_F(NodeInputs, KeepTheViewOfTheNode) {
    OutputContext context;
    context.setFrame(5);
    context.setView(3);
    Op& now = comp.tree.at(context);
    for (int n = 0; n < 2; n++) {
        OutputContext scratch;
        scratch.setView(1);
        EXPECT_EQ(now.inputContext(n, 0, scratch).view(), 3);
    }
}

// One op for each moment, and each moment's op in the place of its copy.
TEST_F(NodeInputs, HaveAnOpOfTheirOwnForEachMoment) {
    comp.stars.set_input(0, &axis);
    comp.stars.set_input(1, &camera);
    comp.set("blur_segs", "3");
    comp.set("shutter", "1.5");
    Op& now = op(20);
    const double frames[] = {20, 20.5, 21, 21.5};
    for (int m = 0; m < 4; m++) {
        const Op* const copy = now.Op::input(1, m);
        ASSERT_NE(dynamic_cast<const DD::Image::CameraOp*>(copy), nullptr);
        EXPECT_EQ(copy->outputContext().frame(), frames[m]);
        EXPECT_EQ(inside(now).Op::input(1, m), copy);
    }
    EXPECT_EQ(now.Op::input(1, 4), nullptr);
    EXPECT_EQ(now.Op::input(0)->outputContext().frame(), 20);

    comp.set("blur_segs", "0");
    EXPECT_EQ(op(20).Op::input(1, 1), nullptr) << "copies that are no longer asked for go";
}
