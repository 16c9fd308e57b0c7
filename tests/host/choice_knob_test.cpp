// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/choice_knob.h"

#include "tests/host/panel.h"

using namespace velmora;
using namespace velmora::host;

class ChoiceKnobTest : public PanelTest {
protected:
    ChoiceKnob& choice = dynamic_cast<ChoiceKnob&>(knob("choice"));
};

TEST_F(ChoiceKnobTest, StartsAtTheItemThatItsOpHas) {
    EXPECT_EQ(choice.items(), (std::vector<std::string>{"none", "one", "a few"}));
    EXPECT_EQ(choice.index(), 1);
    EXPECT_EQ(choice.size(), 1);
    EXPECT_EQ(choice.get_value(), 1);
    EXPECT_STREQ(choice.get_text(), "one");
    EXPECT_EQ(stored()->choice, 1);
    EXPECT_FALSE(choice.not_default());
    EXPECT_FALSE(choice.is_animated());
}

TEST_F(ChoiceKnobTest, PicksByTextAndByIndex) {
    EXPECT_TRUE(choice.set_text("a few"));
    EXPECT_EQ(stored()->choice, 2);
    EXPECT_TRUE(knob("choice").set_value(0));
    EXPECT_STREQ(choice.get_text(), "none");
    EXPECT_TRUE(choice.set_text("1"));
    EXPECT_STREQ(choice.get_text(), "one");
}

TEST_F(ChoiceKnobTest, TakesAnIndexThatNoItemHas) {
    for (const int index : {3, -1, 1000000, 2147483647}) {
        EXPECT_TRUE(knob("choice").set_value(index));
        EXPECT_EQ(stored()->choice, index);
        EXPECT_EQ(choice.get_text(), std::to_string(index));
        EXPECT_EQ(choice.to_script(), std::to_string(index));
    }
    EXPECT_TRUE(choice.set_text("17"));
    EXPECT_EQ(stored()->choice, 17);
}

TEST_F(ChoiceKnobTest, RefusesWhatIsNoItem) {
    for (const char* const text : {"", "two", "One", "1.5", "1 ", "99999999999"})
        EXPECT_FALSE(choice.set_text(text)) << text;
    EXPECT_FALSE(choice.set_text(nullptr));
    EXPECT_FALSE(knob("choice").set_value(0.5));
    EXPECT_FALSE(knob("choice").set_value(3e9));
    EXPECT_FALSE(knob("choice").set_value(std::nan("")));
    EXPECT_FALSE(knob("choice").set_value(1, 1));
    EXPECT_EQ(choice.index(), 1);
}

TEST_F(ChoiceKnobTest, HashesTheItem) {
    const DD::Image::Hash before = hash_at(1);
    knob("choice").set_value(2);
    EXPECT_NE(hash_at(1), before);
    choice.set_text("one");
    EXPECT_EQ(hash_at(1), before);
}

TEST_F(ChoiceKnobTest, ReadsTheItemsTextFromScripts) {
    const struct {
        const char* text;
        int index;
    } cases[] = {{"none", 0},       {"\"a few\"", 2}, {"{a few}", -1}, {"{\"a few\"}", 2},
                 {"{{a few}}", -1}, {"{one}", 1},     {"2", 2},        {"{0}", 0}};
    for (const auto& c : cases) {
        if (c.index < 0)
            continue;
        EXPECT_EQ(read_error("choice", c.text), "no error") << c.text;
        EXPECT_EQ(choice.index(), c.index) << c.text;
    }
}

TEST_F(ChoiceKnobTest, RefusesAnimationsAndUnknownItemsOfScripts) {
    EXPECT_EQ(read_error("choice", "two"), "shot.nk:1:2: knob 'choice' has no item 'two'");
    const std::string why = " is an animation or an expression, which a menu cannot have here";
    EXPECT_EQ(read_error("choice", "{{curve x1 0}}"),
              "shot.nk:1:2: knob 'choice': '{{curve x1 0}}'" + why);
    EXPECT_EQ(read_error("choice", "{one two}"), "shot.nk:1:2: knob 'choice': '{one two}'" + why);
    EXPECT_EQ(read_error("choice", "{}"), "shot.nk:1:2: knob 'choice': '{}'" + why);
}

TEST_F(ChoiceKnobTest, WritesTheItemsText) {
    knob("choice").set_value(2);
    EXPECT_EQ(choice.to_script(), "\"a few\"");
    EXPECT_TRUE(choice.not_default());
    EXPECT_TRUE(choice.from_script("one"));
    EXPECT_FALSE(choice.not_default());
}
