// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/photometry.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>

namespace velmora {

static const double flux_accuracy = 2e-14;
static const double magnitude_accuracy = 4e-14;

static int largest_difference(const ColorBytes& a, const ColorBytes& b) {
    return std::max(
        {std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue)});
}

TEST(Photometry, GivesVegaAFluxOfOne) {
    EXPECT_EQ(flux_of_magnitude(0), 1);
}

TEST(Photometry, GivesAHundredthOfTheFluxFiveMagnitudesFainter) {
    for (double v = -30; v <= 30; v += 0.37)
        EXPECT_NEAR(flux_of_magnitude(v) / flux_of_magnitude(v + 5), 100, 100 * 3 * flux_accuracy);
}

TEST(Photometry, MultipliesFluxesWhereMagnitudesAdd) {
    for (double v = -20; v <= 20; v += 1.3)
        EXPECT_NEAR(flux_of_magnitude(v) * flux_of_magnitude(2.5) / flux_of_magnitude(v + 2.5), 1,
                    3 * flux_accuracy);
}

// 10^-2.4, 10^0.576 and 10^-1 written out.
TEST(Photometry, GivesThePowersOfTenWorkedByHand) {
    EXPECT_NEAR(flux_of_magnitude(6), 0.0039810717055349725, 1e-16);
    EXPECT_NEAR(flux_of_magnitude(-1.44), 3.7670379898390893, 1e-13);
    EXPECT_NEAR(flux_of_magnitude(2.5), 0.1, 1e-15);
}

TEST(Photometry, MatchesALongerFloatOverTheWholeRange) {
    for (double v = -90; v <= 90; v += 0.173) {
        const long double exact = std::pow(10.0L, -0.4L * static_cast<long double>(v));
        EXPECT_NEAR(double(flux_of_magnitude(v) / exact), 1, flux_accuracy) << v;
    }
}

TEST(Photometry, FindsTheMagnitudeOfAFlux) {
    EXPECT_EQ(magnitude_of_flux(1), 0);
    EXPECT_NEAR(magnitude_of_flux(100), -5, magnitude_accuracy);
    for (double v = -90; v <= 90; v += 0.173)
        EXPECT_NEAR(magnitude_of_flux(flux_of_magnitude(v)), v, magnitude_accuracy);
}

// T = 4600 (1 / (0.92 b + 1.7) + 1 / (0.92 b + 0.62)) on paper:
//    0     4600 (0.58823529 + 1.61290323) = 10125.2372
//    0.65  4600 (0.43516101 + 0.82101806) =  5778.4237
//    1     4600 (0.38167939 + 0.64935065) =  4742.7382
TEST(Photometry, GivesTheTemperaturesWorkedByHand) {
    EXPECT_NEAR(temperature_of_bv(0), 10125.2372, 1e-3);
    EXPECT_NEAR(temperature_of_bv(0.65), 5778.4237, 1e-3);
    EXPECT_NEAR(temperature_of_bv(1), 4742.7382, 1e-3);
}

TEST(Photometry, HoldsTheTemperatureBeyondTheEndsOfTheColorIndex) {
    EXPECT_NEAR(temperature_of_bv(-0.4), 21707.4, 0.05); // 4600 (1 / 1.332 + 1 / 0.252)
    EXPECT_EQ(temperature_of_bv(-0.67), temperature_of_bv(-0.4));
    EXPECT_EQ(temperature_of_bv(-1e300), temperature_of_bv(-0.4));
    EXPECT_NEAR(temperature_of_bv(3), 2392.34, 0.05); // 4600 (1 / 4.46 + 1 / 3.38)
    EXPECT_EQ(temperature_of_bv(5.6), temperature_of_bv(3));
}

struct TemperatureColor {
    double kelvin;
    ColorBytes bytes;
};

// The same formulas, worked out apart from this code with a sampling of their own. A value of
// nearly x.5 rounds to either side with the sampling, hence 1.
TEST(Photometry, GivesTheColorsOfBlackBodies) {
    const TemperatureColor table[] = {
        {1000, {255, 47, 0}},     {2000, {255, 141, 21}},   {3000, {255, 185, 110}},
        {4000, {255, 212, 166}},  {5000, {255, 231, 208}},  {5772, {255, 241, 234}},
        {6500, {255, 249, 254}},  {10000, {205, 217, 255}}, {20000, {171, 193, 255}},
        {40000, {158, 184, 255}},
    };
    for (const TemperatureColor& row : table)
        EXPECT_LE(largest_difference(color_of_temperature(row.kelvin), row.bytes), 1) << row.kelvin;
}

struct IndexColor {
    double bv;
    ColorBytes bytes;
};

TEST(Photometry, GivesTheColorsOfStars) {
    const IndexColor table[] = {
        {-0.4, {169, 192, 255}}, {-0.2, {185, 204, 255}}, {0.0, {204, 216, 255}},
        {0.3, {235, 237, 255}},  {0.65, {255, 241, 234}}, {1.0, {255, 226, 198}},
        {1.4, {255, 211, 163}},  {1.8, {255, 197, 133}},  {2.5, {255, 175, 91}},
        {3.0, {255, 161, 65}},
    };
    for (const IndexColor& row : table)
        EXPECT_LE(largest_difference(color_of_bv(row.bv), row.bytes), 1) << row.bv;
}

// The measured CIE 1931 2-degree observer at every 20 nm from 380 nm, in place of the fits.
static const double observer[][3] = {
    {.0014, .0000, .0065},  {.0143, .0004, .0679}, {.1344, .0040, .6456}, {.3483, .0230, 1.7471},
    {.2908, .0600, 1.6692}, {.0956, .1390, .8130}, {.0049, .3230, .2720}, {.0633, .7100, .0782},
    {.2904, .9540, .0203},  {.5945, .9950, .0039}, {.9163, .8700, .0017}, {1.0622, .6310, .0008},
    {.8544, .3810, .0002},  {.4479, .1750, 0},     {.1649, .0610, 0},     {.0468, .0170, 0},
    {.0114, .0041, 0},      {.0029, .0010, 0},     {.0007, .0002, 0},
};

static double srgb_encoded(double linear) {
    return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

static ColorBytes color_seen_by_measured_observer(double kelvin) {
    double x = 0, y = 0, z = 0;
    double nm = 380;
    for (const auto& seen : observer) {
        const double power = std::pow(nm, -5) / (std::exp(1.438776877e7 / (nm * kelvin)) - 1);
        x += power * seen[0];
        y += power * seen[1];
        z += power * seen[2];
        nm += 20;
    }
    const double red = std::max(0.0, 3.2406 * x - 1.5372 * y - 0.4986 * z);
    const double green = std::max(0.0, -0.9689 * x + 1.8758 * y + 0.0415 * z);
    const double blue = std::max(0.0, 0.0557 * x - 0.2040 * y + 1.0570 * z);
    const double scale = 1 / std::max({red, green, blue});
    const auto byte = [scale](double linear) {
        return static_cast<unsigned char>(std::lround(255 * srgb_encoded(linear * scale)));
    };
    return {byte(red), byte(green), byte(blue)};
}

TEST(Photometry, SeesBlackBodiesAsTheMeasuredObserverDoes) {
    for (double kelvin = 2000; kelvin <= 40000; kelvin *= 1.1)
        EXPECT_LE(largest_difference(color_of_temperature(kelvin),
                                     color_seen_by_measured_observer(kelvin)),
                  2)
            << kelvin;
}

TEST(Photometry, MakesTheBrightestChannelFull) {
    for (double kelvin = 500; kelvin <= 1e6; kelvin *= 1.05) {
        const ColorBytes color = color_of_temperature(kelvin);
        EXPECT_EQ(std::max({color.red, color.green, color.blue}), 255) << kelvin;
    }
}

TEST(Photometry, TurnsFromRedToBlueAsBlackBodiesGetHotter) {
    ColorBytes before = color_of_temperature(500);
    for (double kelvin = 500; kelvin <= 1e6; kelvin *= 1.01) {
        const ColorBytes color = color_of_temperature(kelvin);
        EXPECT_LE(color.red, before.red) << kelvin;
        EXPECT_GE(color.blue, before.blue) << kelvin;
        before = color;
    }
}

TEST(Photometry, HoldsTheColorBeyondTheEndsOfTheTemperature) {
    EXPECT_EQ(largest_difference(color_of_temperature(0), {255, 0, 0}), 0);
    EXPECT_EQ(largest_difference(color_of_temperature(-5000), {255, 0, 0}), 0);
    EXPECT_EQ(largest_difference(color_of_temperature(1e300), color_of_temperature(1e6)), 0);
}

TEST(Photometry, TakesUnknownColorsForWhite) {
    EXPECT_EQ(unknown_color.red, 255);
    EXPECT_EQ(unknown_color.green, 255);
    EXPECT_EQ(unknown_color.blue, 255);
}

} // namespace velmora
