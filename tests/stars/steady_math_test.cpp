// SPDX-License-Identifier: BSD-3-Clause

// Against the C library's functions in double, whose own error does not show in a float.
#include "stars/fast/steady_math.h"
#include "tests/special_values.h"
#include "tests/stars/dice.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace stars_test;
using namespace velmora;
using namespace velmora_test::floats;

namespace {

// Distance from the exact value in last bits of the float.
double last_bits(float value, double exact) {
    const double spacing = double(std::nextafter(std::fabs(value), infinity)) - std::fabs(value);
    return std::fabs(value - exact) / spacing;
}

} // namespace

TEST(SteadyMath, RoundsLogarithmsOnce) {
    Dice dice(1);
    double worst = 0;
    for (int i = 0; i < 100000; i++) {
        const float x = float(i % 2 ? dice.log_between(1e-45, 3e38) : dice.between(0.5, 2));
        if (x > 0 && x != 1)
            worst = std::max(worst, last_bits(steady_log(x), std::log(double(x))));
    }
    EXPECT_LE(worst, 0.501);
}

TEST(SteadyMath, TakesLogarithmsOfWhatIsNoPositiveNumber) {
    EXPECT_EQ(steady_log(1), 0);
    EXPECT_EQ(steady_log(0), -infinity);
    EXPECT_EQ(steady_log(-0.0f), -infinity);
    EXPECT_EQ(steady_log(infinity), infinity);
    EXPECT_TRUE(std::isnan(steady_log(-1e-45f)));
    EXPECT_TRUE(std::isnan(steady_log(-infinity)));
    EXPECT_TRUE(std::isnan(steady_log(not_a_number)));
}

TEST(SteadyMath, RoundsPowersOnce) {
    Dice dice(2);
    double worst = 0;
    for (int i = 0; i < 100000; i++) {
        const float x = float(i % 2 ? dice.log_between(1e-30, 1e30) : dice.between(0.5, 2));
        const float y = float(dice.between(-4, 4));
        const double exact = std::pow(double(x), double(y));
        if (exact > 1.2e-38 && exact < 3.4e38)
            worst = std::max(worst, last_bits(steady_pow(x, y), exact));
    }
    EXPECT_LE(worst, 0.501);
}

TEST(SteadyMath, HasTheSpecialCasesOfPowers) {
    const float values[] = {0,    -0.0f, 1,     -1,    2,        -2,        0.5f,        -0.5f,
                            3,    -3,    2.5f,  -2.5f, 1e-45f,   -1e-45f,   1e38f,       -1e38f,
                            1e9f, -1e9f, 1e20f, 7,     infinity, -infinity, not_a_number};
    for (float x : values)
        for (float y : values) {
            const float expected = float(std::pow(double(x), double(y)));
            const float power = steady_pow(x, y);
            if (std::isnan(expected)) {
                EXPECT_TRUE(std::isnan(power)) << x << " to " << y;
            } else {
                EXPECT_EQ(power, expected) << x << " to " << y;
                EXPECT_EQ(std::signbit(power), std::signbit(expected)) << x << " to " << y;
            }
        }
}
