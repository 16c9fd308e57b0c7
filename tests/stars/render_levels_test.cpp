// SPDX-License-Identifier: BSD-3-Clause

// Whole renders at every level: the same bytes, the same counts, star by star or all at once, and
// by tiles or not; and the plain reading's picture.
#include "stars/accuracy.h"
#include "tests/special_values.h"
#include "tests/stars/dice.h"
#include "tests/stars/kernels.h"
#include "tests/stars/render.h"

#include <memory>
#include <stdexcept>

using namespace stars_test;
using namespace velmora;
using namespace velmora_test::doubles;

namespace {

struct Scene {
    int width, height;
    Layout layout;
    StarRendererData data;
    std::vector<camera> cameras;
    std::vector<star> stars;
    bool version2;
    bool covered;
};

struct Rendered {
    std::unique_ptr<Picture> picture;
    bool drew;
    RenderCounts counts;
};

StarRendererData some_data(Dice& dice, int width, int height) {
    StarRendererData data = plain_data(width);
    const double reach = dice.log_between(0.1, 3);
    data.left = -reach * dice.between(0.5, 1.5);
    data.right = reach * dice.between(0.5, 1.5);
    data.bottom = -reach * height / width;
    data.top = reach * height / width;
    data.star_size = dice.log_between(0.3, 6) * 2000 / width;
    data.spot_width = data.star_size * (dice.below(3) ? 1 : dice.log_between(0.5, 2));
    data.lum_threshold = dice.below(3) ? 0 : dice.between(-0.1, 0.3);
    data.lum_max = dice.below(4) ? dice.log_between(0.1, 10) : 1e30;
    data.brightness = dice.log_between(0.01, 30);
    data.saturation = dice.between(0, 1.5);
    data.bias_exponent = dice.below(2) ? 1 : dice.between(0.3, 3);
    data.tint_strength = dice.below(2) ? 0 : dice.between(0, 1);
    data.parallax = dice.below(2) ? 100 : dice.between(-5, 40);
    for (int k = 0; k < 3; k++)
        data.tint_color[k] = float(dice.between(0, 1));
    data.projection = static_cast<op_stars_projection>(dice.below(3));
    data.lines = static_cast<op_stars_lines>(dice.below(6) ? 0 : dice.below(3));
    data.threed = dice.below(2) != 0;
    return data;
}

star some_star(Dice& dice) {
    // One after the other, since compilers take arguments in different orders.
    const double distance = dice.between(-1, 5);
    const int blue = dice.below(256), green = dice.below(256), red = dice.below(256);
    const float flux = float(dice.log_between(1e-4, 10));
    const double dec = dice.between(-90, 90), ra = dice.between(0, 360);
    star s = make_star(ra, dec, flux, red, green, blue, distance);
    if (dice.below(2)) { // where the cameras look
        s.ra = dice.between(40, 140);
        s.dec = dice.between(-40, 40);
    }
    if (dice.below(25) == 0) {
        static const double bad[] = {not_a_number, infinity, -infinity, 1e300,
                                     -1e38,        1e7,      1e-320,    0};
        double* const numbers[] = {&s.ra, &s.dec, &s.distance};
        const int field = dice.below(4);
        const double value = bad[dice.below(8)];
        if (field == 3)
            s.flux = float(value);
        else
            *numbers[field] = value;
    }
    return s;
}

Scene some_scene(unsigned seed) {
    Dice dice(seed);
    Scene scene;
    static const int sizes[][2] = {{1, 1}, {1, 40}, {70, 1}, {17, 300}, {331, 420}, {600, 400}};
    const int kind = dice.below(16);
    scene.width = kind < 6 ? sizes[kind][0] : 8 + dice.below(90);
    scene.height = kind < 6 ? sizes[kind][1] : 8 + dice.below(70);
    scene.layout = dice.below(4) ? INTERLEAVED : static_cast<Layout>(dice.below(4));
    scene.data = some_data(dice, scene.width, scene.height);
    const double turn = dice.between(-30, 30);
    const double moves = dice.below(3) ? dice.between(-1, 1) : dice.between(-40, 40);
    for (int i = dice.below(2) ? 0 : dice.below(5); i >= 0; i--) {
        DblMatrix4 m = turn_about_y(turn + i * moves);
        for (int j = 0; j < 3; j++)
            m(3, j) = dice.between(-0.3, 0.3);
        scene.cameras.push_back(make_camera(m, dice.between(0.4, 2)));
    }
    const int count = dice.below(200);
    for (int i = 0; i < count; i++)
        scene.stars.push_back(some_star(dice));
    scene.version2 = dice.below(3) != 0;
    scene.covered = dice.below(3) == 0;
    return scene;
}

Rendered render_at(KernelLevel level, const Scene& scene, bool star_by_star = false) {
    const WithKernels kernels(level);
    Rendered rendered;
    rendered.picture.reset(new Picture(scene.width, scene.height, scene.layout));
    if (scene.covered) {
        static const float alphas[] = {0.5f, 1, 2, -1};
        for (int y = 0; y < scene.height; y++)
            for (int x = 0; x < scene.width; x++)
                if ((x / 3 + y / 2) % 5 == 0)
                    rendered.picture->cover(x, y, alphas[(x + y) % 4]);
    }
    CountingInput input(scene.stars, scene.version2 ? "VELMORA2" : "VELMORA1");
    const Array<camera> cams = cameras(scene.cameras);
    StarRenderer renderer(scene.data, rendered.picture->fb, input, cams);
    rendered.drew = false;
    if (star_by_star)
        while (renderer.render_star(rendered.drew)) {
        }
    else
        renderer.render_all(rendered.drew);
    rendered.counts = renderer.counts();
    EXPECT_TRUE(rendered.picture->surroundings_intact());
    return rendered;
}

void expect_same(const Rendered& a, const Rendered& b, const std::string& name) {
    EXPECT_EQ(a.drew, b.drew) << name;
    EXPECT_EQ(a.counts.read, b.counts.read) << name;
    EXPECT_EQ(a.counts.kept, b.counts.kept) << name;
    EXPECT_EQ(a.counts.drawn, b.counts.drawn) << name;
    EXPECT_EQ(a.counts.pixels, b.counts.pixels) << name;
    ASSERT_TRUE(same_bits(*a.picture, *b.picture)) << name;
}

// The pictures of both readings are as close as their accuracies add up to. Places are rounded to
// floats, and those of the fast kernels can be the neighbouring ones: far from the image, where the
// ends of the longest streaks are, by parts of a pixel. Such streaks are faint.
void expect_like(const Rendered& plain, const Rendered& fast, const Accuracy& stated,
                 const std::string& name) {
    EXPECT_EQ(plain.drew, fast.drew) << name;
    EXPECT_EQ(plain.counts.read, fast.counts.read) << name;
    EXPECT_EQ(plain.counts.kept, fast.counts.kept) << name;
    // Each counts what it added itself: beside short streaks of wide spots the plain reading's two
    // error functions can cancel where the sum of spots does not.
    EXPECT_NEAR(double(plain.counts.drawn), double(fast.counts.drawn), 1) << name;
    double brightest = 0, worst = 0;
    for (int y = 0; y < plain.picture->fb.height; y++)
        for (int x = 0; x < plain.picture->fb.width; x++)
            for (int p = 0; p < 3; p++) {
                const double a = plain.picture->at(p, x, y), b = fast.picture->at(p, x, y);
                ASSERT_EQ(std::isfinite(a), std::isfinite(b)) << name << " at " << x << ", " << y;
                if (std::isfinite(a)) {
                    brightest = std::max(brightest, std::fabs(a));
                    worst = std::max(worst, std::fabs(a - b));
                }
            }
    EXPECT_LE(worst, (stated.fast + stated.plain) * brightest) << name;
}

} // namespace

TEST(RenderLevels, GiveTheSameBytes) {
    for (unsigned seed = 0; seed < 320; seed++) {
        const Scene scene = some_scene(seed);
        const std::string name = "scene " + std::to_string(seed);
        const Rendered first = render_at(KernelLevel::sse2, scene);
        for (KernelLevel level : fast_levels())
            if (level != KernelLevel::sse2)
                expect_same(first, render_at(level, scene), name + kernel_level_name(level));
        expect_same(first, render_at(best_kernel_level(), scene, true), name + ", star by star");
        expect_like(render_at(KernelLevel::plain, scene), first,
                    scene.cameras.size() > 1 ? streak_accuracy : spot_accuracy, name + ", plain");
    }
}

TEST(RenderLevels, GiveTheSameBytesIntoTheLargestPictures) {
    Scene scene = some_scene(1);
    scene.width = 4096;
    scene.height = 2160;
    scene.layout = INTERLEAVED;
    scene.covered = false;
    Dice dice(3);
    scene.data = plain_data(4096, 2.3);
    scene.data.bottom = -0.5;
    scene.data.top = 0.5;
    scene.cameras = {make_camera(turn_about_y(0)), make_camera(turn_about_y(0.5))};
    scene.stars.clear();
    for (int i = 0; i < 2000; i++)
        scene.stars.push_back(some_star(dice));
    const Rendered first = render_at(KernelLevel::sse2, scene);
    EXPECT_TRUE(first.drew);
    expect_same(first, render_at(best_kernel_level(), scene), "widest");
    expect_same(first, render_at(best_kernel_level(), scene, true), "star by star");
}

// More draws than the list holds at a time.
TEST(RenderLevels, DrawManyStarsAsStarByStar) {
    Scene scene = some_scene(1);
    Dice dice(4);
    scene.width = 600;
    scene.height = 240;
    scene.layout = INTERLEAVED;
    scene.covered = false;
    scene.data = plain_data(600, 1);
    scene.cameras = {make_camera(), make_camera(turn_about_y(0.2)), make_camera(turn_about_y(0.4))};
    scene.stars.clear();
    for (int i = 0; i < 40000; i++)
        scene.stars.push_back(make_star(dice.between(60, 120), dice.between(-30, 30),
                                        float(dice.between(1e-4, 1e-3)), 255, 200, 100));
    expect_same(render_at(best_kernel_level(), scene), render_at(best_kernel_level(), scene, true),
                "many");
}

// Every star on a black picture of its own; wide spots that move by little are what readings
// differ over.
TEST(RenderLevels, CountTheStarsThatAddedLight) {
    Dice dice(5);
    Scene scene = some_scene(1);
    scene.width = 530;
    scene.height = 260;
    scene.layout = INTERLEAVED;
    scene.covered = false;
    scene.data = plain_data(scene.width, 60);
    scene.data.left = scene.data.bottom = -0.1;
    scene.data.right = scene.data.top = 0.1;
    scene.cameras = {make_camera(), make_camera(turn_about_y(1e-6))};
    scene.stars.clear();
    for (int i = 0; i < 60; i++)
        scene.stars.push_back(make_star(dice.between(60, 120), dice.between(-20, 20),
                                        float(dice.log_between(1e-4, 1e4))));
    for (KernelLevel level : {KernelLevel::plain, best_kernel_level()}) {
        u64 lit = 0;
        for (const star& s : scene.stars) {
            Scene alone = scene;
            alone.stars = {s};
            const Rendered one = render_at(level, alone, true);
            const bool has_light = !one.picture->is_black();
            EXPECT_EQ(one.drew, has_light);
            EXPECT_EQ(one.counts.drawn, u64(has_light));
            lit += has_light;
        }
        EXPECT_GT(lit, 6u);
        EXPECT_LT(lit, 54u);
        EXPECT_EQ(render_at(level, scene).counts.drawn, lit);
        EXPECT_EQ(render_at(level, scene, true).counts.drawn, lit);
    }
}

// In the third sample the star is so far beside the camera that its path is longer than 1e18 pixels:
// the list leaves that to the plain reading, between paths that it takes.
TEST(RenderLevels, CountAStarOnceThatIsDrawnBothWays) {
    Scene scene = some_scene(1);
    scene.width = 530;
    scene.height = 260;
    scene.layout = INTERLEAVED;
    scene.covered = false;
    scene.version2 = false;
    scene.data = plain_data(scene.width, 3);
    scene.data.projection = OP_STARS_PERSPECTIVE;
    scene.cameras.clear();
    for (double turn : {0.0, 1.0, 0.0, 2.0, 3.0})
        scene.cameras.push_back(make_camera(turn_about_y(turn)));
    // x' = -1, z' = 1e-13: a focal length of 1000 makes that 265 * 1e16 pixels.
    const double x = std::cos(double(90 * 0.017453292f)), z = std::sin(double(90 * 0.017453292f));
    DblMatrix4 beside = identity();
    beside(0, 0) = 0;
    beside(2, 0) = -1 / z;
    beside(0, 2) = 1;
    beside(2, 2) = (1e-13 - x) / z;
    scene.cameras[2] = make_camera(beside, 1000);
    scene.stars = {star_ahead(), star_ahead(2)};
    const Rendered listed = render_at(best_kernel_level(), scene);
    EXPECT_EQ(listed.counts.drawn, 2u);
    expect_same(listed, render_at(best_kernel_level(), scene, true), "star by star");
}

namespace {

// An input that fails at one of its records.
class FailingInput : public CountingInput {
public:
    FailingInput(const std::vector<star>& stars, int good) : CountingInput(stars), good(good) {}

    const star* next() override {
        if (taken > good)
            throw std::runtime_error("no such record");
        return CountingInput::next();
    }

private:
    int good;
};

} // namespace

TEST(RenderLevels, DrawWhatCameBeforeAFailure) {
    const std::vector<star> stars = {make_star(80, 0, 1), make_star(90, 5, 1), make_star(95, 0, 1)};
    const std::vector<star> two(stars.begin(), stars.begin() + 2);
    for (int width : {40, 500}) { // without tiles and with
        const StarRendererData data = plain_data(width);
        const Array<camera> cams = cameras({make_camera()});
        Picture expected(width, 300), picture(width, 300);
        EXPECT_TRUE(render(data, two, expected));
        FailingInput input(stars, 2);
        StarRenderer renderer(data, picture.fb, input, cams);
        bool drew = false;
        EXPECT_THROW(renderer.render_all(drew), std::runtime_error);
        EXPECT_TRUE(drew);
        EXPECT_EQ(renderer.counts().read, 2u);
        EXPECT_EQ(renderer.counts().drawn, 2u);
        EXPECT_TRUE(same_bits(picture, expected)) << width;
    }
}
