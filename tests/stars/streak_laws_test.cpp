// SPDX-License-Identifier: BSD-3-Clause
#include "tests/stars/picture.h"
#include "tests/stars/reference.h"

using namespace stars_test;

namespace {

// Total of a streak of peak 1 over all pixels of an endless grid: pi size_x size_y, and what
// sampling adds along each axis, 2 exp(-pi^2 size^2) cos(2 pi middle), averaged over the way that
// the spot's centre moves along that axis.
double light_on_the_grid(Vector2 from, Vector2 to, double size_x, double size_y) {
    const double sizes[2] = {size_x, size_y};
    double light = pi * size_x * size_y;
    for (int axis = 0; axis < 2; axis++) {
        const double way = pi * (double(to[axis]) - from[axis]);
        const double average = way == 0 ? 1 : std::sin(way) / way;
        light *= 1 + 2 * std::exp(-pi * pi * sizes[axis] * sizes[axis]) * average *
                         std::cos(pi * (double(from[axis]) + to[axis]));
    }
    return light;
}

struct Move {
    Vector2 from, to;
    int width, height; // of an image that holds the whole footprint
};

Move move_of(double length, double degrees, float margin) {
    const double angle = degrees * pi / 180;
    const float dx = float(length * std::cos(angle)), dy = float(length * std::sin(angle));
    const Vector2 from = at(margin + std::max(0.0f, -dx), margin + std::max(0.0f, -dy));
    return {from, at(from[0] + dx, from[1] + dy), int(2 * margin + std::fabs(dx)) + 2,
            int(2 * margin + std::fabs(dy)) + 2};
}

// Compares a streak with the integral of the moving spot on every pixel well inside of its
// footprint; the tolerance is a part of the streak's peak. Returns how many pixels that were.
int compare_with_integral(const Move& move, float size_x, float size_y, double tolerance) {
    Picture picture(move.width, move.height);
    EXPECT_TRUE(draw_streak(picture, move.from, move.to, 1, size_x, size_y));
    const Footprint footprint(move.from, move.to, 1, size_x, size_y);
    std::vector<double> expected(size_t(move.width * move.height), -1);
    double peak = 0;
    for (int y = 0; y < move.height; y++)
        for (int x = 0; x < move.width; x++) {
            if (!footprint.visits(x, y, -1e-2))
                continue;
            const double value = moving_value(x, y, move.from, move.to, size_x, size_y);
            expected[size_t(y * move.width + x)] = value;
            peak = std::max(peak, value);
        }
    int compared = 0;
    double worst = 0;
    for (int y = 0; y < move.height; y++)
        for (int x = 0; x < move.width; x++) {
            const double value = expected[size_t(y * move.width + x)];
            if (value >= 0) {
                worst = std::max(worst, std::fabs(picture.red(x, y) - value));
                compared++;
            } else if (!footprint.visits(x, y, 1e-2)) {
                EXPECT_EQ(picture.red(x, y), 0) << x << ", " << y;
            }
        }
    EXPECT_LE(worst, tolerance * peak)
        << "from " << move.from[0] << ", " << move.from[1] << " to " << move.to[0] << ", "
        << move.to[1] << ", sizes " << size_x << ", " << size_y;
    return compared;
}

} // namespace

// Widths of one pixel and more: below, the rows' span is narrower than the reach on purpose and
// light is lost (see NarrowsItsRowsForWidthsBelowOnePixel). At amplitude 4 the cut-off loses at
// most erfc(sqrt(ln(25000))) = 7e-6 across the path and less at its ends, and what sampling adds is
// in light_on_the_grid, up to 1.04e-4 at size 1. At length 0.01 each value is the difference of two
// erff that agree to 1 in 100, which leaves 1e-5 on each pixel and less on their sum.
TEST(StreakLaws, CarriesTheLightOfOneStillSpot) {
    static const struct { float size_x, size_y; } sizes[] = {{1, 1}, {1.5f, 3}, {3, 1.2f}};
    for (double length : {0.01, 0.03, 0.1, 0.5, 1.0, 3.0, 10.0, 100.0, 1000.0})
        for (int step = 0; step < 16; step++)
            for (const auto& size : sizes) {
                // The axes and diagonals, and directions between them.
                const Move move = move_of(length, 22.5 * step + (step % 2 ? 1.7 : 0), 12.3f);
                Picture picture(move.width, move.height);
                EXPECT_TRUE(draw_streak(picture, move.from, move.to, 4, size.size_x, size.size_y));
                const double light =
                    4 * light_on_the_grid(move.from, move.to, size.size_x, size.size_y);
                EXPECT_NEAR(picture.total(0) / light, 1, 1e-4)
                    << length << " towards " << 22.5 * step << ", sizes " << size.size_x << ", "
                    << size.size_y;
            }
}

TEST(StreakLaws, CarriesItsLightIntoEachColour) {
    const Move move = move_of(37, 33, 12);
    Picture picture(move.width, move.height);
    const Color3 color = {{0.75f, 3, 0.01f}};
    op_star_streak(picture.fb, move.from, move.to, 2, color, 2, 1.5f, OP_STARS_LINES_ALL);
    for (int p = 0; p < 3; p++)
        EXPECT_NEAR(picture.total(p) / (2 * pi * 2 * 1.5 * color[p]), 1, 1e-4);
}

TEST(StreakLaws, IsTheIntegralOfTheMovingSpot) {
    static const struct {
        float size_x, size_y;
    } sizes[] = {{1, 1}, {1, 2.5f}, {3, 0.8f}, {0.7f, 0.7f}, {2.2f, 2.2f}};
    int compared = 0;
    for (double length : {0.5, 2.0, 7.3, 25.0})
        for (double degrees : {0.0, 90.0, 180.0, 270.0, 45.0, 17.0, 101.0, 163.0, 211.0, 304.0})
            for (const auto& size : sizes)
                compared += compare_with_integral(move_of(length, degrees, 11.4f), size.size_x,
                                                  size.size_y, 1e-5);
    EXPECT_GT(compared, 20000);
}

// Beyond: a short streak is the difference of two erff that nearly agree (their rounding over what
// they differ by: 2e-7 size / length), a long one has offsets of half its length (each rounded:
// 2e-7 length / size). Both are parts of the peak.
TEST(StreakLaws, IsThatIntegralUpToRoundingForVeryShortAndVeryLongPaths) {
    for (double length : {0.01, 0.05, 0.2, 100.0, 1000.0})
        for (double degrees : {0.0, 90.0, 23.0, 138.0, 260.0})
            for (float size : {1.0f, 2.0f}) {
                if (length == 1000 && degrees != 0 && degrees != 90)
                    continue;
                const double rounding = 2e-7 * (size / length + length / size);
                compare_with_integral(move_of(length, degrees, 11.4f), size, size, 1e-5 + rounding);
            }
}

TEST(StreakLaws, ShrinksToTheSpotWithItsLength) {
    // The integral over a length L differs from the spot by L^2 / (12 size^2) of the peak.
    Picture spot(24, 24), streak(24, 24);
    draw_spot(spot, at(12, 12.25f), 1, 2, 1.5f);
    draw_streak(streak, at(11.975f, 12.25f), at(12.025f, 12.25f), 1, 2, 1.5f);
    for (int y = 0; y < 24; y++)
        for (int x = 0; x < 24; x++)
            EXPECT_NEAR(streak.red(x, y), spot.red(x, y), 0.05 * 0.05 / 48 + 2e-5);
}

TEST(StreakLaws, HasTheSameLightBothWays) {
    // Swapping the ends changes roundings only; the rows' spans may differ by a column that holds
    // less than 1/6250.
    for (double degrees : {0.0, 90.0, 37.0, 118.0}) {
        const Move move = move_of(20, degrees, 10.2f);
        Picture there(move.width, move.height), back(move.width, move.height);
        draw_streak(there, move.from, move.to, 1, 1.5f, 1.2f);
        draw_streak(back, move.to, move.from, 1, 1.5f, 1.2f);
        for (int y = 0; y < move.height; y++)
            for (int x = 0; x < move.width; x++)
                EXPECT_NEAR(there.red(x, y), back.red(x, y), 2e-6);
    }
}

// Ends at multiples of 1/64 below 512 have exact differences, midpoints and column and row offsets,
// so every value is computed from the same numbers. The spans are floors and ceilings of numbers
// that are rounded in place; the law is exact as long as none of these lies within 1e-3 of
// a whole number, which is checked for each case. Slopes are powers of two or zero, so that the
// path's centre on a row is exact too.
TEST(StreakLaws, ShiftsByWholePixelsBitForBit) {
    static const struct {
        float dx, dy, size_x, size_y;
    } table[] = {
        {16, 0, 1.5f, 1},  {0, 12, 1.25f, 2}, {-9.5f, 0, 1, 1},          {8, 8, 1.125f, 1.25f},
        {-6, 12, 1, 1.5f}, {13, -6.5f, 2, 1}, {0.25f, 0.5f, 1.5f, 1.5f},
    };
    const int shift_x = 37, shift_y = 22;
    for (const auto& row : table) {
        const Vector2 from = at(40 + 13.0f / 64, 40 + 41.0f / 64);
        const Vector2 to = at(from[0] + row.dx, from[1] + row.dy);
        const Footprint footprint(from, to, 5, row.size_x, row.size_y);
        const auto clear = [](double edge) {
            return std::fabs(edge - std::nearbyint(edge)) > 1e-3;
        };
        ASSERT_TRUE(clear(footprint.left) && clear(footprint.right) && clear(footprint.up) &&
                    clear(footprint.low));
        for (int y = 20; y < 70 && footprint.h < 1e19; y++)
            ASSERT_TRUE(clear(footprint.centre(y) - footprint.h) &&
                        clear(footprint.centre(y) + footprint.h));

        Picture here(140, 110), there(140, 110);
        EXPECT_TRUE(draw_streak(here, from, to, 5, row.size_x, row.size_y));
        EXPECT_TRUE(draw_streak(there, at(from[0] + shift_x, from[1] + shift_y),
                                at(to[0] + shift_x, to[1] + shift_y), 5, row.size_x, row.size_y));
        for (int y = 0; y < 110 - shift_y; y++)
            for (int x = 0; x < 140 - shift_x; x++)
                ASSERT_TRUE(same_float(here.red(x, y), there.red(x + shift_x, y + shift_y)))
                    << x << ", " << y << " by " << row.dx << ", " << row.dy;
    }
}

TEST(StreakLaws, IsMirroredWithItsPath) {
    // Mirroring about a column keeps the values to rounding; the box is one pixel wider on the
    // right, where the average of what is left of the spot is 2e-6.
    const Move move = move_of(19, 28, 10.4f);
    const int w = move.width;
    Picture plain(w, move.height), mirrored(w, move.height);
    draw_streak(plain, move.from, move.to, 1, 1.3f, 1.8f);
    draw_streak(mirrored, at(float(w - 1) - move.from[0], move.from[1]),
                at(float(w - 1) - move.to[0], move.to[1]), 1, 1.3f, 1.8f);
    for (int y = 0; y < move.height; y++)
        for (int x = 0; x < w; x++)
            EXPECT_NEAR(plain.red(x, y), mirrored.red(w - 1 - x, y), 5e-6) << x << ", " << y;
}

TEST(StreakLaws, DoesNotDependOnWhatElseIsInTheImage) {
    const Move move = move_of(19, 28, 10.4f);
    Picture black(move.width, move.height), painted(move.width, move.height);
    for (int y = 0; y < move.height; y++)
        for (int x = 0; x < move.width; x++)
            painted.paint(0, x, y, 0.5f);
    draw_streak(black, move.from, move.to, 1, 1.3f, 1.8f);
    draw_streak(painted, move.from, move.to, 1, 1.3f, 1.8f);
    for (int y = 0; y < move.height; y++)
        for (int x = 0; x < move.width; x++)
            EXPECT_EQ(painted.red(x, y), 0.5f + black.red(x, y));
}

// h = k size_x (size_x + size_y |slope|): with size_x 0.3, size_y 2 and slope 1 that is 0.69 k,
// while the profile reaches k sqrt(0.09 + 4) = 2.02 k along a row.
TEST(StreakLaws, NarrowsItsRowsForWidthsBelowOnePixel) {
    const Vector2 from = at(20, 20), to = at(50, 50);
    Picture picture(70, 70);
    draw_streak(picture, from, to, 1, 0.3f, 2);
    const double h = std::sqrt(std::log(6250.0)) * 0.3 * 2.3; // 2.04
    const int y = 35;
    for (int x = 0; x < 70; x++) {
        const bool inside = x >= std::floor(y - h) && x <= std::ceil(y + h);
        const double value = moving_value(x, y, from, to, 0.3, 2);
        EXPECT_NEAR(picture.red(x, y), inside ? value : 0, 1e-6) << x;
    }
    EXPECT_GT(moving_value(39, y, from, to, 0.3, 2), 2 / 6250.0) << "light that is left out";
    EXPECT_EQ(picture.red(39, y), 0);
}

TEST(StreakLaws, IsGenerousForWiderStars) {
    // h of a vertical path is k size_x^2, wider than the reach k size_x; the box limits it.
    Picture picture(70, 70);
    draw_streak(picture, at(35.4f, 20), at(35.4f, 50), 1, 3, 3);
    const double reach = 3 * std::sqrt(std::log(6250.0)); // 8.87
    const int low = int(std::floor(35.4 - reach)), high = int(std::floor(35.4 + reach)) + 1;
    for (int x = 0; x < 70; x++)
        EXPECT_EQ(picture.red(x, 35) > 0, x >= low && x <= high) << x;
}
