// SPDX-License-Identifier: BSD-3-Clause

// The plain reading against the same steps written down once more in float (see reference.h), bit
// for bit, over random calls of every kind.
#include "tests/stars/dice.h"
#include "tests/stars/kernels.h"
#include "tests/stars/picture.h"
#include "tests/stars/reference.h"

using namespace stars_test;

namespace {

struct Call {
    Vector2 from, to;
    float amplitude, size_x, size_y;
    Color3 color;
    int lines;
};

// Draws the call both ways over the same picture with holes and colours in it.
void expect_same(const Call& call, unsigned seed) {
    const WithKernels plain(velmora::KernelLevel::plain);
    Dice dice(seed);
    const Layout layout = static_cast<Layout>(dice.below(4));
    const int width = 1 + dice.below(40), height = 1 + dice.below(30);
    Picture drawn(width, height, layout), reread(width, height, layout);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            float alpha = 0;
            switch (dice.below(12)) {
            case 0:
                alpha = dice.between(0, 1);
                break;
            case 1:
                alpha = 1;
                break;
            case 2:
                alpha = dice.between(-2, 2);
                break;
            case 3:
                alpha = dice.below(8) ? 0 : std::nanf("");
                break;
            default:
                break;
            }
            for (Picture* picture : {&drawn, &reread}) {
                picture->cover(x, y, alpha);
                for (int p = 0; p < 3; p++)
                    picture->paint(p, x, y, float((x + 3 * y + p) % 5) / 3);
            }
        }
    const bool lit =
        op_star_streak(drawn.fb, call.from, call.to, call.amplitude, call.color, call.size_x,
                       call.size_y, static_cast<op_stars_lines>(call.lines));
    const bool expected = reread_streak(reread.fb, call.from, call.to, call.amplitude, call.color,
                                        call.size_x, call.size_y, call.lines);
    const auto name = [&] {
        return testing::Message() << std::hexfloat << call.from[0] << ", " << call.from[1] << " to "
                                  << call.to[0] << ", " << call.to[1] << " amplitude "
                                  << call.amplitude << " sizes " << call.size_x << ", "
                                  << call.size_y << " lines " << call.lines << " in " << std::dec
                                  << width << " x " << height;
    };
    EXPECT_EQ(lit, expected) << name();
    ASSERT_TRUE(same_bits(drawn, reread)) << name();
    ASSERT_TRUE(drawn.surroundings_intact()) << name();
}

Call some_call(Dice& dice) {
    Call call;
    call.from = at(dice.between(-20, 60), dice.between(-20, 50));
    call.to = at(dice.between(-20, 60), dice.between(-20, 50));
    call.amplitude = dice.log_between(1e-4, 1e4);
    call.size_x = dice.log_between(0.5, 6);
    call.size_y = dice.log_between(0.5, 6);
    for (int p = 0; p < 3; p++)
        call.color[p] = dice.between(-0.2, 1.5);
    call.lines = dice.below(4);
    return call;
}

} // namespace

TEST(StreakReading, AgreesForLongPaths) {
    Dice dice(1);
    for (unsigned i = 0; i < 400; i++)
        expect_same(some_call(dice), 1000 + i);
}

TEST(StreakReading, AgreesForSpots) {
    Dice dice(2);
    for (unsigned i = 0; i < 400; i++) {
        Call call = some_call(dice);
        call.to = call.from;
        expect_same(call, 2000 + i);
    }
}

TEST(StreakReading, AgreesForShortPaths) {
    Dice dice(3);
    for (unsigned i = 0; i < 400; i++) {
        Call call = some_call(dice);
        if (i % 3 == 0) // where floats are dense enough for the two thresholds
            call.from = at(dice.between(-1e-5, 1e-5), dice.between(-1e-5, 1e-5));
        const float length = dice.log_between(1e-7, 2);
        const float angle = dice.between(0, 6.2831853);
        call.to =
            at(call.from[0] + length * std::cos(angle), call.from[1] + length * std::sin(angle));
        expect_same(call, 3000 + i);
    }
}

TEST(StreakReading, AgreesForPathsAlongTheAxes) {
    Dice dice(4);
    for (unsigned i = 0; i < 400; i++) {
        Call call = some_call(dice);
        call.to[i % 2] = call.from[i % 2];
        if (i % 4 > 1) // and nearly so
            call.to[i % 2] += dice.between(-1e-3, 1e-3);
        expect_same(call, 4000 + i);
    }
}

TEST(StreakReading, AgreesForWholeAndHalfCoordinates) {
    Dice dice(5);
    for (unsigned i = 0; i < 400; i++) {
        Call call = some_call(dice);
        for (int axis = 0; axis < 2; axis++) {
            call.from[axis] = std::floor(call.from[axis] * 2) / 2;
            call.to[axis] = std::floor(call.to[axis] * 2) / 2;
        }
        expect_same(call, 5000 + i);
    }
}

TEST(StreakReading, AgreesForNarrowAndWideStars) {
    Dice dice(6);
    for (unsigned i = 0; i < 400; i++) {
        Call call = some_call(dice);
        call.size_x = dice.log_between(1e-3, 100);
        call.size_y = dice.log_between(1e-3, 100);
        expect_same(call, 6000 + i);
    }
}

TEST(StreakReading, AgreesForHugeCoordinates) {
    Dice dice(7);
    for (unsigned i = 0; i < 800; i++) {
        Call call = some_call(dice);
        for (int axis = 0; axis < 2; axis++)
            for (Vector2* end : {&call.from, &call.to})
                if (dice.below(3) == 0)
                    (*end)[axis] =
                        dice.log_between(1e3, i % 2 ? 1e12 : 1e30) * (dice.below(2) ? -1.0f : 1.0f);
        expect_same(call, 7000 + i);
    }
}

TEST(StreakReading, AgreesNearTheLeftEdge) {
    Dice dice(8);
    for (unsigned i = 0; i < 400; i++) {
        Call call = some_call(dice);
        call.from = at(dice.between(0, 3), dice.between(0, 20));
        call.to = i % 2 ? call.from : at(dice.between(0, 3), dice.between(0, 20));
        call.amplitude = dice.log_between(1, 1e4);
        call.lines = 0;
        expect_same(call, 8000 + i);
    }
}
