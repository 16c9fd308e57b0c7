// SPDX-License-Identifier: BSD-3-Clause

// Which engine draws a renderer's stars: the level given, or the process's default.
#include "tests/stars/kernels.h"
#include "tests/stars/picture.h"
#include "tests/stars/sky.h"

using namespace stars_test;
using namespace velmora;

namespace {

// A few stars over the image, in three samples.
const std::vector<star> sky = {make_star(91, 1, 0.3f), make_star(88, -2, 2),
                               make_star(90.5, 0.25, 0.01f), make_star(270, 0, 1)};

struct Rendered {
    Picture picture{60, 40};
    RenderCounts counts;
    bool drew = false;
};

template <class... Level>
void render(Rendered& rendered, Level... level) {
    CountingInput input(sky);
    const StarRendererData data = plain_data(60);
    const Array<camera> view =
        cameras({make_camera(), make_camera(turn_about_y(2)), make_camera(turn_about_y(5))});
    StarRenderer renderer(data, rendered.picture.fb, input, view, level...);
    renderer.render_all(rendered.drew);
    rendered.counts = renderer.counts();
}

} // namespace

TEST(Engine, IsTheDefaultLevelsUnlessALevelIsGiven) {
    Rendered plain, fast;
    render(plain, KernelLevel::plain);
    render(fast, best_kernel_level());
    ASSERT_FALSE(same_bits(plain.picture, fast.picture)) << "the two can be told apart";
    {
        const WithKernels kernels(KernelLevel::plain);
        Rendered by_default, given;
        render(by_default);
        render(given, best_kernel_level());
        EXPECT_TRUE(same_bits(by_default.picture, plain.picture));
        EXPECT_TRUE(same_bits(given.picture, fast.picture));
    }
    Rendered by_default;
    render(by_default);
    EXPECT_TRUE(same_bits(by_default.picture, fast.picture));
}

TEST(Engine, StaysTheRenderersWhenTheDefaultChanges) {
    Rendered plain, kept;
    render(plain, KernelLevel::plain);
    CountingInput input(sky);
    const StarRendererData data = plain_data(60);
    const Array<camera> view =
        cameras({make_camera(), make_camera(turn_about_y(2)), make_camera(turn_about_y(5))});
    StarRenderer renderer(data, kept.picture.fb, input, view, KernelLevel::plain);
    const WithKernels kernels(best_kernel_level());
    renderer.render_all(kept.drew);
    EXPECT_TRUE(same_bits(kept.picture, plain.picture));
}

TEST(Engine, CountsTheSameStarsEitherWay) {
    for (KernelLevel level : {KernelLevel::plain, best_kernel_level()}) {
        Rendered rendered;
        render(rendered, level);
        EXPECT_TRUE(rendered.drew);
        EXPECT_EQ(rendered.counts.read, 4u);
        EXPECT_EQ(rendered.counts.kept, 4u);
        EXPECT_EQ(rendered.counts.drawn, 3u) << "one is behind the camera";
    }
}
