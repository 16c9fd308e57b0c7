// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/op_tree.h"

#include "tests/host/call_log.h"
#include "tests/host/comp.h"

#include <algorithm>
#include <DDImage/NukeWrapper.h>
#include <set>

using namespace velmora;
using namespace velmora::host;
using DD::Image::Chan_Alpha;
using DD::Image::Chan_Green;
using DD::Image::Chan_Red;
using DD::Image::Op;

typedef std::vector<std::string> Calls;

// Queries may be repeated at any time: only the first call counts.
static Calls without_repeated_questions(const Calls& calls) {
    Calls kept;
    std::set<std::string> asked;
    for (const std::string& call : calls) {
        const bool question = call.find("split_input") != std::string::npos ||
                              call.find("inputContext") != std::string::npos ||
                              call.find("test_input") != std::string::npos;
        if (!question || asked.insert(call).second)
            kept.push_back(call);
    }
    return kept;
}

// The calls of one node; those whose name does not start with an underscore are left out.
static Calls cycle_of(const std::string& node, const Calls& calls) {
    Calls kept;
    for (const std::string& call : calls)
        if (call.rfind(node + "@", 0) == 0 && call.find(" _") != std::string::npos)
            kept.push_back(call);
    return kept;
}

static std::size_t count_of(const Calls& calls, const std::string& call) {
    return std::size_t(std::count(calls.begin(), calls.end(), call));
}

static std::vector<double> frames_of(const std::vector<Op*>& ops) {
    std::vector<double> frames;
    for (const Op* const op : ops)
        frames.push_back(op->outputContext().frame());
    return frames;
}

class OpTreeTest : public CompTest {
protected:
    Node& a = create("Recorder", "A");
    Node& ramp = create("Ramp", "R");
    OpTree tree{a};

    OpTreeTest() { taken_calls(); }
};

// ---- the cycle ---------------------------------------------------------------------------------

TEST_F(OpTreeTest, TakesAnOpThroughTheWholeCycleInOrder) {
    ASSERT_TRUE(a.set_input(0, &ramp));
    ASSERT_TRUE(a.set_input(1, &ramp));
    set(a, "copies", 2);
    set(a, "step", 0.5);
    set(a, "gain", 5);
    taken_calls();

    OpTree fresh(a);
    Op& op = fresh.at(10);
    op.validate(false);
    op.validate(true);
    {
        const Opened opened(op, DD::Image::Mask_RGB);
        pulled(opened.iop(), DD::Image::Box(1, 0, 3, 2));
    }
    EXPECT_EQ(without_repeated_questions(taken_calls()),
              (Calls{
                  "A@0 constructor",
                  "A@10 setOutputContext",
                  "A@10 knobs stored: copies 2, gain 0, note 0", // the early ones
                  "A@10 split_input 0: 1",
                  "A@10 inputContext 0 0",
                  "A@10 test_input 0",
                  "A@10 set_input 0: 0 0",
                  "A@10 split_input 1: 2",
                  "A@10 inputContext 1 0",
                  "A@10 test_input 1",
                  "A@10 set_input 1: 1 0",
                  "A@10 inputContext 1 1",
                  "A@10 set_input 2: 1 1",
                  "A@10 knobs stored: copies 2, gain 5, note 0",
                  "A@10 append",
                  "A@10 _invalidate",
                  "A@10 _validate roughly",
                  "A@10 _validate for real",
                  "A@10 _request 0 0 4 3, 3 channels",
                  "A@10 _open",
                  "A@10 engine 0: 1 3",
                  "A@10 engine 1: 1 3",
                  "A@10 _close",
              }));
}

TEST_F(OpTreeTest, TakesWrappedOpsThroughTheSameCycle) {
    Node& wrapped = create("WrappedRecorder", "W");
    ASSERT_TRUE(wrapped.set_input(0, &ramp));
    OpTree wrapped_tree(wrapped);
    taken_calls();
    {
        const Opened opened(wrapped_tree.at(3));
        pulled(opened.iop(), DD::Image::Box(0, 2, 4, 3));
    }
    EXPECT_EQ(cycle_of("W", taken_calls()),
              (Calls{"W@3 _invalidate", "W@3 _validate for real",
                     "W@3 _request 0 0 4 3, 4 channels", "W@3 _open", "W@3 _close"}));
}

TEST_F(OpTreeTest, OpensInputsBeforeWhatTheyFeed) {
    Node& b = create("Recorder", "B");
    Node& c = create("Recorder", "C");
    ASSERT_TRUE(a.set_input(0, &b));
    ASSERT_TRUE(b.set_input(0, &c));
    const Opened opened(tree.at(1));
    Calls openings;
    for (const std::string& call : taken_calls())
        if (call.find(" _open") != std::string::npos)
            openings.push_back(call);
    EXPECT_EQ(openings, (Calls{"C@1 _open", "B@1 _open", "A@1 _open"}));
}

TEST_F(OpTreeTest, ClosesWhatIsOpenBeforeItMovesOn) {
    Op& op = tree.at(1);
    validate(op);
    op.open();
    taken_calls();
    tree.at(2);
    const Calls calls = taken_calls();
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls[0], "A@1 _close");
    EXPECT_EQ(count_of(calls, "A@2 _close"), 0u);
    EXPECT_FALSE(op.opened());
}

TEST_F(OpTreeTest, ClosesWhatIsOpenBeforeItGoes) {
    {
        OpTree other(a);
        Op& op = other.at(1);
        validate(op);
        op.open();
        taken_calls();
    }
    EXPECT_EQ(taken_calls(), (Calls{"A@1 _close", "destructor"}));
}

TEST_F(OpTreeTest, DoesNotValidateAgainWhatHasNotChanged) {
    ASSERT_TRUE(a.set_input(0, &ramp));
    validate(tree.at(1));
    taken_calls();
    validate(tree.at(1));
    EXPECT_EQ(cycle_of("A", taken_calls()), Calls());
    set(a, "gain", 1);
    validate(tree.at(1));
    EXPECT_EQ(cycle_of("A", taken_calls()), (Calls{"A@1 _invalidate", "A@1 _validate for real"}));
}

TEST_F(OpTreeTest, DoesNotValidateAgainForAnotherFrameThatIsNoDifferent) {
    validate(tree.at(1));
    taken_calls();
    validate(tree.at(2));
    EXPECT_EQ(cycle_of("A", taken_calls()), Calls());
    set(a, "timed", 1);
    validate(tree.at(2));
    validate(tree.at(3));
    EXPECT_EQ(cycle_of("A", taken_calls()), (Calls{"A@2 _invalidate", "A@2 _validate for real",
                                                   "A@3 _invalidate", "A@3 _validate for real"}));
}

// ---- ops by moment -----------------------------------------------------------------------------

TEST_F(OpTreeTest, HasOneOpForEachCopyAndTime) {
    ASSERT_TRUE(a.set_input(1, &ramp));
    set(a, "copies", 3);
    set(a, "step", -0.25);
    Op& op = tree.at(10);
    const std::vector<Op*> ops = tree.ops_of(ramp);
    EXPECT_EQ(frames_of(ops), (std::vector<double>{9.5, 9.75, 10}));
    EXPECT_EQ(op.input(1, 0), ops[2]);
    EXPECT_EQ(op.input(1, 1), ops[1]);
    EXPECT_EQ(op.input(1, 2), ops[0]);
    EXPECT_EQ(op.input(1, 3), nullptr);
    EXPECT_EQ(tree.ops_of(a), std::vector<Op*>{&op});
}

TEST_F(OpTreeTest, SharesAnOpAmongAllWhoAskForItsMoment) {
    ASSERT_TRUE(a.set_input(0, &ramp));
    ASSERT_TRUE(a.set_input(1, &ramp));
    set(a, "copies", 4);
    set(a, "step", 0);
    Op& op = tree.at(5);
    const std::vector<Op*> ops = tree.ops_of(ramp);
    ASSERT_EQ(ops.size(), 1u);
    EXPECT_EQ(op.input(0), ops[0]);
    for (int m = 0; m < 4; m++)
        EXPECT_EQ(op.input(1, m), ops[0]);
}

TEST_F(OpTreeTest, ServesEveryPathToANodeAtItsOwnTimes) {
    Node& b = create("Recorder", "B");
    ASSERT_TRUE(a.set_input(0, &b));
    ASSERT_TRUE(a.set_input(1, &b));
    ASSERT_TRUE(b.set_input(1, &ramp));
    for (Node* const node : {&a, &b})
        set(*node, "copies", 2);
    tree.at(10); // B at 10 and 11, and for these R at 10, 11 and 12
    EXPECT_EQ(frames_of(tree.ops_of(b)), (std::vector<double>{10, 11}));
    EXPECT_EQ(frames_of(tree.ops_of(ramp)), (std::vector<double>{10, 11, 12}));
}

TEST_F(OpTreeTest, MovesItsOpsFromFrameToFrame) {
    ASSERT_TRUE(a.set_input(1, &ramp));
    set(a, "copies", 2);
    Op* const op = &tree.at(1);
    const std::vector<Op*> before = tree.ops_of(ramp);
    EXPECT_EQ(&tree.at(2), op);
    EXPECT_EQ(frames_of(tree.ops_of(ramp)), (std::vector<double>{2, 3}));
    EXPECT_EQ(op->input(1, 0), before[1]); // was at that time already
    EXPECT_EQ(&tree.at(100), op);
    std::vector<Op*> after = tree.ops_of(ramp);
    EXPECT_TRUE(std::is_permutation(after.begin(), after.end(), before.begin(), before.end()));
    EXPECT_EQ(count_of(taken_calls(), "A@0 constructor"), 1u);
}

TEST_F(OpTreeTest, LetsGoOfOpsThatAreLeftOver) {
    Node& b = create("Recorder", "B");
    ASSERT_TRUE(a.set_input(1, &b));
    set(a, "copies", 4);
    tree.at(1);
    EXPECT_EQ(tree.ops_of(b).size(), 4u);
    taken_calls();
    set(a, "copies", 1);
    tree.at(1);
    EXPECT_EQ(tree.ops_of(b).size(), 1u);
    EXPECT_EQ(count_of(taken_calls(), "destructor"), 3u);
}

TEST_F(OpTreeTest, HasNothingOnAnInputWithoutCopies) {
    ASSERT_TRUE(a.set_input(1, &ramp));
    set(a, "copies", 2);
    tree.at(1);
    set(a, "copies", 0);
    Op& op = tree.at(1);
    EXPECT_EQ(op.input(1, 0), nullptr);
    EXPECT_EQ(op.input(1, 1), nullptr);
    EXPECT_TRUE(tree.ops_of(ramp).empty());
    EXPECT_EQ(row_of(tree, 1, 0, 0, 1, Chan_Alpha), std::vector<float>{0});
}

TEST_F(OpTreeTest, FollowsTheViewToo) {
    DD::Image::OutputContext left, right;
    left.setView(1);
    right.setView(2);
    ASSERT_TRUE(a.set_input(0, &ramp));
    tree.at(left);
    EXPECT_EQ(tree.ops_of(ramp)[0]->outputContext(), left);
    tree.at(right);
    EXPECT_EQ(tree.ops_of(ramp)[0]->outputContext(), right);
}

// ---- connections between frames ----------------------------------------------------------------

TEST_F(OpTreeTest, ConnectsAndDisconnectsBetweenFrames) {
    set(ramp, "level", 3);
    ASSERT_TRUE(a.set_input(1, &ramp));
    EXPECT_EQ(row_of(tree, 1, 2, 1, 3, Chan_Alpha), (std::vector<float>{1, 2})); // columns

    ASSERT_TRUE(a.set_input(1, nullptr));
    EXPECT_EQ(tree.at(1).input(1), nullptr);
    EXPECT_TRUE(tree.ops_of(ramp).empty());
    EXPECT_EQ(row_of(tree, 1, 0, 0, 1, Chan_Alpha), std::vector<float>{0});

    ASSERT_TRUE(a.set_input(0, &ramp));
    EXPECT_EQ(row_of(tree, 1, 2, 0, 2, Chan_Green), (std::vector<float>{2, 2}));
    EXPECT_EQ(row_of(tree, 1, 2, 0, 2, Chan_Alpha), (std::vector<float>{3, 3}));
}

TEST_F(OpTreeTest, TakesTheClassesDefaultWhereNothingIsConnected) {
    Op& op = tree.at(1);
    ASSERT_NE(op.input(0), nullptr);
    EXPECT_STREQ(op.input(0)->Class(), "Black");
    EXPECT_EQ(op.input(1), nullptr);
    const Calls calls = taken_calls();
    EXPECT_EQ(count_of(calls, "A@1 default_input 0"), 1u);
    EXPECT_EQ(count_of(calls, "A@1 default_input 1"), 1u);
    EXPECT_EQ(count_of(calls, "A@1 set_input 1: 1 0 null"), 1u);
}

// Both have the same hash, but the second one's op has not been validated.
TEST_F(OpTreeTest, ShowsAnInputThatTakesTheSameOnesPlace) {
    Node& first = create("Ramp");
    Node& second = create("Ramp");
    Node& between = create("BareRaise");
    ASSERT_TRUE(a.set_input(0, &between));
    ASSERT_TRUE(between.set_input(0, &first));
    const std::vector<float> picture = {101, 102};
    EXPECT_EQ(row_of(tree, 1, 0, 1, 3, Chan_Red), picture);
    ASSERT_TRUE(between.set_input(0, &second));
    EXPECT_EQ(row_of(tree, 1, 0, 1, 3, Chan_Red), picture);
}

// At frame 1 both share one op of the input; frame 2 needs another one.
TEST_F(OpTreeTest, ShowsAnInputThatNeedsMoreOpsThanBefore) {
    set(a, "copies", 2);
    ASSERT_TRUE(a.knob("step")->from_script("{curve K x1 0 x2 1}"));
    ASSERT_TRUE(a.set_input(1, &ramp));
    EXPECT_EQ(row_of(tree, 1, 0, 1, 3, Chan_Alpha), (std::vector<float>{2, 4}));
    EXPECT_EQ(row_of(tree, 2, 0, 1, 3, Chan_Alpha), (std::vector<float>{2, 4}));
    EXPECT_EQ(tree.ops_of(ramp).size(), 2u);
}

TEST_F(OpTreeTest, GivesAnOpOfSeveralInputsAsManyAsAreConnected) {
    Node& sum = create("Sum");
    OpTree sums(sum);
    EXPECT_EQ(sums.at(1).inputs(), 1);
    ASSERT_TRUE(sum.set_input(0, &ramp));
    ASSERT_TRUE(sum.set_input(2, &ramp));
    EXPECT_EQ(sums.at(1).inputs(), 3);
    EXPECT_EQ(row_of(sums, 1, 0, 1, 4, Chan_Red), (std::vector<float>{2, 4, 6}));
    ASSERT_TRUE(sum.set_input(2, nullptr));
    EXPECT_EQ(sums.at(1).inputs(), 1);
    EXPECT_EQ(row_of(sums, 1, 0, 1, 4, Chan_Red), (std::vector<float>{1, 2, 3}));
    EXPECT_FALSE(sum.set_input(4, &ramp));
}

// ---- hashes ------------------------------------------------------------------------------------

TEST_F(OpTreeTest, HashesEveryKnobAndTheSameAgainWhenItIsSetBack) {
    const DD::Image::Hash before = tree.at(1).hash();
    EXPECT_EQ(tree.at(1).hash(), before);
    for (const char* const name : {"copies", "step", "gain", "added", "timed", "fails", "throws"}) {
        const double value = a.knob(name)->get_value_at(1);
        set(a, name, 1 - value + (name == std::string("copies") ? 2 : 0));
        if (a.knob(name)->get_value_at(1) == value)
            set(a, name, value + 1);
        EXPECT_NE(tree.at(1).hash(), before) << name;
        set(a, name, value);
        EXPECT_EQ(tree.at(1).hash(), before) << name;
    }
    set_text(a, "file", "stars");
    EXPECT_NE(tree.at(1).hash(), before);
    set_text(a, "file", "");
    EXPECT_EQ(tree.at(1).hash(), before);
}

TEST_F(OpTreeTest, DoesNotHashKnobsThatRenderNothingAnew) {
    validate(tree.at(1));
    const DD::Image::Hash before = tree.at(1).hash();
    taken_calls();
    set(a, "note", 9);
    Op& op = tree.at(1);
    validate(op);
    EXPECT_EQ(op.hash(), before);
    const Calls calls = taken_calls();
    EXPECT_EQ(cycle_of("A", calls), Calls());
    EXPECT_EQ(count_of(calls, "A@1 knobs stored: copies 1, gain 0, note 9"), 1u); // stored even so
}

TEST_F(OpTreeTest, HashesItsInputsAndWhatFeedsThem) {
    Node& b = create("Recorder", "B");
    const DD::Image::Hash alone = tree.at(1).hash();
    ASSERT_TRUE(a.set_input(0, &b));
    const DD::Image::Hash with_b = tree.at(1).hash();
    EXPECT_NE(with_b, alone);
    ASSERT_TRUE(b.set_input(0, &ramp));
    const DD::Image::Hash with_both = tree.at(1).hash();
    EXPECT_NE(with_both, with_b);
    set(ramp, "level", 2);
    EXPECT_NE(tree.at(1).hash(), with_both);
    set(ramp, "level", 1);
    EXPECT_EQ(tree.at(1).hash(), with_both);
    ASSERT_TRUE(a.set_input(1, &b));
    ASSERT_TRUE(a.set_input(0, nullptr)); // from the other input it is another image
    EXPECT_NE(tree.at(1).hash(), with_both);
    ASSERT_TRUE(a.set_input(1, nullptr));
    EXPECT_EQ(tree.at(1).hash(), alone);
}

TEST_F(OpTreeTest, HashesFramesOnlyWhereTheyMakeADifference) {
    const DD::Image::Hash before = tree.at(1).hash();
    EXPECT_EQ(tree.at(2).hash(), before);
    set(a, "timed", 1);
    const DD::Image::Hash timed = tree.at(1).hash();
    EXPECT_NE(tree.at(2).hash(), timed);
    EXPECT_EQ(tree.at(1).hash(), timed);
    set(a, "timed", 0);
    ASSERT_TRUE(a.knob("gain")->from_script("{{curve L x1 0 x11 10}}"));
    EXPECT_EQ(tree.at(1).hash(), before);
    EXPECT_NE(tree.at(2).hash(), before);
}

TEST_F(OpTreeTest, HashesTheClassButNotTheName) {
    Node& second = create("Camera2", "one");
    Node& same = create("Camera2", "another");
    Node& third = create("Camera3");
    OpTree of_second(second), of_same(same), of_third(third);
    EXPECT_EQ(of_second.at(1).hash(), of_same.at(1).hash());
    EXPECT_NE(of_second.at(1).hash(), of_third.at(1).hash());
}

TEST_F(OpTreeTest, TellsAWrappedOpItsHash) {
    Node& wrapped = create("BareRaise");
    OpTree wrapped_tree(wrapped);
    Op& op = wrapped_tree.at(1);
    EXPECT_NE(op.hash(), DD::Image::Hash());
    EXPECT_EQ(dynamic_cast<DD::Image::NukeWrapper&>(op).wrapped_iop()->hash(), op.hash());
}

// ---- when something goes wrong -----------------------------------------------------------------

TEST_F(OpTreeTest, CanBeBroughtToAMomentAfterAnException) {
    Node& misuse = create("Misuse", "M");
    ASSERT_TRUE(a.set_input(0, &misuse));
    const DD::Image::Hash before = tree.at(1).hash();
    set_text(misuse, "way", "declare another knob");
    for (int time = 0; time < 2; time++)
        EXPECT_EQ(error_of([&] { tree.at(2); }),
                  "M (Misuse): knob 'other' is declared where it was not when the knobs were made");
    set_text(misuse, "way", "none");
    EXPECT_EQ(tree.at(2).hash(), before);
    EXPECT_EQ(row_of(tree, 2, 0, 0, 1, Chan_Red), std::vector<float>{1});
}

TEST_F(OpTreeTest, ForgetsAnErrorWhenItIsValidatedAnew) {
    set(a, "fails", 1);
    set(a, "gain", 4);
    EXPECT_EQ(error_of([&] { validate(tree.at(1)); }), "A: gain 4 does not do");
    EXPECT_EQ(error_of([&] { validate(tree.at(1)); }), "A: gain 4 does not do"); // nothing changed
    set(a, "gain", 5);
    EXPECT_EQ(error_of([&] { validate(tree.at(1)); }), "A: gain 5 does not do");
    set(a, "fails", 0);
    EXPECT_EQ(error_of([&] { validate(tree.at(1)); }), "no error");
}

TEST_F(OpTreeTest, LowersTheAbortSwitchForTheNextMoment) {
    ASSERT_TRUE(a.set_input(0, &ramp));
    Op& op = tree.at(1);
    EXPECT_FALSE(op.aborted());
    tree.abort();
    EXPECT_TRUE(op.aborted());
    EXPECT_TRUE(op.input(0)->aborted());
    EXPECT_FALSE(tree.at(1).aborted());
    op.input(0)->abort();
    EXPECT_TRUE(op.aborted());
}
