// SPDX-License-Identifier: BSD-3-Clause
#include "stars/plain/shading.h"
#include "tests/special_values.h"
#include "tests/stars/sky.h"

#include <cmath>

using namespace stars_test;
using namespace velmora;
using namespace velmora_test::doubles;

namespace {

// The sRGB decoding of byte b in double.
double decoded(int b) {
    const double c = b / 255.0;
    return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

Color3 color_of(int red, int green, int blue, const StarRendererData& data) {
    return shaded_color(make_star(0, 0, 1, red, green, blue), data);
}

StarRendererData no_tint() {
    return plain_data(100);
}

} // namespace

TEST(Shading, KeepsLuminanceAtABiasOfOne) {
    const StarRendererData data = no_tint();
    for (float flux : {0.0f, 1e-38f, 0.3f, 1.0f, 12345.678f, -2.0f})
        EXPECT_EQ(shaded_luminance(flux, data), flux);
}

TEST(Shading, RaisesLuminanceToTheBiasExponent) {
    StarRendererData data = no_tint();
    data.bias_exponent = 0.5;
    EXPECT_EQ(shaded_luminance(0.25f, data), 0.5f);
    EXPECT_EQ(shaded_luminance(9, data), 3);
    data.bias_exponent = 1.0 / 3.0;
    EXPECT_EQ(shaded_luminance(5, data), powf(5, float(1.0 / 3.0))) << "narrowed to float first";
    data.bias_exponent = 100; // what a bias of 0 gives
    EXPECT_EQ(shaded_luminance(1, data), 1);
    EXPECT_EQ(shaded_luminance(0.5f, data), std::ldexp(1.0f, -100));
    EXPECT_FLOAT_EQ(shaded_luminance(1.01f, data), float(std::pow(double(1.01f), 100)));
    data.bias_exponent = 0.5;
    EXPECT_TRUE(std::isnan(shaded_luminance(-1, data)));
}

// Within the 4 last bits of EXPECT_FLOAT_EQ of the power in double; powf is good to one.
TEST(Shading, RaisesTheFluxToAnyExponent) {
    StarRendererData data = no_tint();
    for (const double exponent : {0.25, 0.5, 0.9, 0.99, 1.0, 1.01, 1.1, 1.5, 2.0, 4.0})
        for (const float flux : {0.25f, 0.5f, 3.0f}) {
            data.bias_exponent = exponent;
            EXPECT_FLOAT_EQ(shaded_luminance(flux, data),
                            float(std::pow(double(flux), double(float(exponent)))))
                << flux << " to the power " << exponent;
        }
}

TEST(Shading, CapsTheBiasedLuminance) {
    StarRendererData data = no_tint();
    data.lum_max = 0.7;
    EXPECT_EQ(shaded_luminance(0.5f, data), 0.5f);
    EXPECT_EQ(shaded_luminance(2, data), 0.7f);
    EXPECT_EQ(shaded_luminance(float(infinity), data), 0.7f);
    data.bias_exponent = 0.5; // 0.36 becomes 0.6, 0.64 becomes 0.8
    EXPECT_FLOAT_EQ(shaded_luminance(0.36f, data), 0.6f);
    EXPECT_EQ(shaded_luminance(0.64f, data), 0.7f);
    data.lum_max = -1;
    EXPECT_EQ(shaded_luminance(0, data), -1);
}

TEST(Shading, LeavesALuminanceThatIsNoNumberAlone) {
    StarRendererData data = no_tint();
    data.lum_max = 0.5;
    EXPECT_TRUE(std::isnan(shaded_luminance(float(not_a_number), data)));
    data.bias_exponent = 0.5;
    EXPECT_TRUE(std::isnan(shaded_luminance(float(not_a_number), data)));
    data.bias_exponent = 1;
    data.lum_max = not_a_number;
    EXPECT_EQ(shaded_luminance(3, data), 3) << "a NaN cap does not cap";
}

// Single precision: powf of a base that carries three roundings, hence 1e-6.
TEST(Shading, DecodesEveryByteBySrgb) {
    for (int b = 0; b < 256; b++) {
        const Color3 c = color_of(b, 255 - b, b / 2, no_tint());
        EXPECT_NEAR(c[0], decoded(b), 1e-6 * decoded(b)) << b;
        EXPECT_NEAR(c[1], decoded(255 - b), 1e-6 * decoded(255 - b)) << 255 - b;
        EXPECT_NEAR(c[2], decoded(b / 2), 1e-6 * decoded(b / 2)) << b / 2;
    }
}

TEST(Shading, DecodesInSinglePrecisionAsWritten) {
    for (int b = 0; b < 256; b++) {
        float c = float(b) * 0.003921568859368563f;
        if (c <= 0.03928f)
            c = c * 0.07739938f;
        else
            c = powf((c + 0.055f) * 0.9478673f, 2.4f);
        c = c * (1.0f - 0.0f) + 0.25f * 0.0f;
        c = 0.5f * (1.0f - 1.0f) + c * 1.0f;
        StarRendererData data = no_tint();
        data.tint_color = {{0.25f, 0.25f, 0.25f}};
        EXPECT_EQ(color_of(b, 0, 0, data)[0], c) << b;
    }
}

TEST(Shading, MakesWhiteOne) {
    const Color3 c = color_of(255, 255, 255, no_tint());
    for (int k = 0; k < 3; k++)
        EXPECT_NEAR(c[k], 1, 3e-7); // five float steps: the base is off by one, times 2.4
}

TEST(Shading, DecodesByteTenOnTheStraightPart) {
    // 10 / 255 = 0.0392157 <= 0.03928; times 1 / 12.92 is 0.00303527, the power would say
    // 0.00303452.
    const Color3 c = color_of(10, 11, 0, no_tint());
    EXPECT_FLOAT_EQ(c[0], float(10 / 255.0 / 12.92));
    EXPECT_FLOAT_EQ(c[1], float(std::pow((11 / 255.0 + 0.055) / 1.055, 2.4)));
    EXPECT_EQ(c[2], 0);
}

TEST(Shading, BlendsTowardsTheTint) {
    StarRendererData data = no_tint();
    data.tint_color = {{0.2f, 3.0f, -1.0f}};
    data.tint_strength = 0.25;
    const Color3 quarter = color_of(0, 0, 0, data);
    EXPECT_FLOAT_EQ(quarter[0], 0.05f);
    EXPECT_FLOAT_EQ(quarter[1], 0.75f);
    EXPECT_FLOAT_EQ(quarter[2], -0.25f);
    const Color3 grey = color_of(188, 188, 188, data);
    for (int k = 0; k < 3; k++)
        EXPECT_FLOAT_EQ(grey[k], float(0.75 * decoded(188) + 0.25 * double(data.tint_color[k])));
}

TEST(Shading, GivesEveryStarAFullTint) {
    StarRendererData data = no_tint();
    data.tint_color = {{0.2f, 0.7f, 0.9f}};
    data.tint_strength = 1;
    for (int b : {0, 10, 100, 255}) {
        const Color3 c = color_of(b, 255 - b, 17, data);
        for (int k = 0; k < 3; k++)
            EXPECT_EQ(c[k], data.tint_color[k]) << b;
    }
}

TEST(Shading, BlendsSaturationTowardsMidGrey) {
    StarRendererData data = no_tint();
    data.saturation = 0;
    for (int b : {0, 10, 100, 255}) {
        const Color3 c = color_of(b, 255 - b, 17, data);
        for (int k = 0; k < 3; k++)
            EXPECT_EQ(c[k], 0.5f) << b << ": in every channel, whatever the star's own luminance";
    }
    data.saturation = 0.75;
    EXPECT_FLOAT_EQ(color_of(0, 0, 0, data)[1], 0.125f);
    EXPECT_FLOAT_EQ(color_of(188, 0, 0, data)[0], float(0.125 + 0.75 * decoded(188)));
    data.saturation = 2;
    EXPECT_FLOAT_EQ(color_of(0, 0, 0, data)[1], -0.5f);
}

TEST(Shading, TintsBeforeItSaturates) {
    StarRendererData data = no_tint();
    data.tint_color = {{1, 0, 0.5f}};
    data.tint_strength = 1;
    data.saturation = 0.5;
    const Color3 c = color_of(9, 9, 9, data);
    EXPECT_EQ(c[0], 0.75f);
    EXPECT_EQ(c[1], 0.25f);
    EXPECT_EQ(c[2], 0.5f);
}

TEST(Shading, LeavesColoursAloneAtFullSaturation) {
    StarRendererData data = no_tint();
    data.tint_strength = 0;
    data.tint_color = {{5, 6, 7}};
    for (int b : {1, 64, 254})
        EXPECT_NEAR(color_of(b, 0, 0, data)[0], decoded(b), 1e-6 * decoded(b));
}

TEST(Shading, PointsAtThePoleAlongY) {
    static const struct {
        double ra, dec, x, y, z;
    } table[] = {
        {0, 0, 1, 0, 0},
        {90, 0, 0, 0, 1},
        {180, 0, -1, 0, 0},
        {-90, 0, 0, 0, -1},
        {123, 90, 0, 1, 0},
        {0, -90, 0, -1, 0},
        {30, 0, 0.8660254037844386, 0, 0.5},
        {0, 30, 0.8660254037844386, 0.5, 0},
        {45, 60, 0.3535533905932738, 0.8660254037844386, 0.3535533905932738},
    };
    for (const auto& row : table) {
        const VectorN<double, 3> d = scene_direction(make_star(row.ra, row.dec, 1));
        // Angles are rounded to float radians: up to 1.2e-7 for half a turn, and the factor's own
        // error of 2.4e-8 of the angle.
        EXPECT_NEAR(d[0], row.x, 3e-7) << row.ra << ", " << row.dec;
        EXPECT_NEAR(d[1], row.y, 3e-7) << row.ra << ", " << row.dec;
        EXPECT_NEAR(d[2], row.z, 3e-7) << row.ra << ", " << row.dec;
    }
}

TEST(Shading, ConvertsAnglesInSinglePrecision) {
    for (double ra : {0.1, 12.3456789012345, 211.11, 359.999999, -500.5})
        for (double dec : {0.3, -45.123456789, 89.99}) {
            const double a = double(float(ra) * 0.017453292f);
            const double d = double(float(dec) * 0.017453292f);
            const VectorN<double, 3> v = scene_direction(make_star(ra, dec, 1));
            // sin and cos are asked for together or apart; allow their last bits.
            EXPECT_NEAR(v[0], std::cos(d) * std::cos(a), 4e-16);
            EXPECT_NEAR(v[1], std::sin(d), 4e-16);
            EXPECT_NEAR(v[2], std::sin(a) * std::cos(d), 4e-16);
        }
}

TEST(Shading, TakesParallaxOffTheInverseDistance) {
    static const struct {
        bool has_distance;
        double distance, parallax, w;
    } table[] = {
        {true, 4, 0, 0.25},        {true, 4, 5, 0.25 - 5 * 0.01},
        {true, 4, 25, 0},          {true, 4, 30, 0}, // never below 0
        {true, 0.5, 100, 1},       {true, infinity, 0, 0},
        {true, infinity, 3, 0},    {false, -1, 0, 0},
        {false, 4, 0, 0}, // without a distance, its value is not read
        {false, 4, 7, 0},          {false, not_a_number, 0, 0},
        {true, 2, -50, 0.5 + 0.5}, {false, -1, -50, 0.5}, // as the sum says; it pulls every star in
    };
    for (const auto& row : table)
        EXPECT_EQ(inverse_distance(row.has_distance, row.distance, row.parallax), row.w)
            << row.has_distance << ", " << row.distance << ", " << row.parallax;
}

// 41, 57 and 70 times the double nearest to 0.01 come out a last bit above 0.41, 0.57 and 0.7.
TEST(Shading, MultipliesParallaxByAHundredth) {
    EXPECT_EQ(inverse_distance(false, -1, -41), 0.41000000000000003);
    EXPECT_EQ(inverse_distance(false, -1, -57), 0.5700000000000001);
    EXPECT_EQ(inverse_distance(true, 1, 57), 1 - 0.5700000000000001);
    EXPECT_EQ(inverse_distance(true, 1, -70), 1 + 0.7000000000000001);
}

TEST(Shading, TakesAnInverseDistanceThatIsNoNumberForNone) {
    EXPECT_EQ(inverse_distance(true, 1, not_a_number), 0);
    EXPECT_EQ(inverse_distance(true, not_a_number, 0), 0);
    EXPECT_EQ(inverse_distance(true, 1e-320, 0), infinity);
}
