// SPDX-License-Identifier: BSD-3-Clause
#include "text/number.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>

using namespace velmora;

namespace {

bool refuses_double(std::string_view text) {
    double value = 42;
    const bool read = parse_number(text, value);
    return !read && value == 42;
}

bool refuses_int(std::string_view text) {
    int value = 42;
    const bool read = parse_number(text, value);
    return !read && value == 42;
}

} // namespace

TEST(Number, ReadsDecimalNumbers) {
    struct {
        std::string_view text;
        double value;
    } const cases[] = {
        {"0", 0},
        {"1", 1},
        {"+1", 1},
        {"-1", -1},
        {"007", 7},
        {"1.5", 1.5},
        {".5", 0.5},
        {"5.", 5},
        {"-.25", -0.25},
        {"+.25", 0.25},
        {"1e3", 1000},
        {"1E3", 1000},
        {"1e+3", 1000},
        {"25e-2", 0.25},
        {"-1.5e2", -150},
        {"0.1", 0.1},
        {"1e308", 1e308},
        {"2.2250738585072014e-308", 2.2250738585072014e-308},
        {"1.7976931348623157e308", 1.7976931348623157e308},
    };
    for (const auto& c : cases) {
        double value = 42;
        EXPECT_TRUE(parse_number(c.text, value)) << c.text;
        EXPECT_EQ(value, c.value) << c.text;
    }
}

TEST(Number, ReadsTheSmallestDouble) {
    double value = 0;
    EXPECT_TRUE(parse_number("4.9e-324", value));
    EXPECT_EQ(value, std::numeric_limits<double>::denorm_min());
}

TEST(Number, ReadsInfinitiesAndNan) {
    double value = 0;
    EXPECT_TRUE(parse_number("inf", value));
    EXPECT_EQ(value, HUGE_VAL);
    EXPECT_TRUE(parse_number("-inf", value));
    EXPECT_EQ(value, -HUGE_VAL);
    EXPECT_TRUE(parse_number("nan", value));
    EXPECT_TRUE(std::isnan(value));
}

TEST(Number, RoundsToTheNearestDouble) {
    double value = 0;
    EXPECT_TRUE(parse_number("9007199254740993", value)); // 2^53 + 1, half way
    EXPECT_EQ(value, 9007199254740992.0);
    EXPECT_TRUE(parse_number("9007199254740993.00000000000000000001", value));
    EXPECT_EQ(value, 9007199254740994.0);
}

TEST(Number, KeepsTheSignOfZero) {
    double value = 1;
    EXPECT_TRUE(parse_number("-0", value));
    EXPECT_EQ(value, 0.0);
    EXPECT_TRUE(std::signbit(value));
}

TEST(Number, RefusesWhatIsNotWhollyANumber) {
    for (std::string_view text : {"",    " ",   "+",   "-",    ".",   "e",   "e3",    "1e",
                                  "1e+", " 1",  "1 ",  "1x",   "x1",  "1,5", "1.2.3", "+-1",
                                  "-+1", "--1", "++1", "0x10", "1 2", "1\n", "infx",  "1_000"}) {
        EXPECT_TRUE(refuses_double(text)) << '"' << text << '"';
        EXPECT_TRUE(refuses_int(text)) << '"' << text << '"';
    }
    EXPECT_TRUE(refuses_double(std::string_view("1\0", 2)));
    EXPECT_TRUE(refuses_int(std::string_view("1\0", 2)));
}

TEST(Number, ReadsNoFurtherThanTheText) {
    const char digits[] = {'1', '2', '3'};
    double real = 0;
    int whole = 0;
    EXPECT_TRUE(parse_number(std::string_view(digits, 2), real));
    EXPECT_TRUE(parse_number(std::string_view(digits, 2), whole));
    EXPECT_EQ(real, 12.0);
    EXPECT_EQ(whole, 12);
}

TEST(Number, RefusesWhatIsOutOfRange) {
    for (std::string_view text : {"1e309", "-1e309", "1e99999999999999999999", "1e-400"})
        EXPECT_TRUE(refuses_double(text)) << text;
    for (std::string_view text :
         {"2147483648", "-2147483649", "99999999999999999999", "-99999999999999999999"})
        EXPECT_TRUE(refuses_int(text)) << text;
}

TEST(Number, ReadsIntegers) {
    struct {
        std::string_view text;
        int value;
    } const cases[] = {
        {"0", 0},
        {"-0", 0},
        {"12", 12},
        {"+12", 12},
        {"-12", -12},
        {"0012", 12},
        {"2147483647", 2147483647},
        {"-2147483648", -2147483647 - 1},
    };
    for (const auto& c : cases) {
        int value = 42;
        EXPECT_TRUE(parse_number(c.text, value)) << c.text;
        EXPECT_EQ(value, c.value) << c.text;
    }
}

TEST(Number, AnIntegerHasNeitherFractionNorExponent) {
    for (std::string_view text : {"1.5", "1.0", "1.", ".5", "1e3", "inf", "nan"})
        EXPECT_TRUE(refuses_int(text)) << text;
}

TEST(Number, IsReadTheSameInEveryLocale) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    for (const char* locale : {"C", "POSIX", "C.UTF-8", "de_DE.UTF-8", "de_DE", "fr_FR.UTF-8"}) {
        if (!std::setlocale(LC_NUMERIC, locale))
            continue;
        double value = 0;
        EXPECT_TRUE(parse_number("1.5", value)) << locale;
        EXPECT_EQ(value, 1.5) << locale;
        EXPECT_TRUE(refuses_double("1,5")) << locale;
    }
    std::setlocale(LC_NUMERIC, before.c_str());
}

TEST(Number, ACountHasNoSignAndALargest) {
    int value = 42;
    EXPECT_TRUE(parse_count("0", 7, value));
    EXPECT_EQ(value, 0);
    EXPECT_TRUE(parse_count("007", 7, value));
    EXPECT_EQ(value, 7);
    for (std::string_view text : {"8", "+1", "-1", "-0", "", " 1", "1.0", "99999999999"}) {
        EXPECT_FALSE(parse_count(text, 7, value)) << text;
        EXPECT_EQ(value, 7) << text;
    }
}

TEST(Number, SaysWhyATextIsNoFiniteNumber) {
    struct {
        std::string_view text;
        const char* reason;
    } const cases[] = {
        {"", "is not a number"},           {"1x", "is not a number"},
        {"+-1", "is not a number"},        {"1e309x", "is not a number"},
        {"1e309", "is out of range"},      {"-1e-400", "is out of range"},
        {"inf", "is not a finite number"}, {"-nan", "is not a finite number"},
    };
    for (const auto& c : cases) {
        double value = 42;
        const NumberFault fault = parse_finite(c.text, value);
        ASSERT_NE(fault, NumberFault::none) << c.text;
        EXPECT_STREQ(reason_of(fault), c.reason) << c.text;
        EXPECT_EQ(value, 42) << c.text;
    }
    double value = 42;
    EXPECT_EQ(parse_finite("+2.5e1", value), NumberFault::none);
    EXPECT_EQ(value, 25);
}

TEST(Number, IsWrittenShortAndReadsBack) {
    EXPECT_EQ(number_text(0), "0");
    EXPECT_EQ(number_text(-2.5), "-2.5");
    EXPECT_EQ(number_text(0.1), "0.1");
    EXPECT_EQ(number_text(1e23), "1e+23");
    for (const double number : {1.0 / 3, 4.9e-324, 1.7976931348623157e308, 123456789.125}) {
        double back = 0;
        EXPECT_TRUE(parse_number(number_text(number), back));
        EXPECT_EQ(back, number);
    }
}
