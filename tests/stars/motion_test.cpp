// SPDX-License-Identifier: BSD-3-Clause

// The segments that a star leaves from camera sample to camera sample.
#include "stars/plain/shading.h"
#include "stars/projection.h"
#include "tests/stars/render.h"

#include <cmath>

using namespace stars_test;

namespace {

// The place of the star ahead in a 64 x 64 image, seen by a camera turned by `degrees`.
Vector2 turned_position(double degrees, bool& visible) {
    const VectorN<double, 3> d = velmora::scene_direction(star_ahead());
    Vector2 out;
    visible = world_to_screen(d[0], d[1], d[2], 0, turn_about_y(degrees), OP_STARS_HEMISPHERICAL,
                              64, 64, -1, 1, -1, 1, out);
    return out;
}

} // namespace

TEST(Motion, DrawsASegmentWhenEitherOfItsEndsIsVisible) {
    static const struct {
        std::vector<double> turns; // camera turns; beyond 90 degrees the star is behind
        std::vector<int> segments; // those that are drawn
    } table[] = {
        {{0, 20}, {1}},           {{120, 20}, {1}},        {{20, 120}, {1}},
        {{120, 150}, {}},         {{10, 120, 150}, {1}},   {{150, 120, 10}, {2}},
        {{120, 10, 150}, {1, 2}}, {{10, 120, 20}, {1, 2}}, {{0, 100, 110, 30, 40}, {1, 3, 4}},
    };
    for (const auto& row : table) {
        std::vector<camera> list;
        for (double turn : row.turns)
            list.push_back(make_camera(turn_about_y(turn)));
        CountingInput input({star_ahead()});
        const StarRendererData data = plain_data(64);
        Picture picture(64, 64), expected(64, 64);
        const bool drew = render(data, input, list, picture);
        EXPECT_EQ(drew, !row.segments.empty());
        const float size = float(data.star_size * 0.0005 * 64);
        const float amplitude = 4.0f / float(list.size() - 1);
        for (int i : row.segments) {
            bool visible;
            const Vector2 from = turned_position(row.turns[size_t(i - 1)], visible);
            const Vector2 to = turned_position(row.turns[size_t(i)], visible);
            op_star_streak(expected.fb, from, to, amplitude,
                           velmora::shaded_color(star_ahead(), data), size, size,
                           OP_STARS_LINES_ALL);
        }
        EXPECT_TRUE(same_bits(picture, expected)) << row.turns.size() << " cameras";
    }
}

TEST(Motion, StartsAtTheInvisibleFirstPosition) {
    bool visible;
    const Vector2 from = turned_position(-150, visible);
    ASSERT_FALSE(visible);
    const Vector2 to = turned_position(10, visible);
    ASSERT_TRUE(visible);
    CountingInput input({star_ahead()});
    Picture picture(64, 64);
    EXPECT_TRUE(render(plain_data(64), input,
                       {make_camera(turn_about_y(-150)), make_camera(turn_about_y(10))}, picture));
    // Both ends and the way between them are lit, the far side of each end is not.
    const int y = 32, low = int(std::min(from[0], to[0])), high = int(std::max(from[0], to[0])) + 1;
    for (int x = low; x <= high; x++)
        EXPECT_GT(picture.red(x, y), 0) << x;
    EXPECT_EQ(picture.red(low - 12, y), 0);
    EXPECT_EQ(picture.red(high + 12, y), 0);
}

TEST(Motion, DrawsNothingForOneCameraThatDoesNotSeeTheStar) {
    CountingInput input({star_ahead()});
    Picture picture(64, 64);
    EXPECT_FALSE(render(plain_data(64), input, {make_camera(turn_about_y(100))}, picture));
    EXPECT_TRUE(picture.is_black());
}

// A star that crosses the image carries the light of the spot it is at rest, however its path is
// cut. Cut off at 1/6250 of unit intensity; 4 / 16 of the peak per segment keeps k above 2.7, so
// 3e-4 is what may be missing.
TEST(Motion, CarriesTheSameLightHoweverTheShutterIsCut) {
    Picture still(160, 64);
    StarRendererData data = plain_data(160, 2);
    data.left = -2.5;
    data.right = 2.5;
    CountingInput at_rest({star_ahead()});
    render(data, at_rest, {make_camera()}, still);
    for (int segments : {1, 2, 5, 16}) {
        std::vector<camera> list;
        for (int i = 0; i <= segments; i++)
            list.push_back(make_camera(turn_about_y(-30 + 60.0 * i / segments)));
        CountingInput input({star_ahead()});
        Picture moving(160, 64);
        EXPECT_TRUE(render(data, input, list, moving));
        EXPECT_NEAR(moving.total(0) / still.total(0), 1, 3e-4) << segments;
    }
}

TEST(Motion, LosesAStarOnTheAzimuthalAxis) {
    // (0, 1, 0) exactly on the axis of a camera that looks up along y: NaN positions, no light.
    DblMatrix4 up = {{0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 1}};
    StarRendererData data = plain_data(32);
    data.projection = OP_STARS_AZIMUTHAL_EQUIDISTANT;
    CountingInput input({make_star(0, 45, 1), make_star(0, 45, 1)});
    Picture picture(32, 32);
    EXPECT_FALSE(render(data, input, {make_camera(up)}, picture));
    CountingInput again({make_star(0, 45, 1)});
    EXPECT_FALSE(render(data, again, {make_camera(up), make_camera(turn_about_y(0))}, picture))
        << "a segment with such an end";
    EXPECT_TRUE(picture.is_black());
}
