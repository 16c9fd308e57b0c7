// SPDX-License-Identifier: BSD-3-Clause

// Where thresholds, roundings and numbers out of range decide what a streak touches.
#include "core/xception.h"
#include "stars/dispatch.h"
#include "stars/fast/rasterise.h"
#include "stars/plain/rasterise.h"
#include "tests/function_spelling.h"
#include "tests/special_values.h"
#include "tests/stars/kernels.h"
#include "tests/stars/picture.h"
#include "tests/stars/reference.h"

using namespace stars_test;
using namespace velmora_test::floats;

namespace {

const char* const signature =
    "bool op_star_streak(const StarFramebuffer&, const Vector2&, const Vector2&, float, const "
    "Color3&, float, float, op_stars_lines)";

// The image of the calls below: nothing of it may change.
void expect_untouched(Vector2 from, Vector2 to, float amplitude = 5, float size = 1) {
    Picture picture(24, 18, GUARDED);
    EXPECT_FALSE(draw_streak(picture, from, to, amplitude, size, size))
        << from[0] << ", " << from[1] << " to " << to[0] << ", " << to[1];
    EXPECT_TRUE(picture.is_black())
        << from[0] << ", " << from[1] << " to " << to[0] << ", " << to[1];
    EXPECT_TRUE(picture.surroundings_intact());
}

// The same, and no pixel may be counted as written.
void expect_nothing_written(Vector2 from, Vector2 to, float amplitude = 5) {
    expect_untouched(from, to, amplitude);
    Picture picture(24, 18, GUARDED);
    const velmora::StarCall call = {picture.fb, from, to, amplitude,
                                    white,      1,    1,  OP_STARS_LINES_ALL};
    EXPECT_EQ(velmora::plain_star_streak(call).pixels, 0);
    EXPECT_EQ(velmora::draw_star_streak(call).pixels, 0);
}

void expect_assertion(int width, int height, Vector2 where, const char* expression) {
    float pixels[4] = {0, 0, 0, 0};
    const StarFramebuffer fb = {pixels, pixels, pixels, pixels, width, height, 0, 0};
    try {
        op_star_streak(fb, where, where, 5, white, 1, 1, OP_STARS_LINES_ALL);
        ADD_FAILURE() << "nothing was thrown for " << width << " x " << height;
    } catch (const AssertXception& thrown) {
        EXPECT_STREQ(thrown.expr, expression);
        EXPECT_STREQ(thrown.file, "stars");
        EXPECT_EQ(spelled_by_gcc(thrown.function), signature);
    }
    for (float pixel : pixels)
        EXPECT_EQ(pixel, 0);
}

// Rows of a picture that hold any light, as a text of digits and dots.
std::string lit_rows(const Picture& picture) {
    std::string rows;
    for (int y = 0; y < picture.fb.height; y++)
        rows += picture.row_is_black(y) ? '.' : '#';
    return rows;
}

} // namespace

TEST(StreakEdges, CountNoPixelsOfAPathThatIsNowhereOrOutside) {
    expect_nothing_written({{not_a_number, 9}}, {{12, 9}});
    expect_nothing_written({{12, 9}}, {{12, not_a_number}});
    for (const float x : {-100.0f, 1e6f}) {
        expect_nothing_written({{x, 9}}, {{x, 9}});
        expect_nothing_written({{x, 9}}, {{x + 5, 12}});
        expect_nothing_written({{12, x}}, {{14, x}});
    }
    expect_nothing_written({{12, 9}}, {{14, 9}}, 1e-5f); // below 1/6250
}

// ---- Images without pixels --------------------------------------------------------------------

TEST(StreakEdges, AssertsThatItsRowIsInTheImage) {
    expect_assertion(10, 0, at(5, 0), "iy >= 0 && iy < dst.height");
    expect_assertion(0, 0, at(0, 0), "iy >= 0 && iy < dst.height");
}

TEST(StreakEdges, AssertsThatItsColumnIsInTheImage) {
    expect_assertion(0, 10, at(0, 5), "ix >= 0 && ix < dst.width");
}

TEST(StreakEdges, AssertsEvenOnRowsThatItSkips) {
    float pixel = 0;
    const StarFramebuffer fb = {&pixel, &pixel, &pixel, &pixel, 10, 0, 0, 0};
    for (int lines = 0; lines < 3; lines++) // the only row is -1, an odd one
        EXPECT_THROW(op_star_streak(fb, at(5, 0), at(5, 0), 5, white, 1, 1,
                                    static_cast<op_stars_lines>(lines)),
                     AssertXception);
}

TEST(StreakEdges, RejectsBeforeItAsserts) {
    float pixel = 0;
    const StarFramebuffer fb = {&pixel, &pixel, &pixel, &pixel, 0, 0, 0, 0};
    for (float x : {-20.0f, 20.0f})
        EXPECT_FALSE(op_star_streak(fb, at(x, 0), at(x, 0), 5, white, 1, 1, OP_STARS_LINES_ALL));
}

// ---- Outside of the image ---------------------------------------------------------------------

TEST(StreakEdges, DrawsNothingForPathsBesideTheImage) {
    static const struct {
        Vector2 from, to;
    } table[] = {
        {{{-30, 2}}, {{-10, 12}}},  {{{-10, -3}}, {{-10, 30}}}, // left
        {{{30, 2}}, {{90, 12}}},    {{{28, -20}}, {{28, 40}}},  // right
        {{{2, -30}}, {{20, -8}}},   {{{-9, -9}}, {{40, -9}}},   // above
        {{{2, 24}}, {{20, 30}}},    {{{-5, 22}}, {{40, 22}}},   // below
        {{{-30, -30}}, {{-8, -8}}}, {{{31, 25}}, {{60, 80}}},   // at the corners
    };
    for (const auto& row : table) {
        expect_untouched(row.from, row.to);
        expect_untouched(row.to, row.from);
        expect_untouched(row.from, row.from);
    }
}

TEST(StreakEdges, DrawsNothingWhereOnlyTheBoxCrossesTheImage) {
    // Around the upper left corner: the box covers the image, the path's spans do not reach it.
    Picture picture(24, 18, GUARDED);
    EXPECT_FALSE(draw_streak(picture, at(-40, 21), at(21, -40), 5, 1, 1));
    EXPECT_TRUE(picture.is_black());
}

// The box ends one column beyond the reach on the right and below, but not on the left and above:
// x_hi = floor(x + r) + 1 and x_lo = floor(x - r), with r = sqrt(ln(6250 * 5)) = 3.217.
TEST(StreakEdges, MeetsTheImageOnePixelBeyondItsReachOnTheNearSides) {
    static const struct {
        float x, y;
        bool meets;
    } table[] = {
        {-4.20f, 9, true},  // x + r = -0.98: floor + 1 is 0
        {-4.23f, 9, false}, // x + r = -1.01
        {27.20f, 9, true},  // x - r = 23.98
        {27.23f, 9, false}, // x - r = 24.01
        {12, -4.20f, true}, {12, -4.23f, false}, {12, 21.20f, true}, {12, 21.23f, false},
    };
    for (const auto& row : table) {
        Picture picture(24, 18, GUARDED);
        EXPECT_EQ(draw_spot(picture, at(row.x, row.y), 5, 1, 1), row.meets)
            << row.x << ", " << row.y;
        EXPECT_EQ(picture.is_black(), !row.meets) << row.x << ", " << row.y;
        EXPECT_TRUE(picture.surroundings_intact());
    }
}

TEST(StreakEdges, CrossesAnImageOfOnePixel) {
    static const struct {
        Vector2 from, to;
    } table[] = {{{{-9, 0}}, {{9, 0}}}, {{{0, -9}}, {{0, 9}}}, {{{-9, -9}}, {{9, 9}}}};
    for (const auto& row : table) {
        Picture picture(1, 1, GUARDED);
        EXPECT_TRUE(draw_streak(picture, row.from, row.to, 1, 1, 1));
        EXPECT_NEAR(picture.red(0, 0), moving_value(0, 0, row.from, row.to, 1, 1), 1e-7);
        EXPECT_TRUE(picture.surroundings_intact());
    }
}

// ---- Positions that are NaN or too large -------------------------------------------------------

TEST(StreakEdges, DrawsNothingAtPositionsThatAreNoNumbers) {
    const Vector2 fine = at(12, 9);
    const Vector2 nowhere = at(not_a_number, not_a_number);
    expect_untouched(nowhere, nowhere);
    expect_untouched(nowhere, fine);
    expect_untouched(fine, nowhere);
    for (int axis = 0; axis < 2; axis++) {
        Vector2 broken = fine;
        broken[axis] = not_a_number;
        expect_untouched(broken, broken);
        expect_untouched(broken, fine);
        for (float other :
             {infinity, -infinity}) { // what a division by zero in the projection gives
            Vector2 wide = broken;
            wide[1 - axis] = other;
            expect_untouched(wide, wide);
            expect_untouched(wide, fine);
            expect_untouched(fine, wide);
        }
    }
    expect_untouched(fine, at(not_a_number, 9));
}

TEST(StreakEdges, DrawsNothingTowardsARowThatIsNoNumber) {
    expect_untouched(at(12, 9), at(12, not_a_number));
    expect_untouched(at(12, 9), at(14, not_a_number));
}

TEST(StreakEdges, DrawsNothingAtInfinitePositions) {
    for (float far : {infinity, -infinity})
        for (int axis = 0; axis < 2; axis++) {
            Vector2 there = at(12, 9);
            there[axis] = far;
            expect_untouched(there, there);
            expect_untouched(at(far, far), at(far, far));
            expect_untouched(at(far, -far), at(far, -far));
        }
}

// Bounds that fit no 32-bit integer become the smallest one: on the right and below, the smallest
// plus one is left of and above every image.
TEST(StreakEdges, DrawsNothingWhereItsLastColumnOrRowFitsNoInteger) {
    for (float far : {2147483648.0f, 1e10f, 1e20f, 1e30f, 3e38f, infinity}) {
        expect_untouched(at(12, 9), at(far, 9));
        expect_untouched(at(far, 9), at(12, 9));
        expect_untouched(at(12, 9), at(12, far));
        expect_untouched(at(12, far), at(12, 9));
        expect_untouched(at(-far, 9), at(far, 9));
        expect_untouched(at(12, -far), at(12, far));
        expect_untouched(at(-far, -far), at(far, far));
    }
}

// Far to the left and slightly down: slope and h are infinite, the slope below 0. Above the
// path's start the centre lies at plus infinity, so that xs = infinity - infinity; on its own row
// the centre is 0 times infinity.
TEST(StreakEdges, LeavesRowsEmptyWhoseStartIsNoNumber) {
    Picture picture(24, 18, GUARDED);
    EXPECT_FALSE(draw_streak(picture, at(12, 9), at(-3e38f, 9.5f), 5, 1, 1));
    for (int y = 0; y <= 9; y++)
        EXPECT_TRUE(picture.row_is_black(y)) << y;
    EXPECT_TRUE(picture.surroundings_intact());
}

// Slope -5e9: three rows above its start the path's line is at column 1.5e10, which fits no
// integer, while offsets from the midpoint at -5e18 cannot distinguish that column from the image's.
TEST(StreakEdges, LeavesRowsEmptyWhoseFirstColumnFitsNoInteger) {
    Picture picture(24, 18, GUARDED);
    EXPECT_NO_THROW(draw_streak(picture, at(12, 9), at(-1e19f, 2e9f), 5, 0.1f, 1));
    for (int y = 0; y < 9; y++)
        EXPECT_TRUE(picture.row_is_black(y)) << y;
    EXPECT_TRUE(picture.surroundings_intact());
}

TEST(StreakEdges, NeitherThrowsNorStraysForAnyPosition) {
    const float values[] = {
        0,     12,     -3e3f, 1e9f,   -1e9f,    2147483520.0f, -2147483648.0f, 1e20f,
        1e30f, -1e30f, 3e38f, -3e38f, infinity, -infinity,     not_a_number,   1e-40f};
    for (float x0 : values)
        for (float y0 : values)
            for (float x1 : values)
                for (float y1 : values) {
                    Picture picture(5, 4, GUARDED);
                    EXPECT_NO_THROW(draw_streak(picture, at(x0, y0), at(x1, y1), 5, 1, 2));
                    ASSERT_TRUE(picture.surroundings_intact())
                        << x0 << ", " << y0 << " to " << x1 << ", " << y1;
                }
}

TEST(StreakEdges, DrawsLongPathsThroughTheImage) {
    // A path of 2 million pixels: 1 / L of the light of the spot's line, sqrt(pi) size / L.
    Picture picture(24, 18, GUARDED);
    EXPECT_TRUE(draw_streak(picture, at(-1e6f, 9), at(1e6f, 9), 1e6f, 2, 2));
    for (int x = 0; x < 24; x++)
        EXPECT_NEAR(picture.red(x, 9), 1e6 * std::sqrt(pi) * 2 / 2e6, 1e-5);
    EXPECT_TRUE(picture.surroundings_intact());
}

// ---- Spot or streak ---------------------------------------------------------------------------

// Near the origin floats are dense enough for paths of 1e-5.
TEST(StreakEdges, IsASpotAtTheMidpointUpToALengthOfAHundredThousandth) {
    const float limit = 1e-5f;
    for (float length : {limit, limit / 2, 1e-7f, 1e-20f, 1e-30f})
        for (int axis = 0; axis < 2; axis++) {
            Vector2 to = at(0, 0);
            to[axis] = length;
            ASSERT_LE(sqrtf(length * length), limit);
            Picture path(8, 8), spot(8, 8);
            EXPECT_TRUE(draw_streak(path, at(0, 0), to, 1, 2, 2));
            Vector2 middle = at(0, 0);
            middle[axis] = length * 0.5f;
            draw_spot(spot, middle, 1, 2, 2);
            EXPECT_TRUE(same_bits(path, spot)) << length;
        }
}

TEST(StreakEdges, IsAStreakBeyondThatLength) {
    const WithKernels plain(velmora::KernelLevel::plain); // the fast kernels see no difference
    const float length = std::nextafter(1e-5f, 1.0f);
    ASSERT_GT(sqrtf(length * length), 1e-5f);
    Picture path(8, 8), reread(8, 8), spot(8, 8);
    EXPECT_TRUE(draw_streak(path, at(0, 0), at(length, 0), 1, 2, 2));
    reread_streak(reread.fb, at(0, 0), at(length, 0), 1, white, 2, 2, OP_STARS_LINES_ALL);
    draw_spot(spot, at(length / 2, 0), 1, 2, 2);
    EXPECT_TRUE(same_bits(path, reread));
    EXPECT_FALSE(same_bits(path, spot)) << "the difference of two erff is coarse at this length";
}

// A path that is taken for horizontal spans its whole box; a short steep one of slope 0 spans
// h = k size_x^2 about its centre. With size_x 0.5 and amplitude 1 the box is columns 18 to 22
// about column 20, the span 20 +- 0.739 columns 19 to 21.
TEST(StreakEdges, IsHorizontalUpToARiseOfAMillionth) {
    static const struct {
        float rise;
        bool horizontal;
    } table[] = {
        {0, true},
        {1e-6f, true},
        {-1e-6f, true},
        {std::nextafter(1e-6f, 1.0f), false},
        {-std::nextafter(1e-6f, 1.0f), false},
        {1e-5f, false},
    };
    for (const auto& row : table) {
        Picture picture(40, 8);
        EXPECT_TRUE(draw_streak(picture, at(20, 0), at(20, row.rise), 1, 0.5f, 2));
        for (int x : {18, 22})
            EXPECT_EQ(picture.red(x, 0) > 0, row.horizontal) << x << " at " << row.rise;
        for (int x : {19, 20, 21})
            EXPECT_GT(picture.red(x, 0), 0) << x << " at " << row.rise;
    }
}

// ---- Nearly horizontal paths ------------------------------------------------------------------

// With sizes 0.5 and 2 the box reaches k * 2 = 5.91 rows, but on a row n away from the path the
// centre lies n slopes to the side, and h covers k * 0.5 * 2 = 2.96 slopes of it: rows beyond are
// empty. From a slope of 100000 on the midpoint is the centre instead, and every row is drawn;
// paths that fall as steeply keep the line formula.
TEST(StreakEdges, UsesTheMidpointForSlopesFromAHundredThousandUpOnly) {
    const float step = 1.0f / 1024; // exact beside 20
    static const struct {
        float slope, rise;
        bool all_rows;
    } table[] = {
        {99999, step, false},   {100000, step, true},    {110000, step, true},
        {-99999, step, false},  {-100000, step, false},  {-110000, step, false},
        {99999, -step, false},  {100000, -step, true},   {110000, -step, true},
        {-99999, -step, false}, {-100000, -step, false}, {-110000, -step, false},
    };
    for (const auto& row : table) {
        const float from_x = row.slope * row.rise > 0 ? 0.0f : 120.0f;
        const Vector2 from = at(from_x, 20), to = at(from_x + row.slope * row.rise, 20 + row.rise);
        ASSERT_EQ((to[0] - from[0]) / (to[1] - from[1]), row.slope);
        Picture picture(121, 40);
        EXPECT_TRUE(draw_streak(picture, from, to, 1, 0.5f, 2));
        // Rows floor(20 - 5.91) = 14 to floor(20 + 5.91) + 1 = 26; or 18 to 22.
        EXPECT_EQ(lit_rows(picture), row.all_rows ? "..............#############............."
                                                  : "..................#####.................")
            << row.slope << ", " << row.rise;
    }
}

// ---- Counting columns -------------------------------------------------------------------------

// Offsets are counted up by 1.0 from floor(xs) - m.x, in float, and each sum is rounded. With
// u = 2^-24 and m.x = 0.5 + 5u the offsets of columns 0 to 5 are, in u:
//
//     -8388613   8388603   25165819 -> 25165820   41943036   58720252   75497468 -> 75497472
//
// (between 1 and 2 floats are 2u apart, between 4 and 8 they are 8u apart, and ties go to even),
// while the last offset, 5 - m.x = 75497467u, is rounded once, to 75497464u: below the sum, so
// column 5 is dropped.
TEST(StreakEdges, DropsTheLastColumnWhenCountingRoundsPastIt) {
    const float u = std::ldexp(1.0f, -24);
    Picture counted(6, 3, GUARDED);
    EXPECT_TRUE(draw_spot(counted, at(0.5f + 5 * u, 1), 1, 4, 4));
    Picture exact(6, 3);
    draw_spot(exact, at(0.5f, 1), 1, 4, 4);
    for (int y = 0; y < 3; y++) {
        for (int x = 0; x < 5; x++)
            EXPECT_NEAR(counted.red(x, y), exact.red(x, y), 1e-6);
        EXPECT_EQ(counted.red(5, y), 0);
        EXPECT_GT(exact.red(5, y), 0.2);
    }
    EXPECT_TRUE(counted.surroundings_intact());
}

TEST(StreakEdges, DropsNoColumnWhereOffsetsAreExact) {
    for (int sub = 0; sub < 64; sub++) {
        Picture picture(50, 3);
        draw_spot(picture, at(float(sub) / 64 + 1, 1), 1, 40, 40);
        for (int x = 0; x < 50; x++)
            EXPECT_GT(picture.red(x, 1), 0) << x << " at " << sub << " / 64";
    }
}
