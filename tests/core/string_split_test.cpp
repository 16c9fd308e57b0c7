// SPDX-License-Identifier: BSD-3-Clause
#include "core/array.h"
#include "core/string.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

typedef std::vector<std::string> Texts;

// The tokens as texts; a null token, which splitting never makes, reads "(null)".
Texts texts_of(const Array<String>& array) {
    Texts texts;
    for (uword i = 0; i < array.len(); i++)
        texts.push_back(array[i].str ? array[i].str : "(null)");
    return texts;
}

} // namespace

TEST(StringSplit, TokensAreTheNonEmptyRunsBetweenSeparators) {
    struct {
        const char *text, *separators;
        Texts tokens;
    } const cases[] = {
        {"", ",", {}},
        {",", ",", {}},
        {",,,", ",", {}},
        {"a", ",", {"a"}},
        {"a,b", ",", {"a", "b"}},
        {",a,,b,", ",", {"a", "b"}},
        {"one;two,three", ",;", {"one", "two", "three"}},
        {"one;two,three", ";", {"one", "two,three"}},
        {"a b", "", {"a b"}}, // no separators: the whole text
        {"", "", {}},
        {"a\xff"
         "b",
         "\xff",
         {"a", "b"}},
        {"aXbxc", "x", {"aXb", "c"}},
    };
    for (const auto& c : cases) {
        Array<String> from_text, from_string;
        String::split_by(c.text, c.separators, from_text);
        String::split_by(String(c.text), c.separators, from_string);
        EXPECT_EQ(texts_of(from_text), c.tokens) << '"' << c.text << '"';
        EXPECT_EQ(texts_of(from_string), c.tokens) << '"' << c.text << '"';
    }
}

TEST(StringSplit, SplitsAtWhiteSpaceByDefault) {
    struct {
        const char* text;
        Texts tokens;
    } const cases[] = {
        {"", {}},
        {"  a  b ", {"a", "b"}},
        {"a\tb\nc\rd e", {"a", "b", "c", "d", "e"}},
        {" \t\r\n", {}},
        {"a\vb\fc", {"a\vb\fc"}}, // vertical tab and form feed separate nothing
        {"two words\r\n", {"two", "words"}},
    };
    for (const auto& c : cases) {
        Array<String> from_text, from_string;
        String::split(c.text, from_text);
        String::split(String(c.text), from_string);
        EXPECT_EQ(texts_of(from_text), c.tokens) << '"' << c.text << '"';
        EXPECT_EQ(texts_of(from_string), c.tokens) << '"' << c.text << '"';
    }
}

TEST(StringSplit, ANullStringHasNoTokens) {
    Array<String> out;
    String::split(String(), out);
    String::split_by(String(), ",", out);
    EXPECT_EQ(out.len(), 0u);
    EXPECT_EQ(out.data, nullptr);
}

TEST(StringSplit, AppendsToWhatIsThere) {
    Array<String> out;
    String::split("a b", out);
    String::split_by("c,d", ",", out);
    String::split("", out);
    EXPECT_EQ(texts_of(out), Texts({"a", "b", "c", "d"}));
}

TEST(StringSplit, TokensMayBeLongAndMany) {
    std::string text;
    Texts expected;
    for (int i = 0; i < 300; i++) {
        expected.push_back(std::string(i + 1, char('a' + i % 26)));
        text += expected.back() + " ";
    }
    Array<String> out;
    String::split(text.c_str(), out);
    EXPECT_EQ(texts_of(out), expected);
}

TEST(StringChop, EndsAtTheFirstLineEnd) {
    struct {
        const char* text;
        const char* line;
    } const cases[] = {
        {"", ""},           {"abc", "abc"},      {"abc\n", "abc"},
        {"abc\r\n", "abc"}, {"abc\rdef", "abc"}, {"abc\ndef\n", "abc"},
        {"\nabc", ""},      {"\rabc", ""},       {" a\tb \n", " a\tb "},
    };
    for (const auto& c : cases) {
        const String from_text = String::chop(c.text);
        const String from_string = String::chop(String(c.text));
        EXPECT_STREQ(from_text.str ? from_text.str : "", c.line);
        EXPECT_STREQ(from_string.str ? from_string.str : "", c.line);
    }
}

TEST(StringChop, OfANullStringIsEmpty) {
    EXPECT_EQ(String::chop(String()).len(), 0u);
}

TEST(StringChop, OfNothingIsTheNullText) {
    EXPECT_EQ(String::chop("").str, nullptr);
    EXPECT_EQ(String::chop("\r\nabc").str, nullptr);
}
