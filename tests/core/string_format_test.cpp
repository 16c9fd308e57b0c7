// SPDX-License-Identifier: BSD-3-Clause
#include "core/string.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>

namespace {

[[gnu::format(printf, 2, 3)]] void call_vsprintf(String& s, const char* format, ...) {
    va_list args;
    va_start(args, format);
    s.vsprintf(format, args);
    va_end(args);
}

[[gnu::format(printf, 1, 2)]] String call_vfmt(const char* format, ...) {
    va_list args;
    va_start(args, format);
    String result(String::vfmt(format, args));
    va_end(args);
    return result;
}

} // namespace

TEST(String, FormatsLikePrintf) {
    EXPECT_STREQ(String::fmt("plain").str, "plain");
    EXPECT_STREQ(String::fmt("%d %s %.2f %c 100%%", -5, "text", 1.5, 'x').str,
                 "-5 text 1.50 x 100%");
    EXPECT_STREQ(call_vfmt("%s=%lu", "n", 18446744073709551615ul).str, "n=18446744073709551615");
}

TEST(String, FormattingReplacesTheText) {
    String s("old");
    s.sprintf("%d", 7);
    EXPECT_STREQ(s.str, "7");
    call_vsprintf(s, "%d%s", 8, "9");
    EXPECT_STREQ(s.str, "89");
}

TEST(String, FormattingMayUseTheOldText) {
    String s("old");
    s.sprintf("%s and %s", s.str, "new");
    EXPECT_STREQ(s.str, "old and new");
}

TEST(String, AFormattedEmptyTextIsNotNull) {
    String s("old");
    s.sprintf("%s", "");
    ASSERT_NE(s.str, nullptr);
    EXPECT_STREQ(s.str, "");
    const String made(String::fmt("%s", ""));
    ASSERT_NE(made.str, nullptr);
    EXPECT_STREQ(made.str, "");
}

TEST(String, FormatsTextsOfAnyLength) {
    for (std::size_t n : {1, 98, 99, 100, 101, 199, 200, 201, 4096, 1000000}) {
        const std::string text(n, 'x');
        EXPECT_EQ(String::fmt("%s", text.c_str()).str, text) << n;
        EXPECT_EQ(call_vfmt("%d%s%d", 1, text.c_str(), 2).str, "1" + text + "2") << n;
    }
}

TEST(String, FormattedTextsAreNotFormattedAgain) {
    EXPECT_STREQ(String::fmt("%s", "%d %s %n").str, "%d %s %n");
}
