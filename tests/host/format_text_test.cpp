// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/format_text.h"

#include <gtest/gtest.h>

using DD::Image::Format;
using namespace velmora;
using namespace velmora::host;

static ScriptValue quoted(const std::string& text) {
    return {ScriptValue::Kind::quoted, text, {4, 9}};
}

static Format parsed(const std::string& text) {
    return parse_format_text(quoted(text), "shot.nk");
}

static std::string error_of(const std::string& text) {
    try {
        parsed(text);
    } catch (const ScriptError& error) {
        return error.what();
    }
    return "no error";
}

TEST(FormatText, ReadsEveryFormThatScriptsUse) {
    const struct {
        const char* text;
        Format format;
        const char* name;
    } cases[] = {
        {"640 480", {640, 480}, nullptr},
        {"640 480 2", {640, 480, 2.0}, nullptr},
        {"640 480 1.5", {640, 480, 1.5}, nullptr},
        {"640 480 PC_Video", {640, 480}, "PC_Video"},
        {"720 576 1.09 PAL", {720, 576, 1.09}, "PAL"},
        {"2048 1556 0 0 2048 1556 1 2K_Super", {2048, 1556}, "2K_Super"},
        {"2048 1556 8 10 2040 1546 2", {2048, 1556, 8, 10, 2040, 1546, 2}, nullptr},
        {"100 80 10 20 90 70", {100, 80, 10, 20, 90, 70}, nullptr},
        {"  640   480  ", {640, 480}, nullptr},
        {"16777216 1", {16777216, 1}, nullptr},
    };
    for (const auto& c : cases) {
        const Format format = parsed(c.text);
        EXPECT_EQ(format, c.format) << c.text;
        EXPECT_STREQ(format.name(), c.name) << c.text;
    }
}

TEST(FormatText, ReadsBracedListsToo) {
    const ScriptValue braced = {ScriptValue::Kind::braced, "640 480 {my format}", {1, 1}};
    const Format format = parse_format_text(braced, "shot.nk");
    EXPECT_EQ(format, Format(640, 480));
    EXPECT_STREQ(format.name(), "my format");
}

TEST(FormatText, FindsFormatsByTheirName) {
    Format(320, 200, 1.2).add("FormatText_known");
    EXPECT_EQ(parsed("FormatText_known"), Format(320, 200, 1.2));
    EXPECT_EQ(error_of("FormatText_unknown"),
              "shot.nk:4:9: there is no format named 'FormatText_unknown'");
}

TEST(FormatText, RefusesWhatIsNoFormat) {
    const char* const texts[] = {
        "",
        "640",
        "0 480",
        "640 0",
        "-640 480",
        "-2147483648 480",
        "16777217 1",
        "640 480 1 name another",
        "640 480 -10 0 640 480",
        "640 480 0 0 641 480",
        "640 480 0 0 640 481",
        "640 480 100 0 100 480",
        "640 480 0 90 640 80",
    };
    for (const std::string text : texts)
        EXPECT_EQ(error_of(text), "shot.nk:4:9: '" + text +
                                      "' is not a format: width height [x y r t] [aspect] [name]");
}

TEST(FormatText, WritesWhatItReads) {
    EXPECT_EQ(format_text(Format(640, 480)), "640 480 0 0 640 480 1");
    Format named(2048, 1556, 8, 10, 2040, 1546, 1.5);
    named.name("mine");
    EXPECT_EQ(format_text(named), "2048 1556 8 10 2040 1546 1.5 mine");
    const Format again = parsed(format_text(named));
    EXPECT_EQ(again, named);
    EXPECT_STREQ(again.name(), "mine");
}
