// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/node.h"

#include "tests/host/call_log.h"
#include "tests/host/comp.h"

using namespace velmora;
using DD::Image::Knob;

class NodeTest : public CompTest {};

TEST_F(NodeTest, HasTheKnobsThatItsClassDeclaresInTheirOrder) {
    std::vector<std::string> names;
    for (const auto& knob : create("Recorder").knobs())
        names.push_back(knob->name());
    EXPECT_EQ(names, (std::vector<std::string>{"copies", "step", "gain", "added", "note", "file",
                                               "timed", "fails", "throws"}));
}

TEST_F(NodeTest, HasTheWrappersKnobsBehindTheOps) {
    const Node& node = create("Raise");
    ASSERT_EQ(node.knobs().size(), 2u);
    EXPECT_EQ(node.knobs()[0]->name(), "channels");
    EXPECT_EQ(node.knobs()[1]->name(), "mix");
    EXPECT_TRUE(create("BareRaise").knobs().empty());
}

TEST_F(NodeTest, StartsWithTheValuesThatItsOpHas) {
    const Node& node = create("Ramp");
    EXPECT_EQ(node.knob("r")->get_value_at(1), 4);
    EXPECT_EQ(node.knob("t")->get_value_at(1), 3);
    EXPECT_EQ(node.knob("level")->get_value_at(1), 1);
    EXPECT_EQ(node.knob("black_outside")->get_value_at(1), 0);
    EXPECT_STREQ(node.knob("trouble")->get_text(), "none");
    for (const auto& knob : node.knobs())
        EXPECT_FALSE(knob->not_default()) << knob->name();
}

TEST_F(NodeTest, FindsKnobsByTheirWholeName) {
    const Node& node = create("Ramp");
    EXPECT_EQ(node.knob("level")->name(), "level");
    EXPECT_EQ(node.knob("Level"), nullptr);
    EXPECT_EQ(node.knob("lev"), nullptr);
    EXPECT_EQ(node.knob(""), nullptr);
}

TEST_F(NodeTest, HasAPrototypeThatAnswersForTheClass) {
    const Node& node = create("Raise", "up");
    EXPECT_STREQ(node.prototype().Class(), "Raise");
    EXPECT_STREQ(node.prototype().node_help(), "Adds 100.");
    EXPECT_STREQ(node.prototype().displayName(), "Raise");
    EXPECT_STREQ(node.prototype().node_name(), "up");
    EXPECT_EQ(node.prototype().node(), &node);
    EXPECT_EQ(node.prototype().knob("mix"), node.knob("mix"));
}

TEST_F(NodeTest, MakesItsKnobsOnceAndRightAfterTheOp) {
    taken_calls();
    create("Recorder", "A");
    EXPECT_EQ(taken_calls(), (std::vector<std::string>{"A@0 constructor", "A@0 knobs made"}));
}

TEST_F(NodeTest, TellsItsOpsOfKnobsThatAreChangedByHand) {
    Node& node = create("WrappedRecorder", "A");
    taken_calls();
    EXPECT_EQ(node.prototype().knob_changed(node.knob("gain")), 1);
    EXPECT_EQ(node.prototype().knob_changed(&Knob::showPanel), 1);
    EXPECT_EQ(taken_calls(),
              (std::vector<std::string>{"A@0 knob_changed gain", "A@0 knob_changed showPanel"}));
    EXPECT_EQ(create("Ramp").prototype().knob_changed(&Knob::inputChange), 0);
}

// ---- connections -------------------------------------------------------------------------------

TEST_F(NodeTest, TakesWhatItsClassTakes) {
    Node& raise = create("Raise");
    Node& ramp = create("Ramp");
    EXPECT_EQ(raise.inputs(), 2); // with the mask
    EXPECT_TRUE(raise.set_input(0, &ramp));
    EXPECT_TRUE(raise.set_input(1, &ramp));
    EXPECT_EQ(raise.input(0), &ramp);
    EXPECT_EQ(raise.input(1), &ramp);
}

TEST_F(NodeTest, RefusesWhatItsClassDoesNotTakeAndKeepsWhatThereIs) {
    Node& raise = create("Raise");
    Node& ramp = create("Ramp");
    Node& camera = create("Camera2");
    ASSERT_TRUE(raise.set_input(0, &ramp));
    EXPECT_FALSE(raise.set_input(0, &camera));
    EXPECT_EQ(raise.input(0), &ramp);
    EXPECT_FALSE(camera.set_input(0, &ramp)); // it accepts an axis only
    EXPECT_TRUE(camera.set_input(0, &create("Axis2")));
}

TEST_F(NodeTest, HasNoInputsBeyondThoseOfItsClass) {
    Node& raise = create("BareRaise");
    Node& ramp = create("Ramp");
    EXPECT_FALSE(raise.set_input(1, &ramp));
    EXPECT_FALSE(raise.set_input(-1, &ramp));
    EXPECT_FALSE(ramp.set_input(0, &raise));
    EXPECT_EQ(raise.input(-1), nullptr);
    EXPECT_EQ(raise.input(1), nullptr);
}

TEST_F(NodeTest, IsDisconnectedByNull) {
    Node& raise = create("Raise");
    ASSERT_TRUE(raise.set_input(0, &create("Ramp")));
    EXPECT_TRUE(raise.set_input(0, nullptr));
    EXPECT_EQ(raise.input(0), nullptr);
}

TEST_F(NodeTest, NeverFeedsItself) {
    Node &a = create("Raise"), &b = create("Raise"), &c = create("Raise");
    EXPECT_FALSE(a.set_input(0, &a));
    ASSERT_TRUE(b.set_input(0, &a));
    ASSERT_TRUE(c.set_input(0, &b));
    EXPECT_FALSE(a.set_input(0, &c));
    EXPECT_FALSE(a.set_input(1, &b)); // not through the mask either
    EXPECT_TRUE(c.set_input(1, &a));  // two connections are not a cycle
    ASSERT_TRUE(b.set_input(0, nullptr));
    ASSERT_TRUE(c.set_input(1, nullptr));
    EXPECT_TRUE(a.set_input(0, &c));
}

// ---- storing -----------------------------------------------------------------------------------

TEST_F(NodeTest, StoresTheEarlyKnobsAloneWhenAsked) {
    Node& node = create("Recorder", "A");
    set(node, "copies", 3);
    set(node, "gain", 7);
    const std::unique_ptr<DD::Image::Op> op = node.make_op();
    taken_calls();
    node.store_early(*op);
    DD::Image::Hash hash;
    node.store_all(*op, hash);
    EXPECT_EQ(taken_calls(),
              (std::vector<std::string>{"A@0 knobs stored: copies 3, gain 0, note 0",
                                        "A@0 knobs stored: copies 3, gain 7, note 0"}));
}
