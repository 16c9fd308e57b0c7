// SPDX-License-Identifier: BSD-3-Clause

// Record after record: what is taken, when the loop ends, and what it says.
#include "tests/message_of.h"
#include "tests/special_values.h"
#include "tests/stars/dice.h"
#include "tests/stars/render.h"

#include <cmath>

using namespace stars_test;
using namespace velmora_test::doubles;

namespace {

// The star ahead at distance 1, with its ra, dec, flux or distance replaced.
star star_with(int field, double value) {
    star s = star_ahead();
    s.distance = 1;
    switch (field) {
    case 0:
        s.ra = value;
        break;
    case 1:
        s.dec = value;
        break;
    case 2:
        s.flux = float(value);
        break;
    default:
        s.distance = value;
    }
    return s;
}

} // namespace

TEST(RenderLoop, TakesOneRecordPerCall) {
    CountingInput input({star_ahead(), star_ahead(), star_ahead()});
    Picture picture(16, 16);
    const StarRendererData data = plain_data(16);
    const Array<camera> cams = cameras({make_camera()});
    StarRenderer renderer(data, picture.fb, input, cams);
    bool drew = false;
    EXPECT_TRUE(renderer.render_star(drew));
    EXPECT_EQ(input.taken, 2) << "the header and one star";
    EXPECT_TRUE(renderer.render_star(drew));
    EXPECT_FALSE(renderer.render_star(drew)) << "the third is the last one";
    EXPECT_EQ(input.taken, 4);
    EXPECT_FALSE(renderer.render_star(drew));
    EXPECT_EQ(input.taken, 4) << "nothing is left to take";
}

TEST(RenderLoop, EndsAtOnceWithoutStars) {
    for (u32 count : {0u, 1u}) {
        CountingInput input({star_ahead()});
        input.count = count;
        Picture picture(16, 16);
        const StarRendererData data = plain_data(16);
        const Array<camera> cams = cameras({make_camera()});
        StarRenderer renderer(data, picture.fb, input, cams);
        bool drew = false;
        EXPECT_FALSE(renderer.render_star(drew));
        renderer.render_all(drew);
        EXPECT_FALSE(drew);
        EXPECT_EQ(input.taken, 1);
    }
}

TEST(RenderLoop, LooksAtTheCountAfreshForEveryStar) {
    CountingInput input({star_ahead(), star_ahead(), star_ahead()});
    Picture picture(16, 16);
    const StarRendererData data = plain_data(16);
    const Array<camera> cams = cameras({make_camera()});
    StarRenderer renderer(data, picture.fb, input, cams);
    bool drew = false;
    input.count = 2;
    EXPECT_FALSE(renderer.render_star(drew));
    input.count = 4;
    EXPECT_TRUE(renderer.render_star(drew));
    EXPECT_FALSE(renderer.render_star(drew));
    EXPECT_EQ(input.taken, 4);
}

TEST(RenderLoop, LooksAtParametersAndImageAfreshForEveryStar) {
    CountingInput input(std::vector<star>(5, star_ahead()));
    Picture first(16, 16), second(16, 16);
    StarFramebuffer fb = first.fb;
    StarRendererData data = plain_data(16);
    const Array<camera> cams = cameras({make_camera()});
    StarRenderer renderer(data, fb, input, cams);
    bool drew = false;
    data.lum_threshold = 2;
    EXPECT_TRUE(renderer.render_star(drew));
    EXPECT_FALSE(drew);
    data.lum_threshold = 0;
    data.saturation = 0;
    EXPECT_TRUE(renderer.render_star(drew));
    EXPECT_TRUE(drew);
    EXPECT_FLOAT_EQ(first.red(8, 8), 2) << "half of 4";
    fb = second.fb;
    EXPECT_TRUE(renderer.render_star(drew));
    EXPECT_FLOAT_EQ(first.red(8, 8), 2);
    EXPECT_FLOAT_EQ(second.red(8, 8), 2);
    data.brightness = 0;
    EXPECT_FALSE(renderer.render_star(drew));
    EXPECT_EQ(input.taken, 4) << "two of the five are left";
}

TEST(RenderLoop, TakesCamerasSpotAndIntensityOnceAtTheStart) {
    CountingInput input({star_ahead()});
    Picture picture(16, 16), expected(16, 16);
    StarRendererData data = plain_data(16);
    render(data, {star_ahead()}, expected);
    Array<camera> cams = cameras({make_camera()});
    StarRenderer renderer(data, picture.fb, input, cams);
    cams[0].matrix = turn_about_y(20);
    data.brightness = 2;
    data.spot_width = data.star_size = 1;
    bool drew = false;
    renderer.render_all(drew);
    EXPECT_TRUE(same_bits(picture, expected));
}

TEST(RenderLoop, ReadsNoRecordAtBrightnessZero) {
    for (double brightness : {0.0, -0.0}) {
        StarRendererData data = plain_data(16);
        data.brightness = brightness;
        CountingInput input({star_ahead(), star_ahead()});
        Picture picture(16, 16);
        const Array<camera> cams = cameras({make_camera()});
        StarRenderer renderer(data, picture.fb, input, cams);
        bool drew = false;
        EXPECT_FALSE(renderer.render_star(drew));
        renderer.render_all(drew);
        EXPECT_FALSE(drew);
        EXPECT_EQ(input.taken, 1) << "the header";
        EXPECT_TRUE(picture.is_black());
    }
}

TEST(RenderLoop, ReadsEveryRecordAtAnyOtherBrightness) {
    for (double brightness : {-1.0, 1e-300, not_a_number}) { // none of them draws
        StarRendererData data = plain_data(16);
        data.brightness = brightness;
        CountingInput input({star_ahead(), star_ahead()});
        Picture picture(16, 16);
        EXPECT_FALSE(render(data, input, {make_camera()}, picture));
        EXPECT_EQ(input.taken, 3) << brightness;
        EXPECT_TRUE(picture.is_black());
    }
}

TEST(RenderLoop, SetsDrewAndNeverClearsIt) {
    CountingInput input({make_star(-90, 0, 1), star_ahead(), make_star(-90, 0, 1)});
    Picture picture(16, 16);
    const StarRendererData data = plain_data(16);
    const Array<camera> cams = cameras({make_camera()});
    StarRenderer renderer(data, picture.fb, input, cams);
    bool drew = false;
    renderer.render_star(drew);
    EXPECT_FALSE(drew) << "behind the camera";
    renderer.render_star(drew);
    EXPECT_TRUE(drew);
    renderer.render_star(drew);
    EXPECT_TRUE(drew);
}

TEST(RenderLoop, LeavesDrewAloneWhenThereIsNothingToDo) {
    CountingInput input({});
    Picture picture(16, 16);
    const StarRendererData data = plain_data(16);
    const Array<camera> cams = cameras({make_camera()});
    StarRenderer renderer(data, picture.fb, input, cams);
    bool drew = true;
    renderer.render_all(drew);
    EXPECT_FALSE(renderer.render_star(drew));
    EXPECT_TRUE(drew);
}

TEST(RenderLoop, DrawsTheSameBitsAllAtOnceAndStarByStar) {
    Dice dice(20240611);
    std::vector<star> stars;
    for (int i = 0; i < 3000; i++)
        stars.push_back(make_star(dice.between(0, 360), dice.between(-90, 90),
                                  float(std::exp(dice.between(-9, 2))), dice.below(256),
                                  dice.below(256), dice.below(256), dice.between(-1, 3)));
    stars[17].ra = not_a_number;
    stars[18].flux = float(not_a_number);
    stars[19].dec = infinity;
    stars[20].flux = float(infinity);
    for (op_stars_projection p :
         {OP_STARS_PERSPECTIVE, OP_STARS_HEMISPHERICAL, OP_STARS_AZIMUTHAL_EQUIDISTANT})
        for (int segments : {0, 1, 3}) {
            StarRendererData data = plain_data(48, 1.5);
            data.projection = p;
            data.threed = true;
            data.bias_exponent = 0.7;
            data.lum_max = 3;
            data.tint_strength = 0.2;
            data.tint_color = {{1, 0.5f, 0.25f}};
            std::vector<camera> list;
            for (int i = 0; i <= segments; i++) {
                DblMatrix4 m = turn_about_y(2.0 * i);
                m(3, 0) = 0.05 * i;
                list.push_back(make_camera(m));
            }
            const Array<camera> cams = cameras(list);
            Picture at_once(48, 40), one_by_one(48, 40);
            CountingInput first(stars, "VELMORA2"), second(stars, "VELMORA2");
            bool drew_at_once = false, drew_one_by_one = false;
            StarRenderer(data, at_once.fb, first, cams).render_all(drew_at_once);
            StarRenderer renderer(data, one_by_one.fb, second, cams);
            while (renderer.render_star(drew_one_by_one)) {
            }
            EXPECT_TRUE(drew_at_once);
            EXPECT_TRUE(drew_one_by_one);
            EXPECT_EQ(first.taken, second.taken);
            EXPECT_TRUE(same_bits(at_once, one_by_one)) << p << ", " << segments;
        }
}

TEST(RenderLoop, DrawsAllThatIsLeftAfterSomeStarsWereDrawn) {
    const std::vector<star> stars = {make_star(80, 0, 1), make_star(90, 5, 1), make_star(95, 0, 1)};
    const StarRendererData data = plain_data(24);
    const Array<camera> cams = cameras({make_camera()});
    Picture whole(24, 24), parts(24, 24);
    EXPECT_TRUE(render(data, stars, whole));
    CountingInput input(stars);
    StarRenderer renderer(data, parts.fb, input, cams);
    bool drew = false;
    EXPECT_TRUE(renderer.render_star(drew));
    renderer.render_all(drew);
    EXPECT_EQ(input.taken, 4);
    EXPECT_TRUE(same_bits(whole, parts));
}

TEST(RenderLoop, AddsStarsInFileOrder) {
    // In float (tiny + tiny) + one is not (one + tiny) + tiny: both orders are told apart.
    const float one = 0.25f, tiny = std::ldexp(0.25f, -24) * 0.99f;
    StarRendererData data = plain_data(32);
    Picture bright_first(32, 32), bright_last(32, 32);
    data.brightness = 4096; // so that the faint ones are still drawn
    data.saturation = 0;    // exactly half the amplitude in every channel
    render(data, {star_ahead(one), star_ahead(tiny), star_ahead(tiny)}, bright_first);
    render(data, {star_ahead(tiny), star_ahead(tiny), star_ahead(one)}, bright_last);
    EXPECT_EQ(bright_first.red(16, 16), 2048);
    EXPECT_GT(bright_last.red(16, 16), 2048);
}

TEST(RenderLoop, DrawsARecordOfTheCallers) {
    CountingInput input({});
    Picture picture(32, 32);
    const StarRendererData data = plain_data(32);
    const Array<camera> cams = cameras({make_camera()});
    StarRenderer renderer(data, picture.fb, input, cams);
    const star ahead = star_ahead(), behind = make_star(-90, 0, 1);
    EXPECT_TRUE(renderer.do_render_star(&ahead));
    EXPECT_FALSE(renderer.do_render_star(&behind));
    EXPECT_FLOAT_EQ(picture.red(16, 16), 4);
}

TEST(RenderLoop, PassesTheRowFilterOn) {
    StarRendererData data = plain_data(32, 3);
    data.lines = OP_STARS_LINES_EVEN;
    Picture picture(32, 32);
    EXPECT_TRUE(render(data, {star_ahead()}, picture));
    EXPECT_GT(picture.red(16, 16), 0);
    EXPECT_TRUE(picture.row_is_black(15));
    EXPECT_TRUE(picture.row_is_black(17));
    EXPECT_GT(picture.red(16, 18), 0);
}

TEST(RenderLoop, SurvivesRecordsThatAreNoNumbers) {
    for (double bad : {not_a_number, infinity, -infinity, 1e300, -1e300, 1e38, 1e-320})
        for (int field = 0; field < 4; field++)
            for (op_stars_projection p :
                 {OP_STARS_PERSPECTIVE, OP_STARS_HEMISPHERICAL, OP_STARS_AZIMUTHAL_EQUIDISTANT})
                for (size_t samples : {1, 2, 3}) {
                    const star s = star_with(field, bad);
                    StarRendererData data = plain_data(16);
                    data.projection = p;
                    data.threed = true;
                    data.bias_exponent = 0.5;
                    CountingInput input({s, s}, "VELMORA2");
                    Picture picture(16, 16, GUARDED);
                    EXPECT_NO_THROW(
                        render(data, input, std::vector<camera>(samples, make_camera()), picture));
                    EXPECT_EQ(input.taken, 3);
                    EXPECT_TRUE(picture.surroundings_intact());
                }
}

TEST(RenderLoop, LetsAnUnknownProjectionThrough) {
    StarRendererData data = plain_data(16);
    data.projection = static_cast<op_stars_projection>(9);
    const Array<camera> cams = cameras({make_camera()});
    const char* const message =
        "unknown projection in <bool world_to_screen(double, double, double, double, DblMatrix4, "
        "op_stars_projection, int, int, double, double, double, double, Vector2&)> (stars:290)";
    Picture picture(16, 16);
    CountingInput input({star_ahead(), star_ahead()});
    StarRenderer renderer(data, picture.fb, input, cams);
    bool drew = false;
    EXPECT_EQ(message_of([&] { renderer.render_star(drew); }), message);
    EXPECT_EQ(message_of([&] { renderer.render_all(drew); }), message);
    EXPECT_FALSE(drew);
    data.lum_threshold = 2; // a star that is left out is never projected
    EXPECT_NO_THROW(render(data, {star_ahead()}, picture));
}

// The record is taken, but does not count: the renderer goes on until as many stars as there are
// have been drawn.
TEST(RenderLoop, CountsNoStarWhoseDrawingThrows) {
    StarRendererData data = plain_data(16);
    data.projection = static_cast<op_stars_projection>(9);
    CountingInput input({star_ahead(), star_ahead(), star_ahead(), star_ahead()});
    input.count = 3; // two stars
    const Array<camera> cams = cameras({make_camera()});
    Picture picture(16, 16);
    StarRenderer renderer(data, picture.fb, input, cams);
    bool drew = false;
    EXPECT_THROW(renderer.render_star(drew), StrXception);
    EXPECT_THROW(renderer.render_star(drew), StrXception);
    EXPECT_FALSE(drew);
    data.projection = OP_STARS_HEMISPHERICAL;
    EXPECT_TRUE(renderer.render_star(drew));
    EXPECT_FALSE(renderer.render_star(drew));
    EXPECT_TRUE(drew);
    EXPECT_EQ(input.taken, 1 + 4);
}
