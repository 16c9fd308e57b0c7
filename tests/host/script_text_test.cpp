// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/script_text.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace velmora;
using namespace velmora::host;

typedef std::vector<std::string> Texts;
typedef ScriptValue::Kind Kind;

// Kind, text and place in one: w for a word, q for a quoted text, b for a braced one.
static std::string told(const ScriptValue& value) {
    const char* const kinds = "wqb";
    return std::string(1, kinds[static_cast<int>(value.kind)]) + "<" + value.text + ">@" +
           std::to_string(value.place.line) + ":" + std::to_string(value.place.column);
}

static Texts told(const std::vector<ScriptValue>& values) {
    Texts texts;
    for (const ScriptValue& value : values)
        texts.push_back(told(value));
    return texts;
}

static std::vector<Texts> told_commands(const std::string& text) {
    std::vector<Texts> commands;
    for (const ScriptCommand& command : commands_of(text, "shot.nk"))
        commands.push_back(told(command));
    return commands;
}

// The one value of a script of one command of one value.
static ScriptValue value_of(const std::string& text) {
    const std::vector<ScriptCommand> commands = commands_of(text, "shot.nk");
    return commands.size() == 1 && commands[0].size() == 1 ? commands[0][0] : ScriptValue();
}

static std::string error_of(const std::string& text) {
    try {
        commands_of(text, "shot.nk");
    } catch (const ScriptError& error) {
        return error.what();
    }
    return "no error";
}

// The error message for a list with this text between its braces.
static std::string error_in_list(const std::string& text) {
    try {
        list_items({Kind::braced, text, {1, 1}}, "shot.nk");
    } catch (const ScriptError& error) {
        return error.what();
    }
    return "no error";
}

static std::string number_error_of(const std::string& text) {
    try {
        number_of(value_of(text), "shot.nk");
    } catch (const ScriptError& error) {
        return error.what();
    }
    return "no error";
}

TEST(ScriptText, SplitsLinesIntoValuesWithTheirPlaces) {
    EXPECT_EQ(told_commands("version 13.2 v5\n"
                            "  Blur {\n size 2\n}\n"
                            "add_layer {P P.x} ; push \"a b\"\n"),
              (std::vector<Texts>{{"w<version>@1:1", "w<13.2>@1:9", "w<v5>@1:14"},
                                  {"w<Blur>@2:3", "b<\n size 2\n>@2:8"},
                                  {"w<add_layer>@5:1", "b<P P.x>@5:11"},
                                  {"w<push>@5:21", "q<a b>@5:26"}}));
}

TEST(ScriptText, HasNoCommandsInBlanksAndComments) {
    EXPECT_EQ(told_commands(""), std::vector<Texts>());
    EXPECT_EQ(told_commands("#! /usr/local/bin/host -nx\n \t\n;;\n  # more { \" [\n"),
              std::vector<Texts>());
    EXPECT_EQ(told_commands("# over two \\\n lines\npush 0; # the rest\n#"),
              (std::vector<Texts>{{"w<push>@3:1", "w<0>@3:6"}}));
}

TEST(ScriptText, TakesASignInsideACommandForNoComment) {
    EXPECT_EQ(told_commands("set a #1"),
              (std::vector<Texts>{{"w<set>@1:1", "w<a>@1:5", "w<#1>@1:7"}}));
}

TEST(ScriptText, KeepsWhatIsInBracketsAndNamesOfVariables) {
    EXPECT_EQ(told_commands("set N1 [stack 0]\npush $N1\nx a[b [c;d] e]f g"),
              (std::vector<Texts>{{"w<set>@1:1", "w<N1>@1:5", "w<[stack 0]>@1:8"},
                                  {"w<push>@2:1", "w<$N1>@2:6"},
                                  {"w<x>@3:1", "w<a[b [c;d] e]f>@3:3", "w<g>@3:17"}}));
}

TEST(ScriptText, GoesOnAfterABackslashAtTheEndOfALine) {
    EXPECT_EQ(told_commands("push\\\n  \\\n $N1"),
              (std::vector<Texts>{{"w<push>@1:1", "w<$N1>@3:2"}}));
    EXPECT_EQ(value_of("\"a\\\n \t b\"").text, "a b");
    EXPECT_EQ(told(list_items(value_of("{a\\\nb}"), "shot.nk")), (Texts{"w<a>@1:2", "w<b>@2:1"}));
}

TEST(ScriptText, ReadsTheEscapesOfTcl) {
    EXPECT_EQ(value_of("\"a\\nb\\tc\\\"d\\\\e\\{f\\}\\[g\\]\\$h\\q\"").text,
              "a\nb\tc\"d\\e{f}[g]$hq");
    EXPECT_EQ(value_of("\"\\a\\b\\f\\r\\v\"").text, "\a\b\f\r\v");
    EXPECT_EQ(value_of("\"\\101\\x42\\u0043\\1012\\x424\\u00431\"").text, "ABCA2B4C1");
    // Characters beyond ASCII become UTF-8: e acute, the euro sign, and a lone surrogate.
    EXPECT_EQ(value_of("\"\\351\\xe9\\u20AC\\ud800\"").text,
              "\xc3\xa9\xc3\xa9\xe2\x82\xac\xef\xbf\xbd");
    EXPECT_EQ(value_of("\"\\x \\ug\"").text, "x ug");
    EXPECT_EQ(value_of("a\\ b\\{\\n").text, "a b{\n");
    EXPECT_EQ(value_of("a\\").text, "a\\");
}

TEST(ScriptText, KeepsBracedTextRaw) {
    EXPECT_EQ(value_of("{a \\n {b \"} c\\} \\{ $d [e}").text, "a \\n {b \"} c\\} \\{ $d [e");
    EXPECT_EQ(value_of("{}").text, "");
    EXPECT_EQ(value_of("{}").kind, Kind::braced);
}

TEST(ScriptText, TakesLinesThatEndInCarriageReturns) {
    EXPECT_EQ(told_commands("push 0\r\nBlur {\r\n size 2\r\n}\r\npush \"a\r\nb\"\r\n"),
              (std::vector<Texts>{{"w<push>@1:1", "w<0>@1:6"},
                                  {"w<Blur>@2:1", "b<\n size 2\n>@2:6"},
                                  {"w<push>@5:1", "q<a\nb>@5:6"}}));
    EXPECT_EQ(value_of("{a\r\r\nb\rc}").text, "a\nb\rc");
}

TEST(ScriptText, SkipsTheMarkOfUtf8) {
    EXPECT_EQ(told_commands("\xef\xbb\xbfpush 0"),
              (std::vector<Texts>{{"w<push>@1:4", "w<0>@1:9"}}));
}

TEST(ScriptText, CountsColumnsInBytes) {
    EXPECT_EQ(told_commands("\xc3\xa9 x"), (std::vector<Texts>{{"w<\xc3\xa9>@1:1", "w<x>@1:4"}}));
}

TEST(ScriptText, SplitsListsOneLevelDeep) {
    const ScriptValue list = commands_of("Camera2 {\n focal {{curve x1 35}}\n"
                                         " label \"a\\nb\"\n translate {0 {1 2}  \"3\"}\n}",
                                         "shot.nk")[0][1];
    const std::vector<ScriptValue> items = list_items(list, "shot.nk");
    EXPECT_EQ(told(items), (Texts{"w<focal>@2:2", "b<{curve x1 35}>@2:8", "w<label>@3:2",
                                  "q<a\nb>@3:8", "w<translate>@4:2", "b<0 {1 2}  \"3\">@4:12"}));
    EXPECT_EQ(told(list_items(items[1], "shot.nk")), (Texts{"b<curve x1 35>@2:9"}));
    EXPECT_EQ(told(list_items(items[5], "shot.nk")),
              (Texts{"w<0>@4:13", "b<1 2>@4:15", "q<3>@4:22"}));
}

TEST(ScriptText, TakesCommandSignsInListsAsTheyAre) {
    EXPECT_EQ(told(list_items(value_of("{a;b #c [d e] $f}"), "shot.nk")),
              (Texts{"w<a;b>@1:2", "w<#c>@1:6", "w<[d>@1:9", "w<e]>@1:12", "w<$f>@1:15"}));
}

TEST(ScriptText, HasListsOfOneInWordsAndQuotedTexts) {
    EXPECT_EQ(told(list_items(value_of("abc"), "shot.nk")), (Texts{"w<abc>@1:1"}));
    EXPECT_EQ(told(list_items(value_of("\"a b\""), "shot.nk")), (Texts{"q<a b>@1:1"}));
    EXPECT_EQ(told(list_items(value_of("{ \n }"), "shot.nk")), Texts());
}

TEST(ScriptText, MakesNoDifferenceBetweenWordsAndQuotedTexts) {
    EXPECT_EQ(value_of("a"), value_of("  \"a\""));
    EXPECT_FALSE(value_of("a") == value_of("{a}"));
    EXPECT_FALSE(value_of("a") == value_of("b"));
}

TEST(ScriptText, ReadsBracesOfAnyDepth) {
    const std::size_t depth = 1000000;
    ScriptValue value = value_of(std::string(depth, '{') + std::string(depth, '}'));
    EXPECT_EQ(value.text.size(), 2 * depth - 2);
    for (int level = 0; level < 10; level++)
        value = list_items(value, "shot.nk")[0];
    EXPECT_EQ(value.text.size(), 2 * (depth - 11));
    EXPECT_EQ(error_of(std::string(depth, '{')), "shot.nk:1:1: the brace is never closed");
    EXPECT_EQ(error_of(std::string(depth, '[')), "shot.nk:1:1: the bracket is never closed");
}

TEST(ScriptText, NamesThePlaceAtFault) {
    const struct {
        const char *text, *error;
    } cases[] = {
        {"Blur {\n size 2\n", "shot.nk:1:6: the brace is never closed"},
        {"Blur {\n label {a\n}\n", "shot.nk:1:6: the brace is never closed"},
        {"Blur {\\}", "shot.nk:1:6: the brace is never closed"},
        {"Blur {\\", "shot.nk:1:6: the brace is never closed"},
        {"push 0\n }\n", "shot.nk:2:2: the brace was never opened"},
        {"push \"a\n\n", "shot.nk:1:6: the quote is never closed"},
        {"push \"a\\\"", "shot.nk:1:6: the quote is never closed"},
        {"set a x[stack [0]", "shot.nk:1:8: the bracket is never closed"},
        {"Blur {}{}", "shot.nk:1:8: text right after a closing brace"},
        {"push \"a\"b", "shot.nk:1:9: text right after a closing quote"},
        {"push \"a\\000\"", "shot.nk:1:8: a NUL byte cannot be part of a text"},
        {"push a\\x0", "shot.nk:1:7: a NUL byte cannot be part of a text"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(error_of(c.text), c.error) << c.text;
    EXPECT_EQ(error_of(std::string("push\r\n 0\0", 9)),
              "shot.nk:2:3: a NUL byte cannot be part of a text");
}

TEST(ScriptText, NamesThePlaceAtFaultInLists) {
    EXPECT_EQ(error_in_list("a\n \"b"), "shot.nk:2:2: the quote is never closed");
    EXPECT_EQ(error_in_list("a {b"), "shot.nk:1:4: the brace is never closed");
    EXPECT_EQ(error_in_list("a {b}c"), "shot.nk:1:7: text right after a closing brace");
    EXPECT_EQ(error_in_list("a \"b\"{c}"), "shot.nk:1:7: text right after a closing quote");
}

TEST(ScriptText, KeepsPlaceAndReasonOfAnErrorApart) {
    try {
        commands_of("push {", "shot.nk");
        FAIL() << "no error";
    } catch (const ScriptError& error) {
        EXPECT_EQ(error.where, "shot.nk:1:6");
        EXPECT_EQ(error.why, "the brace is never closed");
    }
}

TEST(ScriptText, ReadsNumbersAsTheyStand) {
    const struct {
        const char* text;
        double number;
    } cases[] = {{"0", 0},       {"-1.5", -1.5}, {"+2", 2},        {".25", 0.25},
                 {"1e-3", 1e-3}, {"\"7\"", 7},   {"1e308", 1e308}, {"0.1", 0.1}};
    for (const auto& c : cases)
        EXPECT_EQ(number_of(value_of(c.text), "shot.nk"), c.number) << c.text;
}

TEST(ScriptText, SaysWhatIsNoNumber) {
    const struct {
        const char *text, *error;
    } cases[] = {
        {"x", "shot.nk:1:1: 'x' is not a number"},
        {"\"\"", "shot.nk:1:1: '' is not a number"},
        {" 1,5", "shot.nk:1:2: '1,5' is not a number"},
        {"0x10", "shot.nk:1:1: '0x10' is not a number"},
        {"+-1", "shot.nk:1:1: '+-1' is not a number"},
        {"{1}", "shot.nk:1:1: '{1}' is not a number"},
        {"1e999", "shot.nk:1:1: '1e999' is out of range"},
        {"-inf", "shot.nk:1:1: '-inf' is not a finite number"},
        {"nan", "shot.nk:1:1: 'nan' is not a finite number"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(number_error_of(c.text), c.error);
}

TEST(ScriptText, WritesNumbersAsShortAsTheyReadBack) {
    EXPECT_EQ(number_text(0.1), "0.1");
    EXPECT_EQ(number_text(-3), "-3");
    EXPECT_EQ(number_text(1.0 / 3), "0.3333333333333333");
    typedef std::numeric_limits<double> limits;
    for (const double number : {limits::max(), limits::lowest(), limits::min(),
                                limits::denorm_min(), 1.0 + limits::epsilon(), M_PI, 1e22, -0.0}) {
        const ScriptValue value = {Kind::word, number_text(number), {}};
        EXPECT_EQ(number_of(value, "shot.nk"), number);
    }
}

TEST(ScriptText, ShowsAnyTextInOnePlainLine) {
    EXPECT_EQ(in_quotes("a\nb\xff"), "'a\\x0ab\\xff'");
    EXPECT_EQ(in_quotes(std::string(41, 'a')), "'" + std::string(40, 'a') + "...'");
    EXPECT_EQ(in_quotes(std::string(40, 'a')), "'" + std::string(40, 'a') + "'");
    EXPECT_EQ(in_quotes(value_of("{a b}")), "'{a b}'");
}
