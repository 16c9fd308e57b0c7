// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/number_knob.h"

#include "tests/host/panel.h"
#include "tests/special_values.h"

using namespace velmora;
using namespace velmora::host;
using DD::Image::Hash;
using DD::Image::OutputContext;
using namespace velmora_test::doubles;

class NumberKnobTest : public PanelTest {};

TEST_F(NumberKnobTest, StartsAsItsOpHasItAndGivesTheSameBack) {
    EXPECT_EQ(knob("colour").size(), 3);
    EXPECT_EQ(knob("tint").size(), 4);
    EXPECT_EQ(knob("whole").get_value(), 3);
    EXPECT_EQ(knob("single").get_value(), 0.25);
    EXPECT_EQ(knob("on").get_value(), 1);
    for (int i = 0; i < 3; i++)
        EXPECT_EQ(knob("colour").get_value(i), i + 1);
    const auto op = stored();
    EXPECT_EQ(op->whole, 3);
    EXPECT_EQ(op->real, 0.5);
    EXPECT_EQ(op->single, 0.25f);
    EXPECT_TRUE(op->on);
    EXPECT_EQ(op->tint[3], 4);
    EXPECT_EQ(op->place[2], 9);
}

TEST_F(NumberKnobTest, StoresWhatItIsSetTo) {
    EXPECT_TRUE(knob("whole").set_value(-8));
    EXPECT_TRUE(knob("real").set_value(0.1));
    EXPECT_TRUE(knob("single").set_value(0.1));
    EXPECT_TRUE(knob("on").set_value(0));
    EXPECT_TRUE(knob("colour").set_value(9, 1));
    EXPECT_TRUE(knob("tint").set_value(5)); // all of them
    const auto op = stored();
    EXPECT_EQ(op->whole, -8);
    EXPECT_EQ(op->real, 0.1);
    EXPECT_EQ(op->single, 0.1f);
    EXPECT_FALSE(op->on);
    EXPECT_EQ(op->colour[0], 1);
    EXPECT_EQ(op->colour[1], 9);
    EXPECT_EQ(op->colour[2], 3);
    for (const double number : op->tint)
        EXPECT_EQ(number, 5);
}

TEST_F(NumberKnobTest, SetsSeveralNumbersAtOnce) {
    const double values[] = {10, 20};
    EXPECT_TRUE(knob("colour").set_values(values, 2));
    EXPECT_EQ(knob("colour").get_value(0), 10);
    EXPECT_EQ(knob("colour").get_value(1), 20);
    EXPECT_EQ(knob("colour").get_value(2), 3);
}

TEST_F(NumberKnobTest, RefusesNumbersThatItCannotHave) {
    for (const double number : {infinity, -infinity, not_a_number})
        EXPECT_FALSE(knob("real").set_value(number));
    EXPECT_FALSE(knob("colour").set_value(1, 3));
    EXPECT_FALSE(knob("colour").set_value(1, -2));
    EXPECT_EQ(knob("colour").get_value(3), 0);
    EXPECT_EQ(knob("colour").get_value_at(1.0, -1), 0);
    EXPECT_FALSE(knob("real").not_default());
    EXPECT_FALSE(knob("colour").not_default());
}

TEST_F(NumberKnobTest, RoundsForIntegersAndKeepsToWhatTheyHold) {
    const struct {
        double number;
        int whole;
    } cases[] = {
        {2.4, 2}, {2.5, 3}, {-2.5, -2}, {-2.6, -3}, {1e10, 2147483647}, {-1e10, -2147483647 - 1},
    };
    for (const auto& c : cases) {
        ASSERT_TRUE(knob("whole").set_value(c.number));
        EXPECT_EQ(stored()->whole, c.whole) << c.number;
    }
}

TEST_F(NumberKnobTest, IsTheNumberOfItsTime) {
    ASSERT_EQ(read_error("real", "{{curve L x1 0 x11 10}}"), "no error");
    EXPECT_TRUE(knob("real").is_animated());
    EXPECT_EQ(knob("real").get_value_at(1.0), 0);
    EXPECT_EQ(knob("real").get_value_at(11.0), 10);
    EXPECT_EQ(stored(3)->real, knob("real").get_value_at(3.0));
    EXPECT_NEAR(stored(3.5)->real, 2.5, 1e-12); // a straight line, by a root
    OutputContext context;
    context.setFrame(11);
    EXPECT_EQ(knob("real").get_value_at(context), 10);
    EXPECT_NE(hash_at(1), hash_at(2));
    EXPECT_EQ(hash_at(20), hash_at(30)); // constant after the last key
    ASSERT_TRUE(knob("real").set_value(4));
    EXPECT_FALSE(knob("real").is_animated());
    EXPECT_EQ(stored(11)->real, 4);
}

TEST_F(NumberKnobTest, IsAnimatedInSingleNumbers) {
    ASSERT_EQ(read_error("colour", "{7 {curve K x1 0 x5 1} 8}"), "no error");
    EXPECT_EQ(stored(1)->colour[0], 7);
    EXPECT_EQ(stored(1)->colour[1], 0);
    EXPECT_EQ(stored(5)->colour[1], 1);
    EXPECT_EQ(stored(5)->colour[2], 8);
    ASSERT_TRUE(knob("colour").set_value(2, 0));
    EXPECT_TRUE(knob("colour").is_animated());
    ASSERT_TRUE(knob("colour").set_value(2, 1));
    EXPECT_FALSE(knob("colour").is_animated());
}

TEST_F(NumberKnobTest, FollowsASourceUntilItIsSet) {
    auto& real = dynamic_cast<NumberKnob&>(knob("real"));
    real.follow(0, [](double time) { return time * time; });
    EXPECT_TRUE(real.is_animated());
    EXPECT_EQ(stored(3)->real, 9);
    EXPECT_EQ(stored(-4)->real, 16);
    ASSERT_TRUE(knob("real").set_value(1));
    EXPECT_EQ(stored(3)->real, 1);
    real.follow(0, [](double time) { return time; });
    ASSERT_EQ(read_error("real", "2"), "no error");
    EXPECT_EQ(stored(3)->real, 2);
}

TEST_F(NumberKnobTest, HashesEachOfItsNumbers) {
    const Hash before = hash_at(1);
    for (const char* const name : {"whole", "real", "single", "colour", "tint", "point"}) {
        for (int i = 0; i < knob(name).size(); i++) {
            const double value = knob(name).get_value(i);
            ASSERT_TRUE(knob(name).set_value(value + 1, i));
            EXPECT_NE(hash_at(1), before) << name << " " << i;
            ASSERT_TRUE(knob(name).set_value(value, i));
            EXPECT_EQ(hash_at(1), before) << name << " " << i;
        }
    }
    ASSERT_TRUE(knob("on").set_value(0));
    EXPECT_NE(hash_at(1), before);
}

// ---- saved scripts -----------------------------------------------------------------------------

TEST_F(NumberKnobTest, ReadsEveryFormThatScriptsUse) {
    const struct {
        const char *knob, *text;
        std::vector<double> values;
    } cases[] = {
        {"real", "2.5", {2.5}},
        {"real", "-1e-3", {-0.001}},
        {"real", "\"7\"", {7}},
        {"real", "{7}", {7}},
        {"real", "{{curve x1 5}}", {5}},
        {"real", "{curve x1 5}", {5}},
        {"whole", "-12", {-12}},
        {"on", "true", {1}},
        {"on", "false", {0}},
        {"on", "1", {1}},
        {"on", "0", {0}},
        {"on", "{{curve K x1 1}}", {1}},
        {"colour", "{1 0.5 0.25}", {1, 0.5, 0.25}},
        {"colour", "0.5", {0.5, 0.5, 0.5}},
        {"colour", "{0.5}", {0.5, 0.5, 0.5}},
        {"colour", "{{curve i 3} 0 1}", {3, 0, 1}},
        {"point", "{10 20}", {10, 20}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(read_error(c.knob, c.text), "no error") << c.text;
        for (int i = 0; i < int(c.values.size()); i++)
            EXPECT_EQ(knob(c.knob).get_value_at(1.0, i), c.values[std::size_t(i)]) << c.text;
    }
}

TEST_F(NumberKnobTest, RefusesWhatItCannotTake) {
    const struct {
        const char *knob, *text, *error;
    } cases[] = {
        {"real", "{1 2}", "shot.nk:1:2: knob 'real' takes 1 number, not 2"},
        {"real", "{}", "shot.nk:1:2: knob 'real' takes 1 number, not 0"},
        {"colour", "{1 2}", "shot.nk:1:2: knob 'colour' takes 3 numbers, not 2"},
        {"colour", "{1 2 3 4}", "shot.nk:1:2: knob 'colour' takes 3 numbers, not 4"},
        {"colour", "{1 2 much}", "shot.nk:1:7: the expression 'much' is not supported"},
        {"real", "true", "shot.nk:1:2: the expression 'true' is not supported"},
        {"real", "{{frame*2}}", "shot.nk:1:3: the expression 'frame*2' is not supported"},
        {"real", "{frame*2}", "shot.nk:1:3: the expression 'frame*2' is not supported"},
        {"on", "yes", "shot.nk:1:2: the expression 'yes' is not supported"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(read_error(c.knob, c.text), c.error) << c.text;
}

TEST_F(NumberKnobTest, WritesWhatItReads) {
    const struct {
        const char *knob, *text;
    } cases[] = {
        {"real", "0.1"},
        {"real", "{{curve L x1 0 x11 10}}"},
        {"whole", "7"},
        {"on", "false"},
        {"colour", "{1 0.5 0.25}"},
        {"colour", "{1 {curve K x1 0 x5 1} 2}"},
        {"second_matrix", "{{1 2 3 4} {5 6 7 8} {9 10 11 12} {13 14 15 16}}"},
    };
    for (const auto& c : cases) {
        EXPECT_TRUE(knob(c.knob).from_script(c.text)) << c.text;
        EXPECT_EQ(knob(c.knob).to_script(), c.text);
        EXPECT_TRUE(knob(c.knob).not_default()) << c.text;
    }
}

TEST_F(NumberKnobTest, IsItsDefaultAgainWhenItIsSetBack) {
    EXPECT_FALSE(knob("real").not_default());
    ASSERT_TRUE(knob("real").set_value(2));
    EXPECT_TRUE(knob("real").not_default());
    ASSERT_TRUE(knob("real").set_value(0.5));
    EXPECT_FALSE(knob("real").not_default());
    EXPECT_FALSE(knob("real").from_script("{1 2}"));
    EXPECT_FALSE(knob("real").from_script("{"));
    EXPECT_FALSE(knob("real").not_default());
}

TEST_F(NumberKnobTest, ReadsMatricesAsRows) {
    ASSERT_EQ(read_error("matrix", "{{1 2 3 4} {5 6 7 8} {9 10 11 12} {13 14 15 16}}"), "no error");
    for (int i = 0; i < 16; i++)
        EXPECT_EQ(knob("matrix").get_value(i), i + 1);
    ASSERT_EQ(read_error("matrix", "{1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 2}"), "no error");
    EXPECT_EQ(knob("matrix").get_value(15), 2);
    EXPECT_EQ(read_error("matrix", "{{1 2 3} {5 6 7 8} {9 10 11 12} {13 14 15 16}}"),
              "shot.nk:1:2: knob 'matrix' takes 16 numbers, not 15");
}
