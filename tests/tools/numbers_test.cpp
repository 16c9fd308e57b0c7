// SPDX-License-Identifier: BSD-3-Clause
#include "tools/numbers.h"

#include <gtest/gtest.h>

using namespace velmora;

static std::vector<double> read(const std::string& text) {
    std::vector<double> numbers;
    EXPECT_TRUE(parse_numbers(text, numbers)) << text;
    return numbers;
}

TEST(Numbers, StandBetweenCommasOrBlanks) {
    const std::vector<double> expected = {1, -2.5, 300};
    EXPECT_EQ(read("1 -2.5 3e2"), expected);
    EXPECT_EQ(read("1,-2.5,3e2"), expected);
    EXPECT_EQ(read(" 1 ,\t-2.5 , 3e2 "), expected);
    EXPECT_EQ(read("{1 -2.5 3e2}"), expected);
    EXPECT_EQ(read("").size(), 0u);
}

TEST(Numbers, AreRefusedWhenOneIsNone) {
    std::vector<double> numbers;
    for (const char* text : {"1 x", "1;2", "nan", "1 inf", "1 2}", "0x10", "1e400"})
        EXPECT_FALSE(parse_numbers(text, numbers)) << text;
}

TEST(Numbers, AreWrittenAsShortlyAsTheyReadBack) {
    EXPECT_EQ(shortest_text(0.1), "0.1");
    EXPECT_EQ(shortest_text(50), "50");
    EXPECT_EQ(shortest_text(-0.0001), "-0.0001");
    EXPECT_EQ(join_numbers({1, 0.5, -2}), "1 0.5 -2");
}
