// SPDX-License-Identifier: BSD-3-Clause
#include "text/text_error.h"

#include <gtest/gtest.h>

using namespace velmora;

TEST(TextError, SaysWhereAndWhyOnOneLine) {
    const TextError error("sky.chan:3", "'x' is not a number");
    EXPECT_STREQ(error.what(), "sky.chan:3: 'x' is not a number");
    EXPECT_EQ(error.where, "sky.chan:3");
    EXPECT_EQ(error.why, "'x' is not a number");
}

TEST(TextError, IsPrintableAndKeepsTheBytes) {
    const TextError error("a\nb", "\x1b[31mred");
    EXPECT_STREQ(error.what(), "a\\x0ab: \\x1b[31mred");
    EXPECT_EQ(error.where, "a\nb");
    EXPECT_EQ(error.why, "\x1b[31mred");
}
