// SPDX-License-Identifier: BSD-3-Clause

// Nothing is allocated per star.
#include "core/xception.h"
#include "tests/core/heap_watch.h"
#include "tests/stars/render.h"

using namespace stars_test;

namespace {

// Three samples of a camera that turns.
Array<camera> turning() {
    return cameras({make_camera(turn_about_y(0)), make_camera(turn_about_y(0.5)),
                    make_camera(turn_about_y(1))});
}

StarRendererData every_step() {
    StarRendererData data = plain_data(32);
    data.bias_exponent = 0.5;
    data.threed = true;
    return data;
}

// A picture that is drawn at once, and one that is drawn tile by tile.
const int sizes[][2] = {{32, 32}, {1100, 130}};

struct Rendering {
    const StarRendererData data = every_step();
    const Array<camera> cams = turning();
    CountingInput input;
    Picture picture;
    StarRenderer renderer;

    Rendering(int count, const int* size)
        : input(std::vector<star>(size_t(count), star_ahead()), "VELMORA2"),
          picture(size[0], size[1]), renderer(data, picture.fb, input, cams) {}
};

// How often drawing `count` stars all at once asks for memory.
int requests_for(int count, const int* size) {
    Rendering rendering(count, size);
    bool drew = false;
    HeapWatch watch;
    rendering.renderer.render_all(drew);
    watch.stop();
    EXPECT_TRUE(drew);
    return watch.requests();
}

} // namespace

TEST(RenderAllocation, IsNoneForAStar) {
    Rendering rendering(20, sizes[0]);
    bool drew = false;
    HeapWatch watch;
    while (rendering.renderer.render_star(drew)) {
    }
    watch.stop();
    EXPECT_TRUE(drew);
    EXPECT_EQ(watch.requests(), 0);
}

TEST(RenderAllocation, DoesNotGrowWithTheStars) {
    for (const int* size : {sizes[0], sizes[1]})
        EXPECT_EQ(requests_for(17000, size), requests_for(5, size)) << size[0];
}

// What a picture drawn by tiles needs is asked for before a record is taken: when it is not there
// the call throws, nothing is drawn or lost, and the same call later draws everything.
TEST(RenderAllocation, ThatFailsLeavesEveryStarToBeDrawn) {
    Rendering whole(500, sizes[1]);
    bool drew = false;
    whole.renderer.render_all(drew);
    EXPECT_TRUE(drew);
    const int requests = requests_for(500, sizes[1]);
    EXPECT_EQ(requests, 4);
    for (int n = 1; n <= requests; n++) {
        Rendering rendering(500, sizes[1]);
        drew = false;
        {
            HeapWatch watch;
            watch.refuse(n);
            EXPECT_THROW(rendering.renderer.render_all(drew), StrXception) << n;
        }
        EXPECT_FALSE(drew) << n;
        EXPECT_EQ(rendering.renderer.counts().read, 0u) << n;
        EXPECT_TRUE(rendering.picture.is_black()) << n;

        rendering.renderer.render_all(drew);
        EXPECT_TRUE(drew) << n;
        EXPECT_EQ(rendering.renderer.counts().drawn, 500u) << n;
        EXPECT_TRUE(same_bits(rendering.picture, whole.picture)) << n;
    }
}
