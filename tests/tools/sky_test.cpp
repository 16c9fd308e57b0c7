// SPDX-License-Identifier: BSD-3-Clause

// The real sky, from the bundled catalogue through the whole program: everybody's constellations.
#include "tests/tools/program.h"

#include <cmath>

static const int width = 960, height = 540;
static const double radians = 3.14159265358979323846 / 180;

namespace {

// J2000 places in degrees, as any almanac has them.
struct NamedStar {
    const char* name;
    double ra, dec;
};

struct View {
    double ra, dec; // of the image's centre
    double fov;     // horizontal
};

struct Pixel {
    double x, y;
};

class RealSky : public Program {
protected:
    std::vector<float> render(const View& view) {
        const Ran ran =
            run("render --format 960x540 --vaperture 13.824 --look-at " + std::to_string(view.ra) +
                "," + std::to_string(view.dec) + " --fov " + std::to_string(view.fov) +
                " --knob saturation=1 --knob blur_segs=0 --raw sky.raw");
        EXPECT_EQ(ran.status, 0);
        EXPECT_EQ(ran.err, "");
        return floats_of("sky.raw");
    }
};

} // namespace

// Standard coordinates of the tangent plane (Green, Spherical Astronomy, 1985, section 13.2), north
// up and east to the left.
static Pixel expected_pixel(const NamedStar& star, const View& view) {
    const double d = star.dec * radians, d0 = view.dec * radians;
    const double a = (star.ra - view.ra) * radians;
    const double depth = std::sin(d0) * std::sin(d) + std::cos(d0) * std::cos(d) * std::cos(a);
    const double east = std::cos(d) * std::sin(a) / depth;
    const double north =
        (std::cos(d0) * std::sin(d) - std::sin(d0) * std::cos(d) * std::cos(a)) / depth;
    const double scale = width / 2 / std::tan(view.fov / 2 * radians);
    return {width / 2 - east * scale, height / 2 - north * scale};
}

static const float* pixel_at(const std::vector<float>& floats, int x, int y) {
    return &floats[4 * (std::size_t(y) * width + std::size_t(x))];
}

// The brightest pixel at most three pixels off in x and y.
static Pixel brightest_near(const std::vector<float>& floats, const Pixel& around) {
    Pixel best = {-1, -1};
    float most = 0;
    const int cx = int(std::lround(around.x)), cy = int(std::lround(around.y));
    for (int y = cy - 3; y <= cy + 3; y++) {
        for (int x = cx - 3; x <= cx + 3; x++) {
            const float green = pixel_at(floats, x, y)[2];
            if (green > most) {
                most = green;
                best = {double(x), double(y)};
            }
        }
    }
    return best;
}

// Each star's peak is at the pixel nearest to its place, or on the one beside it where the
// place is halfway; it is far above the field, whose stars are fainter than these by magnitudes.
static void expect_stars(const std::vector<float>& floats, const View& view,
                         const std::vector<NamedStar>& stars) {
    for (const NamedStar& star : stars) {
        const Pixel expected = expected_pixel(star, view);
        const Pixel peak = brightest_near(floats, expected);
        EXPECT_NEAR(peak.x, expected.x, 0.8) << star.name;
        EXPECT_NEAR(peak.y, expected.y, 0.8) << star.name;
        EXPECT_GT(pixel_at(floats, int(peak.x), int(peak.y))[2], 0.3f) << star.name;
    }
}

// Red over blue at a star's place.
static float redness(const std::vector<float>& floats, const View& view, const NamedStar& star) {
    const Pixel place = expected_pixel(star, view);
    const float* pixel = pixel_at(floats, int(std::lround(place.x)), int(std::lround(place.y)));
    return pixel[1] / pixel[3];
}

static const NamedStar betelgeuse = {"Betelgeuse", 88.793, 7.407};
static const NamedStar rigel = {"Rigel", 78.634, -8.202};

TEST_F(RealSky, ShowsOrion) {
    const View view = {84, -1, 36};
    const std::vector<float> floats = render(view);
    expect_stars(floats, view,
                 {betelgeuse,
                  rigel,
                  {"Bellatrix", 81.283, 6.350},
                  {"Saiph", 86.939, -9.670},
                  {"Mintaka", 83.002, -0.299},
                  {"Alnilam", 84.053, -1.202},
                  {"Alnitak", 85.190, -1.943}});

    // As everybody knows it from the northern half of the world.
    const Pixel shoulder = expected_pixel(betelgeuse, view), foot = expected_pixel(rigel, view);
    EXPECT_LT(shoulder.x, width / 2);
    EXPECT_LT(shoulder.y, height / 2);
    EXPECT_GT(foot.x, width / 2);
    EXPECT_GT(foot.y, height / 2);
    EXPECT_GT(redness(floats, view, betelgeuse), 2);
    EXPECT_LT(redness(floats, view, rigel), 0.8);
}

TEST_F(RealSky, ShowsTheSouthernCross) {
    const View view = {187, -60, 30};
    const NamedStar gacrux = {"Gacrux", 187.791, -57.113};
    const NamedStar mimosa = {"Mimosa", 191.930, -59.689};
    const std::vector<float> floats = render(view);
    expect_stars(floats, view,
                 {gacrux, mimosa, {"Acrux", 186.650, -63.099}, {"Imai", 183.786, -58.749}});
    EXPECT_GT(redness(floats, view, gacrux), 2);
    EXPECT_LT(redness(floats, view, mimosa), 0.8);
}

TEST_F(RealSky, ShowsThePlough) {
    const View view = {187, 55, 45};
    const std::vector<float> floats = render(view);
    const NamedStar dubhe = {"Dubhe", 165.932, 61.751};
    expect_stars(floats, view,
                 {dubhe,
                  {"Merak", 165.460, 56.382},
                  {"Phecda", 178.458, 53.695},
                  {"Megrez", 183.857, 57.033},
                  {"Alioth", 193.507, 55.960},
                  {"Mizar", 200.981, 54.925},
                  {"Alkaid", 206.885, 49.313}});
    EXPECT_GT(redness(floats, view, dubhe), 1.2);
}
