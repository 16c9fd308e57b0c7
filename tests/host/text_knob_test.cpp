// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/text_knob.h"

#include "tests/host/panel.h"

using namespace velmora;
using namespace velmora::host;

class TextKnobTest : public PanelTest {};

TEST_F(TextKnobTest, StartsAsItsOpHasIt) {
    EXPECT_STREQ(knob("file").get_text(), "stars.dat");
    EXPECT_STREQ(knob("text").get_text(), ""); // where the op has no text at all
    EXPECT_STREQ(knob("words").get_text(), "two words");
    const auto op = stored();
    EXPECT_STREQ(op->file, "stars.dat");
    EXPECT_STREQ(op->text, "");
    EXPECT_EQ(op->words, "two words");
}

TEST_F(TextKnobTest, StoresWhatItIsSetTo) {
    EXPECT_TRUE(knob("file").set_text("/data/sky"));
    EXPECT_TRUE(knob("text").set_text("x"));
    EXPECT_TRUE(knob("words").set_text(nullptr));
    const auto op = stored();
    EXPECT_STREQ(op->file, "/data/sky");
    EXPECT_STREQ(op->text, "x");
    EXPECT_EQ(op->words, "");
}

// The op's text stays valid after its knob has changed.
TEST_F(TextKnobTest, LeavesAnOpTheTextThatItHas) {
    const auto op = stored();
    const char* const text = op->file;
    knob("file").set_text("another text, and a longer one");
    EXPECT_STREQ(text, "stars.dat");
    DD::Image::Hash ignored;
    node.store_all(*op, ignored);
    EXPECT_STREQ(op->file, "another text, and a longer one");
}

TEST_F(TextKnobTest, HashesTheText) {
    const DD::Image::Hash before = hash_at(1);
    for (const char* const name : {"file", "text", "words"}) {
        const std::string text = knob(name).get_text();
        knob(name).set_text("changed");
        EXPECT_NE(hash_at(1), before) << name;
        knob(name).set_text(text.c_str());
        EXPECT_EQ(hash_at(1), before) << name;
    }
}

TEST_F(TextKnobTest, ReadsWordsQuotedAndBracedTexts) {
    const struct {
        const char *script, *text;
    } cases[] = {
        {"sky.dat", "sky.dat"},
        {"\"two words\"", "two words"},
        {"{two words}", "two words"},
        {"\"a \\\"quote\\\"\"", "a \"quote\""},
        {"\"\"", ""},
    };
    for (const auto& c : cases) {
        for (const char* const name : {"file", "text", "words"}) {
            EXPECT_EQ(read_error(name, c.script), "no error") << c.script;
            EXPECT_STREQ(knob(name).get_text(), c.text);
        }
    }
}

TEST_F(TextKnobTest, PutsTheScriptsFolderIntoFileNames) {
    const ScriptValue value = {
        ScriptValue::Kind::quoted, "[file dirname [value root.name]]/sky.dat", {3, 4}};
    knob("file").read(value, "/shots/a/shot.nk");
    EXPECT_STREQ(knob("file").get_text(), "/shots/a/sky.dat");
    knob("file").read(value, "shot.nk");
    EXPECT_STREQ(knob("file").get_text(), "./sky.dat");
    knob("text").read(value, "/shots/a/shot.nk");
    EXPECT_STREQ(knob("text").get_text(), value.text.c_str()); // not a file name
}

TEST_F(TextKnobTest, RefusesFileNamesThatHaveToBeComputed) {
    EXPECT_EQ(read_error("file", "\"[getenv SKY]/sky.dat\""),
              "shot.nk:1:2: knob 'file': the expression in '[getenv SKY]/sky.dat' is not "
              "supported");
    EXPECT_EQ(read_error("text", "\"[date]\""), "no error");
    EXPECT_STREQ(knob("text").get_text(), "[date]");
}

TEST_F(TextKnobTest, WritesWhatItReads) {
    for (const char* const text :
         {"", "word", "two words", "a \"quote\"", "back\\slash", "{", "$x", "line\nbreak", "[x]"}) {
        ASSERT_TRUE(knob("words").set_text(text));
        const std::string script = knob("words").to_script();
        ASSERT_TRUE(knob("words").set_text("something else"));
        EXPECT_TRUE(knob("words").from_script(script.c_str())) << script;
        EXPECT_STREQ(knob("words").get_text(), text);
    }
    EXPECT_FALSE(knob("text").not_default());
    knob("text").set_text("x");
    EXPECT_TRUE(knob("text").not_default());
}
