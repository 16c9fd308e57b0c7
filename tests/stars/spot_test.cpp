// SPDX-License-Identifier: BSD-3-Clause
#include "tests/special_values.h"
#include "tests/stars/picture.h"
#include "tests/stars/reference.h"

using namespace stars_test;
using namespace velmora_test::floats;

namespace {

const struct {
    float x, y, amplitude, size_x, size_y;
} spots[] = {
    {20, 20, 1, 1, 1},
    {20.5f, 19.5f, 1, 1, 1},
    {20.25f, 20.75f, 8, 1.5f, 1.5f},
    {19.9f, 21.3f, 2, 1, 3},
    {22.2f, 18.1f, 0.5f, 4, 1.2f},
    {20, 20, 100, 2.7f, 2.7f},
    {21.1f, 20.6f, 1e4f, 1.1f, 3.3f},
    {20.01f, 20.99f, 1e-3f, 2, 2},
};

} // namespace

// expf and the two quotients in its argument, which is at most 9 here, carry 1e-6 of the peak.
TEST(Spot, HasAGaussianProfile) {
    for (const auto& spot : spots) {
        Picture picture(41, 41);
        EXPECT_TRUE(
            draw_spot(picture, at(spot.x, spot.y), spot.amplitude, spot.size_x, spot.size_y));
        const Footprint footprint(at(spot.x, spot.y), at(spot.x, spot.y), spot.amplitude,
                                  spot.size_x, spot.size_y);
        for (int y = 0; y < 41; y++)
            for (int x = 0; x < 41; x++) {
                const double expected = footprint.visits(x, y, 0)
                                            ? spot.amplitude * still_value(x, y, spot.x, spot.y,
                                                                           spot.size_x, spot.size_y)
                                            : 0;
                EXPECT_NEAR(picture.red(x, y), expected, 1e-6 * spot.amplitude)
                    << x << ", " << y << " of the spot at " << spot.x << ", " << spot.y;
            }
    }
}

TEST(Spot, ReachesItsPeakOnAPixel) {
    for (float amplitude : {1.0f, 0.37f, 12345.0f}) {
        Picture picture(9, 9);
        EXPECT_TRUE(draw_spot(picture, at(4, 4), amplitude, 1.3f, 2));
        EXPECT_EQ(picture.red(4, 4), amplitude);
    }
}

TEST(Spot, FallsToOneOverEAtItsSize) {
    Picture picture(21, 21);
    draw_spot(picture, at(10, 10), 1, 3, 5);
    EXPECT_FLOAT_EQ(picture.red(13, 10), float(std::exp(-1.0)));
    EXPECT_FLOAT_EQ(picture.red(10, 15), float(std::exp(-1.0)));
    EXPECT_FLOAT_EQ(picture.red(13, 15), float(std::exp(-2.0)));
}

// The sum over the pixels is amplitude * pi * size_x * size_y, but for two things. Sampling a
// Gaussian of size s on a grid adds 2 exp(-pi^2 s^2) cos(2 pi centre) of it, at most 1.04e-4 per
// axis at size 1 and 4e-10 at size 1.5. The cut-off loses at most erfc(k) per axis, k =
// sqrt(ln(6250 amplitude)): 3e-5 at amplitude 1 and less above.
TEST(Spot, CarriesAmplitudePiSizeXSizeYOfLight) {
    const Color3 color = {{1, 0.5f, 0.125f}};
    for (float amplitude : {1.0f, 4.0f, 1000.0f})
        for (float size_x : {1.0f, 1.2f, 2.0f, 4.5f})
            for (float size_y : {1.0f, 1.7f, 3.0f})
                for (float x : {30.0f, 30.25f, 30.4f, 30.5f}) {
                    const float y = x + 0.3f;
                    Picture picture(64, 64);
                    op_star_streak(picture.fb, at(x, y), at(x, y), amplitude, color, size_x, size_y,
                                   OP_STARS_LINES_ALL);
                    const double sampling =
                        (1 + 2 * std::exp(-pi * pi * size_x * size_x) * std::cos(2 * pi * x)) *
                        (1 + 2 * std::exp(-pi * pi * size_y * size_y) * std::cos(2 * pi * y));
                    const double light = double(amplitude) * pi * size_x * size_y * sampling;
                    for (int p = 0; p < 3; p++)
                        EXPECT_NEAR(picture.total(p) / (light * color[p]), 1, 1e-4)
                            << amplitude << ' ' << size_x << ' ' << size_y << ' ' << x;
                }
}

TEST(Spot, LosesNoMoreThanItsCutOff) {
    // Towards the faint end the reach shrinks: what is missing stays below 2 erfc(k).
    for (float amplitude : {0.01f, 0.05f, 0.2f, 1.0f, 10.0f}) {
        Picture picture(64, 64);
        draw_spot(picture, at(30.3f, 30.1f), amplitude, 3, 3);
        const double k = std::sqrt(std::log(6250.0 * amplitude));
        const double part = picture.total(0) / (amplitude * pi * 9);
        EXPECT_LE(part, 1 + 1e-6) << amplitude;
        EXPECT_GE(part, 1 - 2 * std::erfc(k) - 1e-6) << amplitude;
    }
}

// The whole clamped box is visited, its corners too, and nothing beside it.
TEST(Spot, FillsItsBoundingBoxAndNothingElse) {
    // k = sqrt(ln(6250)) = 2.9566, so a size of 2 reaches 5.913 pixels.
    Picture picture(32, 32, GUARDED);
    EXPECT_TRUE(draw_spot(picture, at(15.5f, 16.25f), 1, 2, 1));
    const int x_lo = 9, x_hi = 22;  // floor(9.587), floor(21.413) + 1
    const int y_lo = 13, y_hi = 20; // floor(13.293), floor(19.207) + 1
    for (int y = 0; y < 32; y++)
        for (int x = 0; x < 32; x++)
            EXPECT_EQ(picture.red(x, y) > 0, x >= x_lo && x <= x_hi && y >= y_lo && y <= y_hi)
                << x << ", " << y;
    EXPECT_TRUE(picture.surroundings_intact());
}

// Spots at multiples of 1/64 have exact midpoints and offsets, and a stationary path's span is the
// whole box, so only the floors of centre +- reach could distinguish the places, and with these
// reaches no edge of the box lies closer than 0.01 to a whole number: the law is exact.
TEST(Spot, ShiftsByWholePixelsBitForBit) {
    for (int sub = 0; sub < 64; sub += 7) {
        const float x = 20 + float(sub) / 64, y = 21 + float(63 - sub) / 64;
        const Footprint footprint(at(x, y), at(x, y), 3, 2.125f, 1.5f);
        for (double edge : {footprint.left, footprint.right, footprint.up, footprint.low})
            ASSERT_GT(std::fabs(edge - std::nearbyint(edge)), 1e-3);
        Picture here(80, 80), there(80, 80);
        draw_spot(here, at(x, y), 3, 2.125f, 1.5f);
        draw_spot(there, at(x + 23, y + 17), 3, 2.125f, 1.5f);
        for (int iy = 0; iy < 60; iy++)
            for (int ix = 0; ix < 56; ix++)
                ASSERT_TRUE(same_float(here.red(ix, iy), there.red(ix + 23, iy + 17)))
                    << ix << ", " << iy << " at " << sub;
    }
}

TEST(Spot, ClipsAtEveryEdgeWithoutOtherChange) {
    Picture whole(60, 60);
    draw_spot(whole, at(30.5f, 30.25f), 5, 3, 2);
    for (int dx : {-30, -34, 0, 24, 33})
        for (int dy : {-30, -33, 0, 27, 31}) {
            Picture clipped(60, 60, GUARDED);
            draw_spot(clipped, at(30.5f + float(dx), 30.25f + float(dy)), 5, 3, 2);
            for (int y = 0; y < 60; y++)
                for (int x = 0; x < 60; x++) {
                    const int from_x = x - dx, from_y = y - dy;
                    const bool inside = from_x >= 0 && from_x < 60 && from_y >= 0 && from_y < 60;
                    ASSERT_EQ(clipped.red(x, y), inside ? whole.red(from_x, from_y) : 0)
                        << x << ", " << y << " moved by " << dx << ", " << dy;
                }
            EXPECT_TRUE(clipped.surroundings_intact());
        }
}

TEST(Spot, DrawsIntoEveryMemoryLayoutAlike) {
    Picture interleaved(24, 17);
    const Color3 color = {{1, 0.5f, -0.25f}};
    op_star_streak(interleaved.fb, at(11.3f, 8.9f), at(11.3f, 8.9f), 2, color, 1.5f, 2,
                   OP_STARS_LINES_ALL);
    for (Layout layout : {GUARDED, PLANAR, BOTTOM_UP}) {
        Picture picture(24, 17, layout);
        op_star_streak(picture.fb, at(11.3f, 8.9f), at(11.3f, 8.9f), 2, color, 1.5f, 2,
                       OP_STARS_LINES_ALL);
        EXPECT_TRUE(same_bits(interleaved, picture)) << layout;
        EXPECT_TRUE(picture.surroundings_intact()) << layout;
    }
}

TEST(Spot, FitsIntoOnePixel) {
    Picture picture(1, 1, GUARDED);
    EXPECT_TRUE(draw_spot(picture, at(0, 0), 2, 1, 1));
    EXPECT_EQ(picture.red(0, 0), 2);
    EXPECT_TRUE(draw_spot(picture, at(0.5f, -0.5f), 2, 1, 1));
    EXPECT_FLOAT_EQ(picture.red(0, 0), float(2 + 2 * std::exp(-0.5)));
    EXPECT_FALSE(draw_spot(picture, at(20, 0), 2, 1, 1));
    EXPECT_TRUE(picture.surroundings_intact());
}

TEST(Spot, AddsToWhatIsThere) {
    Picture picture(9, 9);
    picture.paint(0, 4, 4, 10);
    picture.paint(1, 4, 4, -3);
    picture.paint(2, 4, 4, infinity);
    draw_spot(picture, at(4, 4), 2, 1, 1);
    EXPECT_EQ(picture.red(4, 4), 12);
    EXPECT_EQ(picture.green(4, 4), -1);
    EXPECT_EQ(picture.blue(4, 4), infinity);
}

TEST(Spot, WeighsItsColours) {
    Picture picture(9, 9);
    const Color3 color = {{2, 0, -0.5f}};
    EXPECT_TRUE(op_star_streak(picture.fb, at(4, 4), at(4, 4), 3, color, 1, 1, OP_STARS_LINES_ALL));
    EXPECT_EQ(picture.red(4, 4), 6);
    EXPECT_EQ(picture.green(4, 4), 0);
    EXPECT_EQ(picture.blue(4, 4), -1.5f);
}

TEST(Spot, InBlackReportsItsWeight) {
    for (float weight : {0.0f, -1.0f, not_a_number}) {
        Picture picture(9, 9);
        const Color3 color = {{weight, weight, weight}};
        EXPECT_TRUE(
            op_star_streak(picture.fb, at(4, 4), at(4, 4), 3, color, 1, 1, OP_STARS_LINES_ALL));
    }
}

// ---- How faint --------------------------------------------------------------------------------

// At amplitude 1 / 6250 the reach is 0: the box of the point itself, one pixel wider.
TEST(Spot, AtTheFaintestAmplitudeFillsFourPixels) {
    const float faintest = 1.6e-4f;
    ASSERT_EQ(faintest * 6250.0f, 1.0f);
    Picture picture(12, 12);
    EXPECT_TRUE(draw_spot(picture, at(5, 6), faintest, 2, 2));
    for (int y = 0; y < 12; y++)
        for (int x = 0; x < 12; x++)
            EXPECT_EQ(picture.red(x, y) > 0, (x == 5 || x == 6) && (y == 6 || y == 7));
    EXPECT_EQ(picture.red(5, 6), faintest);
}

TEST(Spot, JustBelowTheFaintestDrawsNothing) {
    float below = 1.6e-4f;
    while (below * 6250.0f >= 1.0f)
        below = std::nextafter(below, 0.0f);
    for (float amplitude :
         {below, 1e-4f, 1e-30f, 1e-44f, 0.0f, -0.0f, -1.0f, -infinity, not_a_number}) {
        Picture picture(12, 12);
        EXPECT_FALSE(draw_spot(picture, at(5, 6), amplitude, 2, 2)) << amplitude;
        EXPECT_TRUE(picture.is_black()) << amplitude;
    }
}

// An infinite reach has an upper bound that fits no integer.
TEST(Spot, OfInfiniteAmplitudeDrawsNothing) {
    Picture picture(12, 12);
    EXPECT_FALSE(draw_spot(picture, at(5, 6), infinity, 2, 2));
    EXPECT_FALSE(draw_spot(picture, at(5, 6), 1e38f, 2, 2)) << "6250 times that overflows";
    EXPECT_TRUE(picture.is_black());
    EXPECT_TRUE(draw_spot(picture, at(5, 6), 1e34f, 2, 2));
    EXPECT_EQ(picture.red(5, 6), 1e34f);
}

TEST(Spot, ThatUnderflowsOnEveryPixelDrawsNothing) {
    // Half a pixel is 50 sizes: exp(-5000) is 0 on the four pixels that are visited.
    Picture picture(12, 12);
    EXPECT_FALSE(draw_spot(picture, at(5.5f, 5.5f), 1, 0.01f, 0.01f));
    EXPECT_TRUE(picture.is_black());
    EXPECT_TRUE(draw_spot(picture, at(5, 5), 1, 0.01f, 0.01f));
    EXPECT_EQ(picture.red(5, 5), 1);
    EXPECT_EQ(picture.red(6, 5), 0);
}

TEST(Spot, OfASizeThatIsNoNumberDrawsNothing) {
    for (float size : {not_a_number, infinity}) {
        Picture picture(12, 12);
        EXPECT_FALSE(draw_spot(picture, at(5, 6), 1, size, 2));
        EXPECT_FALSE(draw_spot(picture, at(5, 6), 1, 2, size));
        EXPECT_TRUE(picture.is_black());
    }
}
