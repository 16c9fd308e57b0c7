// SPDX-License-Identifier: BSD-3-Clause
#include "tests/message_of.h"
#include "tests/stars/picture.h"
#include "tests/stars/sky.h"

#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>

using namespace stars_test;

namespace {

const char* const constructor =
    "StarRenderer::StarRenderer(const StarRendererData&, const StarFramebuffer&, StarInput&, const "
    "Array<camera>&)";

// Peak of the star ahead, of flux 1, in the middle of a 32 x 32 image.
float peak(const StarRendererData& data, const std::vector<camera>& cams = {make_camera()}) {
    Picture picture(32, 32);
    CountingInput input({star_ahead()});
    const Array<camera> list = cameras(cams);
    bool drew = false;
    StarRenderer(data, picture.fb, input, list).render_all(drew);
    return picture.red(16, 16);
}

struct Spot {
    double peak, width, height;
};

// The spot of the star ahead, its sizes taken from how it falls off one pixel beside its peak:
// exp(-1 / size^2). Relative error 3e-6: the middle is met to 4e-6 pixels, the rest is rounding.
Spot measure(const StarRendererData& data, int width, int height) {
    Picture picture(width, height);
    CountingInput input({star_ahead(10)});
    const Array<camera> list = cameras({make_camera()});
    bool drew = false;
    StarRenderer(data, picture.fb, input, list).render_all(drew);
    const int x = width / 2, y = height / 2;
    const double top = picture.red(x, y);
    const auto size = [&](double beside) { return 1 / std::sqrt(-std::log(beside / top)); };
    // The mean of both sides' logarithms takes the middle's offset out.
    return {top / 10, size(std::sqrt(double(picture.red(x + 1, y)) * picture.red(x - 1, y))),
            size(std::sqrt(double(picture.red(x, y + 1)) * picture.red(x, y - 1)))};
}

// How often records were released, for inputs that fail.
struct Released : CountingInput {
    int* releases;
    explicit Released(int* releases) : CountingInput({star_ahead()}), releases(releases) {}
    ~Released() override { ++*releases; }
};

} // namespace

TEST(RendererSetup, HasItsRecordsLaidOutAsTheirFieldsAreListed) {
    static_assert(
        offsetof(StarRendererData, left) == 0 && offsetof(StarRendererData, right) == 8 &&
            offsetof(StarRendererData, bottom) == 16 && offsetof(StarRendererData, top) == 24 &&
            offsetof(StarRendererData, spot_width) == 32 &&
            offsetof(StarRendererData, star_size) == 40 &&
            offsetof(StarRendererData, lum_threshold) == 48 &&
            offsetof(StarRendererData, lum_max) == 56 &&
            offsetof(StarRendererData, brightness) == 64 &&
            offsetof(StarRendererData, saturation) == 72 &&
            offsetof(StarRendererData, bias_exponent) == 80 &&
            offsetof(StarRendererData, tint_strength) == 88 &&
            offsetof(StarRendererData, parallax) == 96 &&
            offsetof(StarRendererData, tint_color) == 104 &&
            offsetof(StarRendererData, projection) == 116 &&
            offsetof(StarRendererData, lines) == 120 && offsetof(StarRendererData, threed) == 124,
        "parameters");
    static_assert(offsetof(camera, matrix) == 0 && offsetof(camera, focal) == 128 &&
                      offsetof(camera, near) == 136 && offsetof(camera, far) == 144 &&
                      sizeof(camera) == 152,
                  "camera samples");
    static_assert(
        offsetof(StarFramebuffer, red) == 0 && offsetof(StarFramebuffer, green) == 8 &&
            offsetof(StarFramebuffer, blue) == 16 && offsetof(StarFramebuffer, alpha) == 24 &&
            offsetof(StarFramebuffer, width) == 32 && offsetof(StarFramebuffer, height) == 36 &&
            offsetof(StarFramebuffer, row_stride) == 40 &&
            offsetof(StarFramebuffer, pixel_stride) == 44,
        "framebuffers");
    static_assert(OP_STARS_PERSPECTIVE == 0 && OP_STARS_HEMISPHERICAL == 1 &&
                      OP_STARS_AZIMUTHAL_EQUIDISTANT == 2 && sizeof(op_stars_projection) == 4,
                  "projections");
    static_assert(OP_STARS_LINES_ALL == 0 && OP_STARS_LINES_EVEN == 1 && OP_STARS_LINES_ODD == 2 &&
                      sizeof(op_stars_lines) == 4,
                  "lines");
}

TEST(RendererSetup, NeedsACamera) {
    Picture picture(8, 8);
    CountingInput input({star_ahead()});
    const Array<camera> none;
    const StarRendererData data = plain_data(8);
    try {
        StarRenderer(data, picture.fb, input, none);
        FAIL() << "nothing was thrown";
    } catch (const AssertXception& thrown) {
        EXPECT_STREQ(thrown.expr, "priv->cams.len() > 0");
        EXPECT_STREQ(thrown.file, "stars");
        EXPECT_EQ(spelled_by_gcc(thrown.function), constructor);
        EXPECT_EQ(thrown.line, 464);
    }
    EXPECT_EQ(input.taken, 0) << "the magic comes after the cameras";
    EXPECT_TRUE(picture.is_black());
}

TEST(RendererSetup, RefusesAnotherMagic) {
    Picture picture(8, 8);
    CountingInput input({star_ahead()}, "VELMORA3");
    const StarRendererData data = plain_data(8);
    const Array<camera> cams = cameras({make_camera()});
    EXPECT_EQ(message_of([&] { StarRenderer(data, picture.fb, input, cams); }),
              std::string("error in star database file in <") + constructor + "> (stars:518)");
    EXPECT_EQ(input.taken, 1);
    EXPECT_TRUE(picture.is_black());
    EXPECT_TRUE(picture.surroundings_intact());
}

TEST(RendererSetup, RefusesAFileWithAnotherMagicAtEveryRender) {
    const ScratchFolder folder;
    const std::string path = folder.write("sky", sky_bytes("NOTSTARS", {star_ahead()}));
    const std::unique_ptr<StarInput> input(op_stars_file_input(path.c_str()));
    Picture picture(8, 8);
    const StarRendererData data = plain_data(8);
    const Array<camera> cams = cameras({make_camera()});
    for (int render = 0; render < 2; render++) {
        EXPECT_EQ(message_of([&] { StarRenderer(data, picture.fb, *input, cams); }),
                  std::string("error in star database file in <") + constructor + "> (stars:518)");
        input->reset();
    }
}

TEST(RendererSetup, ConsumesTheHeaderAndNothingElse) {
    Picture picture(8, 8);
    CountingInput input({star_ahead(), star_ahead()});
    const StarRendererData data = plain_data(8);
    const Array<camera> cams = cameras({make_camera()});
    { const StarRenderer renderer(data, picture.fb, input, cams); }
    EXPECT_EQ(input.taken, 1);
    EXPECT_EQ(input.resets, 0) << "going back is the caller's";
    EXPECT_TRUE(picture.is_black());
}

TEST(RendererSetup, LeavesTheInputToItsOwner) {
    int releases = 0;
    Released input(&releases);
    Picture picture(8, 8);
    const StarRendererData data = plain_data(8);
    const Array<camera> cams = cameras({make_camera()});
    { const StarRenderer renderer(data, picture.fb, input, cams); }
    EXPECT_EQ(releases, 0);
}

TEST(RendererSetup, AcceptsAProjectionThatDrawingRefuses) {
    StarRendererData data = plain_data(8);
    data.projection = static_cast<op_stars_projection>(3);
    Picture picture(8, 8);
    CountingInput input({star_ahead()});
    const Array<camera> cams = cameras({make_camera()});
    StarRenderer renderer(data, picture.fb, input, cams);
    bool drew = false;
    EXPECT_EQ(message_of([&] { renderer.render_star(drew); }).substr(0, 21),
              "unknown projection in");
    EXPECT_FALSE(drew);
}

TEST(RendererSetup, ScalesAFluxOfOneToFourTimesTheBrightness) {
    StarRendererData data = plain_data(32);
    for (double brightness : {0.001, 0.25, 1.0, 3.0}) {
        data.brightness = brightness;
        EXPECT_FLOAT_EQ(peak(data), float(4 * brightness));
    }
    data.brightness = -1;
    EXPECT_EQ(peak(data), 0) << "a negative amplitude draws nothing";
}

// Cameras that do not move leave one spot per segment on top of each other.
TEST(RendererSetup, DividesTheLightAmongTheSegments) {
    const StarRendererData data = plain_data(32);
    const float one = peak(data);
    EXPECT_EQ(peak(data, std::vector<camera>(2, make_camera())), one) << "divided by 1";
    for (int count : {3, 4, 6, 11}) // as many roundings as segments
        EXPECT_NEAR(peak(data, std::vector<camera>(size_t(count), make_camera())), one, 1e-6 * one)
            << count << " cameras";
}

TEST(RendererSetup, DividesByTheSegmentsNotByTheCameras) {
    // Only the first of five segments sees the star; each carries a fifth.
    const StarRendererData data = plain_data(32);
    std::vector<camera> cams(6, make_camera(turn_about_y(180)));
    cams[0] = make_camera();
    Picture picture(32, 32);
    CountingInput input({star_ahead()});
    const Array<camera> list = cameras(cams);
    bool drew = false;
    StarRenderer(data, picture.fb, input, list).render_all(drew);
    EXPECT_TRUE(drew);
    // Behind the camera the star is at the image's middle, too: a spot.
    EXPECT_NEAR(picture.red(16, 16), 4.0 / 5, 1e-5);
}

TEST(RendererSetup, MakesSpotsAsWideAsTwoThousandthsOfTheImage) {
    static const struct {
        double spot_width, star_size;
        int width, height;
    } table[] = {{100, 100, 64, 64}, {90, 40, 64, 64}, {60, 90, 128, 128}, {30, 20, 256, 256}};
    for (const auto& row : table) {
        StarRendererData data = plain_data(row.width);
        data.spot_width = row.spot_width;
        data.star_size = row.star_size;
        const Spot spot = measure(data, row.width, row.height);
        EXPECT_NEAR(spot.width, row.spot_width * 0.0005 * row.width, 2e-5);
        EXPECT_NEAR(spot.height, row.star_size * 0.0005 * row.width, 2e-5);
        EXPECT_NEAR(spot.peak, 4, 1e-5);
    }
}

TEST(RendererSetup, MeasuresBothSizesAgainstTheWidth) {
    StarRendererData data = plain_data(64);
    data.left = -2; // the shape of 64 x 32
    data.right = 2;
    data.spot_width = data.star_size = 62.5;
    const Spot spot = measure(data, 64, 32);
    EXPECT_NEAR(spot.width, 2, 2e-5);
    EXPECT_NEAR(spot.height, 2, 2e-5);
}

TEST(RendererSetup, WidensSpotsForAWindowOfAnotherShape) {
    static const struct {
        double left, right, bottom, top;
        int width, height;
        double factor; // (W / H) / (|right - left| / |bottom - top|)
    } table[] = {
        {-1, 1, -1, 1, 64, 32, 2},     {-1, 1, -1, 1, 32, 64, 0.5}, {-2, 2, -1, 1, 64, 64, 0.5},
        {-1, 1, -2, 2, 64, 64, 2},     {1, -1, 2, -2, 64, 64, 2}, // turned over: the same
        {-1.5, 1.5, -1, 1, 48, 32, 1}, {-3, 3, -1, 1, 96, 64, 0.5},
    };
    for (const auto& row : table) {
        StarRendererData data = plain_data(row.width);
        data.left = row.left;
        data.right = row.right;
        data.bottom = row.bottom;
        data.top = row.top;
        data.spot_width = 3 * 2000.0 / row.width;
        data.star_size = 2 * 2000.0 / row.width;
        const Spot spot = measure(data, row.width, row.height);
        EXPECT_NEAR(spot.width, 3 * row.factor, 5e-5) << row.factor;
        EXPECT_NEAR(spot.height, 2, 2e-5) << row.factor;
        EXPECT_NEAR(spot.peak, 4, 1e-5) << "the light grows with the area";
    }
}

TEST(RendererSetup, DrawsNarrowSpotsOnePixelWideWithLessLight) {
    static const struct {
        double width, height; // asked for, in pixels
        double drawn_w, drawn_h, scale;
    } table[] = {
        {0.5, 2, 1, 2, 0.5}, {2, 0.25, 2, 1, 0.25},           {0.5, 0.25, 1, 1, 0.125},
        {1, 1, 1, 1, 1},     {0.999, 1.001, 1, 1.001, 0.999}, {1e-3, 1.5, 1, 1.5, 1e-3},
    };
    for (const auto& row : table) {
        StarRendererData data = plain_data(64);
        data.spot_width = row.width * 2000 / 64;
        data.star_size = row.height * 2000 / 64;
        const Spot spot = measure(data, 64, 64);
        EXPECT_NEAR(spot.width, row.drawn_w, 2e-5);
        EXPECT_NEAR(spot.height, row.drawn_h, 2e-5);
        EXPECT_NEAR(spot.peak / 4, row.scale, 5e-6 * row.scale);
    }
}

TEST(RendererSetup, DrawsNothingVisibleAtSizeZero) {
    StarRendererData data = plain_data(32);
    data.spot_width = data.star_size = 0;
    EXPECT_EQ(peak(data), 0);
    data.star_size = 50; // one of the two is enough
    EXPECT_EQ(peak(data), 0);
}

TEST(RendererSetup, NeitherStopsNorDrawsAtSizesThatAreNoNumber) {
    StarRendererData data = plain_data(32);
    for (double size :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        data.spot_width = size;
        EXPECT_EQ(peak(data), 0);
    }
    data = plain_data(32);
    data.left = data.right = 0; // a window without width: the factor is infinite
    EXPECT_EQ(peak(data), 0);
}

TEST(RendererSetup, GivesThePerspectiveItsFocalLengthAndNearPlane) {
    // A star 30 degrees off the axis is at focal * tan(30 degrees).
    StarRendererData data = plain_data(64);
    data.projection = OP_STARS_PERSPECTIVE;
    for (double focal : {0.5, 0.866025403784438647, 1.2}) {
        Picture picture(64, 64);
        CountingInput input({make_star(60, 0, 1)});
        const Array<camera> cams = cameras({make_camera(identity(), focal)});
        bool drew = false;
        StarRenderer(data, picture.fb, input, cams).render_all(drew);
        double moment = 0;
        for (int x = 0; x < 64; x++)
            moment += double(picture.red(x, 32)) * x;
        double row = 0;
        for (int x = 0; x < 64; x++)
            row += picture.red(x, 32);
        // The row's centroid, cut off at 1/6250 on grid columns: good to 1e-3 pixels.
        EXPECT_NEAR(moment / row, 32 * (1 + focal / std::sqrt(3.0)), 1e-3) << focal;
    }
}

TEST(RendererSetup, GivesThePerspectiveItsFarPlane) {
    // A far plane nearer than the near one turns depth around: what lies ahead gets a negative one
    // and is dropped. Beyond the near plane, or not above 0, the far plane drops nothing.
    StarRendererData data = plain_data(32);
    data.projection = OP_STARS_PERSPECTIVE;
    const struct {
        double far;
        float peak;
    } cases[] = {{-1, 4}, {0, 4}, {1e-3, 0}, {0.099, 0}, {0.101, 4}, {50, 4}};
    for (const auto& c : cases) {
        camera cam = make_camera();
        cam.far = c.far;
        EXPECT_NEAR(peak(data, {cam}), c.peak, 1e-5) << c.far; // a few last bits of 4
    }
}

TEST(RendererSetup, TakesANegativeFocalLengthForNoPerspective) {
    // P is the identity then: W is w = 0 for stars without distance, and 1 / W infinite.
    StarRendererData data = plain_data(32);
    data.projection = OP_STARS_PERSPECTIVE;
    EXPECT_EQ(peak(data, {make_camera(identity(), -1)}), 0);
    // With a distance of 2, w = 0.5: the star is at (X, Y, Z) / 0.5, in front.
    data.threed = true;
    Picture picture(32, 32);
    CountingInput input({make_star(90, 0, 1, 255, 255, 255, 2)}, "VELMORA2");
    const Array<camera> cams = cameras({make_camera(identity(), -1)});
    bool drew = false;
    StarRenderer(data, picture.fb, input, cams).render_all(drew);
    EXPECT_NEAR(picture.red(16, 16), 4, 1e-5);
}

TEST(RendererSetup, UsesTheMatrixAloneForTheOtherProjections) {
    // Neither a focal length nor planes matter: nothing changes, bit for bit.
    for (op_stars_projection p : {OP_STARS_HEMISPHERICAL, OP_STARS_AZIMUTHAL_EQUIDISTANT}) {
        StarRendererData data = plain_data(32);
        data.projection = p;
        Picture one(32, 32), other(32, 32);
        for (Picture* picture : {&one, &other}) {
            camera c = make_camera(turn_about_y(20), picture == &one ? 1 : -7);
            c.near = picture == &one ? 0.1 : 1e9;
            CountingInput input({star_ahead()});
            const Array<camera> cams = cameras({c});
            bool drew = false;
            StarRenderer(data, picture->fb, input, cams).render_all(drew);
            EXPECT_TRUE(drew);
        }
        EXPECT_TRUE(same_bits(one, other));
    }
}

TEST(RendererSetup, MovesPointsIntoCameraSpaceBeforeItProjects) {
    // matrix × P, not P × matrix: turned by 90 degrees, a star at ra 0 comes to the middle.
    StarRendererData data = plain_data(32);
    data.projection = OP_STARS_PERSPECTIVE;
    Picture picture(32, 32);
    CountingInput input({make_star(0, 0, 1)});
    const Array<camera> cams = cameras({make_camera(turn_about_y(-90), 2.5)});
    bool drew = false;
    StarRenderer(data, picture.fb, input, cams).render_all(drew);
    EXPECT_NEAR(picture.red(16, 16), 4, 1e-4);
}
