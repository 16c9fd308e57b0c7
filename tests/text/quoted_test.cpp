// SPDX-License-Identifier: BSD-3-Clause
#include "text/quoted.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <regex>
#include <set>
#include <vector>

using namespace velmora;

namespace {

std::string utf8(unsigned code) {
    const auto byte = [](unsigned bits) { return static_cast<char>(bits); };
    if (code < 0x80)
        return {byte(code)};
    if (code < 0x800)
        return {byte(0xc0 + code / 64), byte(0x80 + code % 64)};
    if (code < 0x10000)
        return {byte(0xe0 + code / 4096), byte(0x80 + code / 64 % 64), byte(0x80 + code % 64)};
    return {byte(0xf0 + code / 262144), byte(0x80 + code / 4096 % 64), byte(0x80 + code / 64 % 64),
            byte(0x80 + code % 64)};
}

std::string escaped(const std::string& bytes) {
    std::string text;
    for (const char ch : bytes) {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(ch));
        text += escape;
    }
    return text;
}

// Hostile texts and what a message shows instead.
const struct {
    const char* what;
    std::string text, shown;
} hostile[] = {
    {"an escape sequence", "\x1b[31mred", "\\x1b[31mred"},
    {"a bell", "ding\a", "ding\\x07"},
    {"a carriage return", "a\rb", "a\\x0db"},
    {"a forged line", "a\nvelmora: done", "a\\x0avelmora: done"},
    {"a NUL", std::string("a\0b", 3), "a\\x00b"},
    {"delete", "a\x7f", "a\\x7f"},
    {"CSI as one character, U+009B", "\xc2\x9bm", "\\xc2\\x9bm"},
    {"CSI as a byte", "\x9bm", "\\x9bm"},
    {"next line, U+0085", "a\xc2\x85z", "a\\xc2\\x85z"},
    {"a line separator", "a\xe2\x80\xa8z", "a\\xe2\\x80\\xa8z"},
    {"a paragraph separator", "a\xe2\x80\xa9z", "a\\xe2\\x80\\xa9z"},
    {"an override to the left, U+202E", "\xe2\x80\xaegnp.exr", "\\xe2\\x80\\xaegnp.exr"},
    {"a byte order mark", "\xef\xbb\xbfx", "\\xef\\xbb\\xbfx"},
    {"an overlong slash", "\xc0\xaf", "\\xc0\\xaf"},
    {"an overlong escape", "\xe0\x80\x9b", "\\xe0\\x80\\x9b"},
    {"a surrogate", "\xed\xa0\x80", "\\xed\\xa0\\x80"},
    {"beyond Unicode", "\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
    {"a cut character", "Z\xc3", "Z\\xc3"},
    {"a character cut by an escape", "\xe2\x82\x1b", "\\xe2\\x82\\x1b"},
};

} // namespace

TEST(Printable, ShowsWhatIsHostileAsItsBytes) {
    for (const auto& row : hostile)
        EXPECT_EQ(printable(row.text), row.shown) << row.what;
}

TEST(Printable, LeavesTextAlone) {
    for (const std::string text :
         {"", "plain", "C:\\stars\\x", "'\"`$&;", "Größe", "Ξ Ursae Majoris", "星", "✨🔭", "é"})
        EXPECT_EQ(printable(text), text);
}

TEST(Printable, DecidesEveryCodePoint) {
    std::set<unsigned> hidden = {0x61c, 0x200b, 0x200e, 0x200f, 0xfeff, 0xfff9, 0xfffa, 0xfffb};
    const auto hide = [&](unsigned first, unsigned last) {
        for (unsigned code = first; code <= last; code++)
            hidden.insert(code);
    };
    hide(0, 31);
    hide(127, 159);
    hide(0x2028, 0x202e);
    hide(0x2060, 0x206f);
    hide(0xd800, 0xdfff); // surrogates
    hide(0xe0000, 0xe007f);
    for (unsigned code = 0; code <= 0x10ffff; code++) {
        const std::string text = utf8(code);
        ASSERT_EQ(printable(text), hidden.count(code) ? escaped(text) : text) << std::hex << code;
    }
}

// All texts of three bytes at the edges of the encoding's ranges.
TEST(Printable, GivesOneLineOfUtf8ForAnyBytes) {
    static const std::regex one_line(
        "(?:[\\x20-\\x7e]|[\\xc2-\\xdf][\\x80-\\xbf]|\\xe0[\\xa0-\\xbf][\\x80-\\xbf]"
        "|[\\xe1-\\xec\\xee\\xef][\\x80-\\xbf]{2}|\\xed[\\x80-\\x9f][\\x80-\\xbf])*");
    std::vector<char> edges;
    for (const unsigned byte :
         {0x00u, 0x0au, 0x1bu, 0x1fu, 0x20u, 0x7eu, 0x7fu, 0x80u, 0x8fu, 0x90u,
          0x9fu, 0xa0u, 0xa8u, 0xbfu, 0xc0u, 0xc1u, 0xc2u, 0xdfu, 0xe0u, 0xe1u,
          0xe2u, 0xecu, 0xedu, 0xeeu, 0xefu, 0xf0u, 0xf4u, 0xf5u, 0xffu})
        edges.push_back(static_cast<char>(byte));
    for (const char a : edges)
        for (const char b : edges)
            for (const char c : edges) {
                const std::string text = {a, b, c}, shown = printable(text);
                ASSERT_TRUE(std::regex_match(shown, one_line)) << escaped(text) << " " << shown;
                ASSERT_EQ(printable(shown), shown);
            }
}

TEST(Printable, ComesInPiecesOfAnySize) {
    const std::string text = "a\x1b\xc2\x9b\xf0\x9f\x94\xad\xe2\x80\xa8z";
    for (std::size_t room = 4; room < 40; room++) {
        std::string_view rest = text;
        std::string shown;
        while (!rest.empty()) {
            char piece[41];
            std::memset(piece, '#', sizeof piece);
            const std::size_t written = take_printable(rest, piece, room);
            ASSERT_TRUE(written > 0 && written <= room) << room;
            EXPECT_EQ(piece[written], '#') << "nothing is written beyond";
            shown.append(piece, written);
        }
        EXPECT_EQ(shown, "a\\x1b\\xc2\\x9b\U0001f52d\\xe2\\x80\\xa8z") << room;
    }
}

TEST(Quoted, PutsPrintableTextInQuotes) {
    for (const auto& row : hostile)
        EXPECT_EQ(in_quotes(row.text), "'" + row.shown + "'") << row.what;
    EXPECT_EQ(in_quotes(""), "''");
}

TEST(Quoted, CutsLongTextBetweenCharacters) {
    const std::string forty(40, 'x'), star = "\u2605";
    EXPECT_EQ(in_quotes(forty), "'" + forty + "'");
    EXPECT_EQ(in_quotes(forty + "x"), "'" + forty + "...'");
    EXPECT_EQ(in_quotes(forty + "x", in_full), "'" + forty + "x'");
    for (const std::size_t plain : {37u, 38u, 39u, 40u})
        EXPECT_EQ(in_quotes(std::string(plain, 'x') + star + star),
                  "'" + std::string(plain, 'x') + (plain == 37 ? star : "") + "...'")
            << plain;
    EXPECT_EQ(in_quotes(std::string(60, '\x80'), 5), "'" + escaped("\x80\x80") + "...'")
        << "bytes that begin no character are cut off by threes at most";
    EXPECT_EQ(in_quotes("abc", 0), "'...'");
}
