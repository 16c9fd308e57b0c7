// SPDX-License-Identifier: BSD-3-Clause
#include "tests/host/comp.h"

using namespace DD::Image;

namespace {

// Counts the calls of its functions.
class Counter : public Op {
public:
    int validations = 0, openings = 0, closings = 0, invalidations = 0;
    bool for_real = false, fails = false, throws = false, throws_at_opening = false;

    Counter() : Op(nullptr) {}
    const char* Class() const override { return "Counter"; }
    const char* node_help() const override { return "Counts."; }

protected:
    void _validate(bool real) override {
        validations++;
        for_real = real;
        if (fails)
            error("%s %d", "number", 7);
        if (throws)
            throw std::runtime_error("thrown");
    }
    void _open() override {
        openings++;
        if (throws_at_opening)
            throw std::runtime_error("thrown");
    }
    void _close() override { closings++; }
    void _invalidate() override { invalidations++; }
};

} // namespace

TEST(Op, IsPlainUnlessItsClassSaysMore) {
    Counter op;
    EXPECT_STREQ(op.displayName(), "Counter");
    EXPECT_STREQ(op.node_name(), "Counter");
    EXPECT_STREQ(op.node_shape(), "box");
    EXPECT_EQ(op.node_color(), 0u);
    EXPECT_TRUE(op.can_clone());
    EXPECT_EQ(op.iop(), nullptr);
    EXPECT_EQ(op.node(), nullptr);
    EXPECT_EQ(op.knob("any"), nullptr);
    EXPECT_EQ(op.input_format(), nullptr);
    EXPECT_EQ(op.knob_changed(&Knob::showPanel), 0);
    EXPECT_EQ(op.optional_input(), -1);
    EXPECT_EQ(op.uses_input(0), 1);
    EXPECT_EQ(op.split_input(0), 1);
    EXPECT_EQ(op.default_input(0), nullptr);
    EXPECT_TRUE(op.test_input(0, nullptr));
}

TEST(Op, HasAsManyInputsAsItIsTold) {
    Counter op;
    EXPECT_EQ(op.inputs(), 0);
    op.inputs(3);
    EXPECT_EQ(op.inputs(), 3);
    EXPECT_EQ(op.minimum_inputs(), 3);
    EXPECT_EQ(op.maximum_inputs(), 3);
    op.inputs(-1);
    EXPECT_EQ(op.inputs(), 0);
}

TEST(Op, KeepsTheCopiesOfItsInputsApart) {
    Counter op, a, b, c;
    op.inputs(2);
    op.set_input(0, &a, 0, 0);
    op.set_input(1, &b, 1, 0);
    op.set_input(2, &c, 1, 1);
    EXPECT_EQ(op.input(0), &a);
    EXPECT_EQ(op.input(1), &b);
    EXPECT_EQ(op.input(1, 1), &c);
    EXPECT_EQ(op.input(1, 2), nullptr);
    EXPECT_EQ(op.input(1, -1), nullptr);
    EXPECT_EQ(op.input(2), nullptr);
    EXPECT_EQ(op.input(-1), nullptr);
    op.set_input(1, &a, 1, 0); // the first copy replaces all
    EXPECT_EQ(op.input(1), &a);
    EXPECT_EQ(op.input(1, 1), nullptr);
    op.clear_inputs();
    EXPECT_EQ(op.inputs(), 2);
    EXPECT_EQ(op.input(0), nullptr);
    EXPECT_EQ(op.input(1), nullptr);
}

TEST(Op, NumbersItsInputsWhenItHasSeveral) {
    Counter op;
    char buffer[100];
    op.inputs(1);
    EXPECT_STREQ(op.input_label(0, buffer), "");
    op.inputs(2);
    EXPECT_STREQ(op.input_label(0, buffer), "1");
    EXPECT_STREQ(op.input_label(1, buffer), "2");
}

TEST(Op, AsksItsInputsForItsOwnMoment) {
    Counter op;
    OutputContext context, scratch;
    context.setFrame(12.5);
    op.setOutputContext(context);
    EXPECT_EQ(op.outputContext(), context);
    EXPECT_EQ(op.inputContext(0, 0, scratch), context);
}

// ---- validating --------------------------------------------------------------------------------

TEST(Op, IsValidatedOnceAndOnceMoreForReal) {
    Counter op;
    EXPECT_FALSE(op.valid());
    op.validate(false);
    op.validate(false);
    EXPECT_EQ(op.validations, 1);
    EXPECT_FALSE(op.for_real);
    EXPECT_TRUE(op.valid());
    op.validate();
    op.validate();
    op.validate(false);
    EXPECT_EQ(op.validations, 2);
    EXPECT_TRUE(op.for_real);
}

TEST(Op, IsValidatedAgainWhenItsHashChangesOrItIsTold) {
    Counter op;
    op.validate();
    op.set_hash(Hash(5));
    EXPECT_EQ(op.invalidations, 1);
    EXPECT_FALSE(op.valid());
    EXPECT_EQ(op.hash(), Hash(5));
    op.validate();
    op.set_hash(Hash(5));
    op.validate();
    EXPECT_EQ(op.validations, 2);
    op.invalidate();
    op.validate();
    EXPECT_EQ(op.validations, 3);
    EXPECT_EQ(op.invalidations, 2);
}

TEST(Op, IsNotValidWhileItsValidationThrows) {
    Counter op;
    op.throws = true;
    EXPECT_THROW(op.validate(), std::runtime_error);
    EXPECT_FALSE(op.valid());
    op.throws = false;
    op.validate();
    EXPECT_EQ(op.validations, 2);
    EXPECT_TRUE(op.valid());
}

// ---- opening -----------------------------------------------------------------------------------

TEST(Op, OpensItsInputsAndItselfOnce) {
    Counter op, a, b;
    op.inputs(2);
    op.set_input(0, &a, 0, 0);
    op.set_input(1, nullptr, 0, 1);
    op.set_input(2, &b, 1, 0);
    op.open();
    op.open();
    for (const Counter* const one : {&op, &a, &b}) {
        EXPECT_TRUE(one->opened());
        EXPECT_EQ(one->openings, 1);
    }
    op.close();
    op.close();
    for (const Counter* const one : {&op, &a, &b}) {
        EXPECT_FALSE(one->opened());
        EXPECT_EQ(one->closings, 1);
    }
    op.open();
    EXPECT_EQ(op.openings, 2);
}

TEST(Op, StaysClosedWhenItsOpeningThrows) {
    Counter op, a;
    op.set_input(0, &a, 0, 0);
    op.throws_at_opening = true;
    EXPECT_THROW(op.open(), std::runtime_error);
    EXPECT_FALSE(op.opened());
    EXPECT_EQ(a.openings, 1);
    EXPECT_FALSE(a.opened());
    op.close();
    EXPECT_EQ(op.closings, 0);
    op.throws_at_opening = false;
    op.open();
    EXPECT_TRUE(op.opened());
}

// ---- stopping and failing ----------------------------------------------------------------------

TEST(Op, TellsItsLastErrorUntilItIsInvalidated) {
    Counter op;
    EXPECT_FALSE(op.has_error());
    EXPECT_EQ(op.error_message(), "");
    EXPECT_EQ(op.error_op(), nullptr);
    op.fails = true;
    op.validate();
    EXPECT_TRUE(op.has_error());
    EXPECT_EQ(op.error_message(), "number 7");
    op.error("%s", "another %d");
    EXPECT_EQ(op.error_message(), "another %d");
    EXPECT_EQ(op.error_op(), &op);
    op.validate(); // nothing changed
    EXPECT_EQ(op.error_message(), "another %d");
    op.fails = false;
    op.invalidate();
    EXPECT_FALSE(op.has_error());
    op.validate();
    EXPECT_FALSE(op.has_error());
    EXPECT_EQ(op.error_count(), 2);
}

TEST(Op, TellsErrorsOfAnyLength) {
    Counter op;
    const std::string text(10000, 'x');
    op.error("<%s>", text.c_str());
    EXPECT_EQ(op.error_message(), "<" + text + ">");
}

TEST(Op, FindsTheFailedOpAmongItsInputs) {
    Counter op, a, b, c;
    op.inputs(2);
    op.set_input(0, &a, 0, 0);
    op.set_input(1, nullptr, 1, 0);
    op.set_input(2, &b, 1, 1);
    b.inputs(1);
    b.set_input(0, &c, 0, 0);
    EXPECT_EQ(op.error_op(), nullptr);
    c.error("deep");
    EXPECT_EQ(op.error_op(), &c);
    a.error("first");
    EXPECT_EQ(op.error_op(), &a);
    op.error("own");
    EXPECT_EQ(op.error_op(), &op);
}

TEST(Op, IsStoppedByTheSwitchThatItIsGiven) {
    Counter op, other;
    EXPECT_FALSE(op.aborted());
    op.abort(); // without a switch there is nothing to stop
    EXPECT_FALSE(op.aborted());
    std::atomic<bool> stop{false};
    op.set_abort_switch(&stop);
    other.set_abort_switch(&stop);
    EXPECT_FALSE(op.aborted());
    op.abort();
    EXPECT_TRUE(stop);
    EXPECT_TRUE(op.aborted());
    EXPECT_TRUE(other.aborted());
}

TEST(Op, FindsAFailedOpThatManyPathsLeadTo) {
    // Each op is fed twice by the next one: 2 to the power of 40 paths.
    std::vector<std::unique_ptr<Counter>> chain;
    for (int i = 0; i < 40; i++) {
        chain.push_back(std::make_unique<Counter>());
        if (i == 0)
            continue;
        for (int n = 0; n < 2; n++)
            chain[std::size_t(i)]->set_input(n, chain[std::size_t(i) - 1].get(), n, 0);
    }
    EXPECT_EQ(chain.back()->error_op(), nullptr);
    chain.front()->error("far away");
    EXPECT_EQ(chain.back()->error_op(), chain.front().get());
}

TEST(Op, KeepsTextsByTheirPlace) {
    Counter op;
    int here, there;
    const char* const first = op.keep_text(&here, "first");
    const char* const second = op.keep_text(&there, "second");
    EXPECT_STREQ(first, "first");
    EXPECT_STREQ(second, "second");
    EXPECT_EQ(op.keep_text(&here, "first"), first); // the same pointer
    EXPECT_STREQ(op.keep_text(&here, "third"), "third");
    EXPECT_STREQ(second, "second");
}
