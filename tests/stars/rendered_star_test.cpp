// SPDX-License-Identifier: BSD-3-Clause

// How bright, of what colour and where one star is drawn: the record's fields down to the picture.
#include "tests/special_values.h"
#include "tests/stars/render.h"

#include <cmath>

using namespace stars_test;
using namespace velmora_test::doubles;

namespace {

// Peak of one star ahead in a 32 x 32 image.
float peak(const StarRendererData& data, float flux) {
    Picture picture(32, 32);
    const bool drew = render(data, {star_ahead(flux)}, picture);
    EXPECT_EQ(drew, picture.red(16, 16) > 0);
    return picture.red(16, 16);
}

} // namespace

// ---- Photometry -------------------------------------------------------------------------------

TEST(RenderedStar, KeepsAStarExactlyAtTheThreshold) {
    StarRendererData data = plain_data(32);
    data.lum_threshold = 0.375;
    EXPECT_FLOAT_EQ(peak(data, 0.375f), 1.5f);
    data.lum_threshold = std::nextafter(0.375, 1.0); // in double: no float is that close
    EXPECT_EQ(peak(data, 0.375f), 0);
    data.lum_threshold = 0.1; // just below the float of 0.1
    EXPECT_GT(peak(data, 0.1f), 0);
}

TEST(RenderedStar, AppliesTheThresholdBeforeTheBias) {
    StarRendererData data = plain_data(32);
    data.bias_exponent = 0.5;
    data.lum_threshold = 0.4;
    EXPECT_EQ(peak(data, 0.25f), 0) << "0.25 is below, its root 0.5 is not";
    data.bias_exponent = 2;
    EXPECT_FLOAT_EQ(peak(data, 0.5f), 1) << "0.5 is above, its square is not";
}

TEST(RenderedStar, DrawsTheBiasedAndCappedLuminance) {
    StarRendererData data = plain_data(32);
    EXPECT_FLOAT_EQ(peak(data, 0.09f), 0.36f);
    data.bias_exponent = 0.5;
    EXPECT_FLOAT_EQ(peak(data, 0.09f), 1.2f);
    data.lum_max = 0.2;
    EXPECT_FLOAT_EQ(peak(data, 0.09f), 0.8f);
    data.bias_exponent = 100;
    data.lum_max = 1e30;
    EXPECT_FLOAT_EQ(peak(data, 1.01f), float(4 * std::pow(double(1.01f), 100)));
}

TEST(RenderedStar, ColoursTheSpot) {
    StarRendererData data = plain_data(32);
    data.tint_strength = 0.5;
    data.tint_color = {{0, 1, 0.25f}};
    data.saturation = 0.5;
    Picture picture(32, 32);
    EXPECT_TRUE(render(data, {make_star(90, 0, 1, 0, 0, 0)}, picture));
    EXPECT_FLOAT_EQ(picture.red(16, 16), 4 * 0.25f);
    EXPECT_FLOAT_EQ(picture.green(16, 16), 4 * 0.5f);
    EXPECT_FLOAT_EQ(picture.blue(16, 16), 4 * 0.3125f);
}

TEST(RenderedStar, DrawsABlackStarWithoutLight) {
    StarRendererData data = plain_data(32);
    Picture picture(32, 32);
    EXPECT_TRUE(render(data, {make_star(90, 0, 1, 0, 0, 0)}, picture)) << "the weight counts";
    EXPECT_TRUE(picture.is_black());
}

TEST(RenderedStar, DrawsNothingForFluxesWithoutAmplitude) {
    StarRendererData data = plain_data(32);
    data.lum_threshold = -infinity;
    data.lum_max = infinity;
    for (double flux : {not_a_number, -1.0, 0.0, -0.0, -infinity, infinity})
        EXPECT_EQ(peak(data, float(flux)), 0) << flux;
    data.lum_max = 2; // infinities are capped like other values; NaN is not
    EXPECT_FLOAT_EQ(peak(data, float(infinity)), 8);
    EXPECT_EQ(peak(data, float(not_a_number)), 0);
}

TEST(RenderedStar, TakesAThresholdThatIsNoNumberForNone) {
    StarRendererData data = plain_data(32);
    data.lum_threshold = not_a_number;
    EXPECT_FLOAT_EQ(peak(data, 0.01f), 0.04f);
}

// ---- Distances --------------------------------------------------------------------------------

// A camera moved by 0.6 along x sees a star at distance 1 along z at X = -0.6: hemispherical, with
// z 1, at -0.6 / sqrt(1.36) of the radius; one without distance stays in the middle.
TEST(RenderedStar, MovesStarsByTheirDistanceInThreeDimensions) {
    DblMatrix4 m = identity();
    m(3, 0) = -0.6;
    const double shifted = 32 - 32 * 0.6 / std::sqrt(1.36);
    static const struct {
        const char* magic;
        bool threed;
        double distance, parallax;
        bool moves;
    } table[] = {
        {"VELMORA2", true, 1, 0, true},         {"VELMORA2", false, 1, 0, false},
        {"VELMORA1", true, 1, 0, false},        {"VELMORA2", true, 0, 0, false},
        {"VELMORA2", true, -1, 0, false},       {"VELMORA2", true, not_a_number, 0, false},
        {"VELMORA2", true, infinity, 0, false}, {"VELMORA2", true, 1, 100, false},
        {"VELMORA2", true, 1, 1000, false},     {"VELMORA2", true, 0.5, 100, true},
        {"VELMORA2", true, 0.8, 25, true},      {"VELMORA2", false, 0.5, 100, false},
    };
    for (const auto& row : table) {
        StarRendererData data = plain_data(64);
        data.threed = row.threed;
        data.parallax = row.parallax;
        CountingInput input({make_star(90, 0, 1, 255, 255, 255, row.distance)}, row.magic);
        Picture picture(64, 64);
        EXPECT_TRUE(render(data, input, {make_camera(m)}, picture));
        double moment = 0;
        for (int y = 0; y < 64; y++)
            for (int x = 0; x < 64; x++)
                moment += double(picture.red(x, y)) * x;
        EXPECT_NEAR(moment / picture.total(0), row.moves ? shifted : 32, 1e-3)
            << row.magic << ' ' << row.threed << ' ' << row.distance << ' ' << row.parallax;
    }
}

TEST(RenderedStar, ChangesNothingForVersionOneInThreeDimensions) {
    const std::vector<star> stars = {make_star(85, 2, 1, 255, 255, 255, 0.3),
                                     make_star(92, -3, 1, 255, 255, 255, 7)};
    DblMatrix4 m = turn_about_y(3);
    m(3, 1) = 0.4;
    Picture flat(40, 40), threed(40, 40);
    StarRendererData data = plain_data(40);
    for (Picture* picture : {&flat, &threed}) {
        data.threed = picture == &threed;
        CountingInput input(stars, "VELMORA1");
        EXPECT_TRUE(render(data, input, {make_camera(m)}, *picture));
    }
    EXPECT_TRUE(same_bits(flat, threed));
}
