// SPDX-License-Identifier: BSD-3-Clause
#include "tools/frames/pixel_trace.h"

#include "tests/stars/dice.h"
#include "tests/stars/picture.h"
#include "tests/stars/sky.h"

using namespace velmora;
using namespace stars_test;

static const int width = 48, height = 32;

// With square pixels, and round spots of 3 pixels.
static View view_of(const std::vector<camera>& samples) {
    View view = {cameras(samples), plain_data(width, 3), width, height};
    view.data.top = double(height) / width;
    view.data.bottom = -view.data.top;
    return view;
}

// Where the disc projections have a star that many pixels to the right of the middle, (24, 16): the
// sine of the angle off the axis is one per half a width.
static star star_beside(double pixels, float flux = 1) {
    return make_star(90 - std::asin(pixels / 24) * 180 / 3.141592653589793, 0, flux);
}

static std::vector<u32> records_of(const PixelTrace& traced) {
    std::vector<u32> records;
    for (const TracedStar& star : traced.stars)
        records.push_back(star.record);
    return records;
}

// A spot reaches k = sqrt(ln(6250 * 4)) = 3.18 sizes, 9.6 pixels here.
TEST(PixelTrace, ListsTheStarsThatReachThePixelInTheOrderOfTheFile) {
    CountingInput input({star_beside(0), star_beside(20), star_beside(-4), star_beside(2)});
    EXPECT_EQ(records_of(trace_pixel(view_of({make_camera()}), input, 24, 16)),
              (std::vector<u32>{1, 3, 4}));
}

// The profile is 4 flux exp(-(d / 3)^2), d pixels from the star; single precision holds the places
// to some 1e-6 pixels, and the fast kernels keep 1e-6 of the value.
TEST(PixelTrace, GivesEachStarsLight) {
    CountingInput input({star_beside(0, 2), star_beside(3, 0.5f)});
    const PixelTrace traced = trace_pixel(view_of({make_camera()}), input, 24, 16);
    ASSERT_EQ(records_of(traced), (std::vector<u32>{1, 2}));
    EXPECT_NEAR(traced.stars[0].added()[0], 8, 1e-5);
    EXPECT_NEAR(traced.stars[1].added()[0], 2 * std::exp(-1.0), 1e-5);
    EXPECT_NEAR(traced.stars[0].trace.amplitude, 8, 1e-5);
    EXPECT_NEAR(traced.stars[1].trace.amplitude, 2, 1e-5);
    EXPECT_NEAR(double(traced.stars[1].trace.samples[0].position[0]), 27, 1e-4);
    EXPECT_NEAR(double(traced.stars[1].trace.samples[0].position[1]), 16, 1e-4);
}

TEST(PixelTrace, HasAPlaceForEachCamera) {
    CountingInput input({star_ahead()});
    const PixelTrace traced = trace_pixel(
        view_of({make_camera(), make_camera(turn_about_y(2)), make_camera()}), input, 24, 16);
    ASSERT_EQ(records_of(traced), (std::vector<u32>{1}));
    const auto& samples = traced.stars[0].trace.samples;
    ASSERT_EQ(samples.size(), 3u);
    EXPECT_EQ(samples[0].position[0], samples[2].position[0]);
    // Two degrees beside the axis.
    const double aside = 24 * std::sin(2 * 3.141592653589793 / 180);
    EXPECT_NEAR(std::fabs(double(samples[1].position[0] - samples[0].position[0])), aside, 1e-4);
}

// Of 300 stars around the middle, so that many meet in each pixel: the picture is drawn in one go,
// as the node does.
TEST(PixelTrace, AddsUpToThePixelBitForBit) {
    Dice dice(20);
    std::vector<star> stars;
    for (int i = 0; i < 300; i++)
        stars.push_back(make_star(dice.between(60, 120), dice.between(-30, 30),
                                  float(dice.log_between(1e-3, 1)), dice.below(256),
                                  dice.below(256), dice.below(256)));
    for (const View& view :
         {view_of({make_camera()}),
          view_of({make_camera(), make_camera(turn_about_y(5)), make_camera(turn_about_y(11))})}) {
        Picture picture(width, height);
        CountingInput drawn(stars);
        bool drew = false;
        StarRenderer(view.data, picture.fb, drawn, view.cameras).render_all(drew);

        CountingInput input(stars);
        const PixelTrace traced = trace_pixel(view, input, 20, 13);
        EXPECT_GT(traced.stars.size(), 5u);
        for (int plane = 0; plane < 3; plane++) {
            double sum = 0;
            for (const TracedStar& star : traced.stars)
                sum += star.added()[std::size_t(plane)];
            EXPECT_EQ(sum, double(picture.at(plane, 20, 13)));
            EXPECT_EQ(traced.light()[std::size_t(plane)], picture.at(plane, 20, 13));
        }
    }
}

// At 4400 a float has steps of 4.9e-4, and half of one is above the last star's 2e-4. On its own that
// one would be drawn: 6250 * 2e-4 is above 1.
TEST(PixelTrace, LeavesOutWhatChangesNoFloat) {
    const View view = view_of({make_camera()});
    CountingInput input({star_ahead(1100), star_ahead(0.0005f), star_ahead(0.00005f)});
    EXPECT_EQ(records_of(trace_pixel(view, input, 24, 16)), (std::vector<u32>{1, 2}));
    CountingInput alone({star_ahead(0.00005f)});
    EXPECT_EQ(records_of(trace_pixel(view, alone, 24, 16)), (std::vector<u32>{1}));
}

TEST(PixelTrace, KeepsTheRecordsBytes) {
    const star bytes = make_star(90, 0, 1, 10, 20, 30, 40);
    CountingInput input({bytes}, "VELMORA2");
    const PixelTrace traced = trace_pixel(view_of({make_camera()}), input, 24, 16);
    ASSERT_EQ(records_of(traced), (std::vector<u32>{1}));
    EXPECT_EQ(star_bytes(traced.stars[0].bytes), star_bytes(bytes));
    EXPECT_EQ(star_bytes(traced.header), header_bytes("VELMORA2"));
    EXPECT_TRUE(traced.has_distances);
}

TEST(PixelTrace, IsEmptyWithoutStars) {
    CountingInput input({});
    const PixelTrace traced = trace_pixel(view_of({make_camera()}), input, 24, 16);
    EXPECT_EQ(records_of(traced), (std::vector<u32>{}));
    EXPECT_EQ(traced.light(), (Light{0, 0, 0}));
    EXPECT_FALSE(traced.has_distances);
}
