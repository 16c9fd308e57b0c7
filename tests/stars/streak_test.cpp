// SPDX-License-Identifier: BSD-3-Clause
#include "tests/special_values.h"
#include "tests/stars/picture.h"
#include "tests/stars/reference.h"

using namespace stars_test;
using namespace velmora_test::floats;

namespace {

const Vector2 from = {{8.3f, 9.1f}}, to = {{27.9f, 21.6f}};

// The streak from `from` to `to` into a 36 x 30 image.
bool draw(Picture& picture, op_stars_lines lines = OP_STARS_LINES_ALL) {
    const Color3 color = {{1, 0.5f, 0.25f}};
    return op_star_streak(picture.fb, from, to, 20, color, 1.5f, 2, lines);
}

} // namespace

TEST(Streak, OfNoLengthIsASpotThere) {
    Picture picture(20, 20);
    EXPECT_TRUE(draw_streak(picture, at(9.25f, 10), at(9.25f, 10), 2, 2, 1));
    EXPECT_FLOAT_EQ(picture.red(9, 10), float(2 * std::exp(-0.25 * 0.25 / 4)));
    EXPECT_FLOAT_EQ(picture.red(11, 11), float(2 * std::exp(-1.75 * 1.75 / 4 - 1)));
}

TEST(Streak, IsDimmerTheLongerItIs) {
    double brightest = 1;
    for (float length : {0.5f, 2.0f, 8.0f, 30.0f}) {
        Picture picture(60, 20);
        draw_streak(picture, at(30 - length / 2, 10), at(30 + length / 2, 10), 1, 2, 2);
        const double value = picture.red(30, 10);
        // At the middle the average of exp(-t^2 / 4) over the length.
        const double expected = 2 * std::sqrt(pi) * std::erf(length / 4) / length;
        EXPECT_NEAR(value, expected, 1e-6) << length;
        EXPECT_LT(value, brightest);
        brightest = value;
    }
}

TEST(Streak, EndsHalfAsBrightAsItsMiddle) {
    Picture picture(80, 20);
    draw_streak(picture, at(20, 10), at(60, 10), 4, 2, 2);
    EXPECT_NEAR(picture.red(20, 10) / picture.red(40, 10), 0.5, 1e-6);
    EXPECT_NEAR(picture.red(60, 10) / picture.red(40, 10), 0.5, 1e-6);
}

// ---- Rows -------------------------------------------------------------------------------------

TEST(Streak, InEvenAndOddRowsMakesTheWhole) {
    Picture all(36, 30), even(36, 30), odd(36, 30);
    EXPECT_TRUE(draw(all));
    EXPECT_TRUE(draw(even, OP_STARS_LINES_EVEN));
    EXPECT_TRUE(draw(odd, OP_STARS_LINES_ODD));
    int lit = 0;
    for (int y = 0; y < 30; y++) {
        EXPECT_TRUE((y % 2 ? even : odd).row_is_black(y)) << y;
        lit += !all.row_is_black(y);
        for (int x = 0; x < 36; x++)
            for (int p = 0; p < 3; p++)
                ASSERT_TRUE(same_float((y % 2 ? odd : even).at(p, x, y), all.at(p, x, y)))
                    << x << ", " << y;
    }
    EXPECT_GT(lit, 20);
}

TEST(Streak, LeavesSkippedRowsUntouched) {
    for (op_stars_lines lines : {OP_STARS_LINES_EVEN, OP_STARS_LINES_ODD}) {
        Picture picture(36, 30, GUARDED);
        for (int y = 0; y < 30; y++)
            for (int x = 0; x < 36; x++)
                for (int p = 0; p < 3; p++)
                    picture.paint(p, x, y, not_a_number);
        Picture drawn(36, 30);
        draw(drawn, lines);
        draw(picture, lines);
        for (int y = lines == OP_STARS_LINES_EVEN ? 1 : 0; y < 30; y += 2)
            for (int x = 0; x < 36; x++)
                EXPECT_TRUE(std::isnan(picture.red(x, y)));
        EXPECT_TRUE(picture.surroundings_intact());
    }
}

TEST(Streak, TakesOtherRowFiltersForOdd) {
    Picture odd(36, 30);
    draw(odd, OP_STARS_LINES_ODD);
    for (int lines : {3, 4, -1, 100, -2147483647 - 1}) {
        Picture picture(36, 30);
        EXPECT_TRUE(draw(picture, static_cast<op_stars_lines>(lines)));
        EXPECT_TRUE(same_bits(odd, picture)) << lines;
    }
}

TEST(Streak, OnASingleRowKeepsOrLosesItByItsParity) {
    for (int y : {4, 5}) {
        Picture even(20, 10), odd(20, 10);
        // A height of 0.05 reaches y and y + 1 only, and underflows at y + 1.
        const Vector2 start = at(5, float(y)), end = at(15, float(y));
        EXPECT_EQ(op_star_streak(even.fb, start, end, 1, white, 1, 0.05f, OP_STARS_LINES_EVEN),
                  y == 4);
        EXPECT_EQ(op_star_streak(odd.fb, start, end, 1, white, 1, 0.05f, OP_STARS_LINES_ODD),
                  y == 5);
    }
}

// ---- Coverage ---------------------------------------------------------------------------------

TEST(Streak, LeavesCoveredPixelsAlone) {
    for (float alpha : {1.0f, 1.5f, 1e30f, infinity}) {
        Picture picture(36, 30, GUARDED);
        picture.cover_all(alpha);
        picture.paint(0, 18, 15, not_a_number);
        EXPECT_FALSE(draw(picture)) << alpha;
        EXPECT_TRUE(std::isnan(picture.red(18, 15)));
        picture.paint(0, 18, 15, 0);
        EXPECT_TRUE(picture.is_black()) << alpha;
        EXPECT_TRUE(picture.surroundings_intact());
    }
}

TEST(Streak, GoesBehindWhatIsCoveredInPart) {
    Picture bare(36, 30);
    draw(bare);
    for (float alpha : {0.25f, 0.5f, 0.999f, -1.0f, -0.5f, -3.0f}) {
        Picture picture(36, 30, GUARDED);
        picture.cover_all(alpha);
        EXPECT_TRUE(draw(picture)) << alpha;
        for (int y = 0; y < 30; y++)
            for (int x = 0; x < 36; x++) {
                // w = (1 - a) v, rounded once; the weights are powers of two.
                const float w = (1.0f - alpha) * bare.red(x, y);
                EXPECT_EQ(picture.red(x, y), w) << alpha;
                EXPECT_EQ(picture.green(x, y), 0.5f * w) << alpha;
                EXPECT_EQ(picture.blue(x, y), 0.25f * w) << alpha;
            }
        EXPECT_TRUE(picture.surroundings_intact());
    }
}

TEST(Streak, IsStrongerOnNegativeAlpha) {
    Picture bare(9, 9), picture(9, 9);
    draw_spot(bare, at(4, 4), 1, 2, 2);
    picture.cover(4, 4, -1);
    picture.cover(5, 4, -infinity);
    draw_spot(picture, at(4, 4), 1, 2, 2);
    EXPECT_EQ(picture.red(4, 4), 2);
    EXPECT_EQ(picture.red(5, 4), infinity);
    EXPECT_EQ(picture.red(6, 4), bare.red(6, 4));
}

TEST(Streak, MakesNoNumbersOfAlphaThatIsNone) {
    Picture bare(36, 30), picture(36, 30);
    draw(bare);
    picture.cover(18, 15, not_a_number);
    ASSERT_GT(bare.red(18, 15), 0);
    EXPECT_TRUE(draw(picture)) << "by its other pixels";
    for (int p = 0; p < 3; p++) {
        EXPECT_TRUE(std::isnan(picture.at(p, 18, 15)));
        picture.paint(p, 18, 15, bare.at(p, 18, 15));
    }
    EXPECT_TRUE(same_bits(bare, picture));
    Picture none(36, 30);
    none.cover_all(not_a_number);
    EXPECT_FALSE(draw(none)) << "a NaN weight is not above 0";
}

TEST(Streak, TellsTheColourSumsAndTheWeightApart) {
    Picture picture(36, 30);
    const Color3 black = {{0, 0, 0}};
    EXPECT_TRUE(op_star_streak(picture.fb, from, to, 20, black, 1.5f, 2, OP_STARS_LINES_ALL));
    EXPECT_TRUE(picture.is_black());
}

// ---- Memory -----------------------------------------------------------------------------------

TEST(Streak, DrawsIntoEveryMemoryLayoutAlike) {
    Picture interleaved(36, 30);
    draw(interleaved);
    for (Layout layout : {GUARDED, PLANAR, BOTTOM_UP}) {
        Picture picture(36, 30, layout);
        EXPECT_TRUE(draw(picture));
        EXPECT_TRUE(same_bits(interleaved, picture)) << layout;
        EXPECT_TRUE(picture.surroundings_intact()) << layout;
    }
}

TEST(Streak, WritesThreeColoursIntoOnePlaneOneAfterTheOther) {
    // A grey image may give one plane for all: the three shares add up.
    Picture apart(36, 30), grey(36, 30);
    draw(apart);
    StarFramebuffer fb = grey.fb;
    fb.green = fb.blue = fb.red;
    const Color3 color = {{1, 0.5f, 0.25f}};
    op_star_streak(fb, from, to, 20, color, 1.5f, 2, OP_STARS_LINES_ALL);
    for (int y = 0; y < 30; y++)
        for (int x = 0; x < 36; x++) // exact but for two roundings
            EXPECT_NEAR(grey.red(x, y), 1.75f * apart.red(x, y), 3e-7f * apart.red(x, y));
}

TEST(Streak, TouchesNothingBesideItsFootprint) {
    static const struct {
        Vector2 from, to;
        float amplitude, size_x, size_y;
    } table[] = {
        {{{10, 12}}, {{30, 12}}, 1, 1, 1},        {{{20, 5}}, {{20, 25}}, 1, 1.5f, 1},
        {{{5, 5}}, {{33, 24}}, 3, 1, 1},          {{{30, 5}}, {{9, 25}}, 3, 2, 1},
        {{{20, 14}}, {{21, 14.5f}}, 0.01f, 2, 2}, {{{-9, 3}}, {{50, 40}}, 9, 1, 1.2f},
        {{{18, 12}}, {{30, 13}}, 1, 0.6f, 0.6f},  {{{18, -40}}, {{19, 90}}, 1, 1.1f, 1.1f},
    };
    for (const auto& row : table)
        for (Layout layout : {GUARDED, PLANAR, BOTTOM_UP}) {
            Picture picture(40, 30, layout);
            draw_streak(picture, row.from, row.to, row.amplitude, row.size_x, row.size_y);
            const Footprint footprint(row.from, row.to, row.amplitude, row.size_x, row.size_y);
            for (int y = 0; y < 30; y++)
                for (int x = 0; x < 40; x++)
                    if (!footprint.visits(x, y, 1e-3)) {
                        EXPECT_TRUE(same_float(picture.red(x, y), 0)) << x << ", " << y;
                    }
            EXPECT_TRUE(picture.surroundings_intact());
        }
}
