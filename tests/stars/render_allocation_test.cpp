// Nothing is allocated per star.
#include "tests/core/heap_watch.h"
#include "tests/stars/render.h"

using namespace stars_test;

namespace {

// Three samples of a camera that turns.
Array<camera> turning() {
    return cameras({make_camera(turn_about_y(0)), make_camera(turn_about_y(5)),
                    make_camera(turn_about_y(10))});
}

StarRendererData every_step() {
    StarRendererData data = plain_data(32);
    data.bias_exponent = 0.5;
    data.threed = true;
    return data;
}

// How often drawing `count` stars all at once asks for memory.
int requests_for(int count) {
    const StarRendererData data = every_step();
    const Array<camera> cams = turning();
    CountingInput input(std::vector<star>(size_t(count), star_ahead()), "VELMORA2");
    Picture picture(32, 32);
    StarRenderer renderer(data, picture.fb, input, cams);
    bool drew = false;
    HeapWatch watch;
    renderer.render_all(drew);
    watch.stop();
    EXPECT_TRUE(drew);
    return watch.requests();
}

} // namespace

TEST(RenderAllocation, IsNoneForAStar) {
    const StarRendererData data = every_step();
    const Array<camera> cams = turning();
    CountingInput input(std::vector<star>(20, star_ahead()), "VELMORA2");
    Picture picture(32, 32);
    StarRenderer renderer(data, picture.fb, input, cams);
    bool drew = false;
    HeapWatch watch;
    while (renderer.render_star(drew)) {
    }
    watch.stop();
    EXPECT_TRUE(drew);
    EXPECT_EQ(watch.requests(), 0);
}

TEST(RenderAllocation, DoesNotGrowWithTheStars) {
    EXPECT_EQ(requests_for(5000), requests_for(5));
}
