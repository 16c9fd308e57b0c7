// SPDX-License-Identifier: BSD-3-Clause

// Stars whose spots only just reach into the image are drawn: what is passed over before it is
// drawn, by how far a star can reach at most, reaches nothing.
#include "tests/stars/kernels.h"
#include "tests/stars/render.h"

using namespace stars_test;
using namespace velmora;

namespace {

const int width = 100, height = 80;
const double window = 0.2; // the film window's half width

// The star that an unturned camera has at pixel (x, y).
star star_at(double x, double y, float flux) {
    const double X = (2 * x / width - 1) * window, Y = (1 - 2 * y / height) * window * 0.8;
    const double dec = std::asin(Y), ra = std::acos(X / std::cos(dec));
    const double degrees = 180 / 3.141592653589793;
    return make_star(ra * degrees, dec * degrees, flux);
}

StarRendererData data_of(double size, double lum_max) {
    StarRendererData data = plain_data(width, size);
    data.left = -window;
    data.right = window;
    data.bottom = -window * 0.8;
    data.top = window * 0.8;
    data.lum_max = lum_max;
    return data;
}

// Draws stars `beyond` pixels outside of each edge, alone and one by one or all at once.
void expect_drawn_beyond_each_edge(const StarRendererData& data, double beyond, float flux) {
    const double places[][2] = {
        {-beyond, 40}, {width - 1 + beyond, 40}, {50, -beyond}, {50, height - 1 + beyond}};
    for (const double* place : {places[0], places[1], places[2], places[3]})
        for (KernelLevel level : {KernelLevel::plain, best_kernel_level()})
            for (bool at_once : {false, true}) {
                const WithKernels kernels(level);
                Picture picture(width, height);
                CountingInput input({star_at(place[0], place[1], flux)});
                const Array<camera> cams = cameras({make_camera()});
                StarRenderer renderer(data, picture.fb, input, cams);
                bool drew = false;
                if (at_once)
                    renderer.render_all(drew);
                else
                    renderer.render_star(drew);
                EXPECT_TRUE(drew) << kernel_level_name(level) << ' ' << place[0] << ' ' << place[1];
                EXPECT_FALSE(picture.is_black()) << kernel_level_name(level);
                EXPECT_EQ(renderer.counts().drawn, 1u);
            }
}

} // namespace

// The brightest star of which a float holds the 6250-fold, 5e34, reaches sqrt(ln(3.1e38)) = 9.41
// sizes.
TEST(Reach, IsThatOfTheBrightestStar) {
    const double size = 10;
    expect_drawn_beyond_each_edge(data_of(size, 1e38), 9.40 * size, 1.25e34f);
}

// Capped at 1, stars have a peak of 4 and reach sqrt(ln(25000)) = 3.182 sizes, which for 40 pixels
// is more than the two that are added to be safe.
TEST(Reach, IsThatOfTheCap) {
    const double size = 40;
    expect_drawn_beyond_each_edge(data_of(size, 1), 3.17 * size, 1e10f);
}

// A cap of 1 / 25000 leaves a reach of 0: a star is drawn at its own place.
TEST(Reach, OfTheFaintestIsAPixel) {
    expect_drawn_beyond_each_edge(data_of(2, 1.0 / 24900), 0.1, 1);
}
