// SPDX-License-Identifier: BSD-3-Clause

// The library built without the fast kernels: complete, and drawing.
#include "stars/kernels.h"
#include "stars/stars.h"
#include "tests/stars/picture.h"
#include "tests/stars/sky.h"

using namespace stars_test;
using namespace velmora;

TEST(PlainOnly, HasTheOneLevel) {
    EXPECT_EQ(best_kernel_level(), KernelLevel::plain);
    EXPECT_EQ(kernel_level(), KernelLevel::plain);
    EXPECT_FALSE(set_kernel_level(KernelLevel::sse2));
    EXPECT_TRUE(set_kernel_level(KernelLevel::plain));
}

// The amplitude is 4 times the flux, at the very centre.
TEST(PlainOnly, DrawsAFrame) {
    Picture picture(9, 9);
    CountingInput input({star_ahead(0.25f)});
    const StarRendererData data = plain_data(9);
    const Array<camera> view = cameras({make_camera()});
    StarRenderer renderer(data, picture.fb, input, view, KernelLevel::avx2);
    bool drew = false;
    renderer.render_all(drew);
    EXPECT_TRUE(drew);
    EXPECT_EQ(renderer.counts().drawn, 1u);
    // The centre (4.5, 4.5) is 0.5 pixels from pixel (4, 4) on both axes, and spots are 2 wide.
    EXPECT_NEAR(picture.red(4, 4), std::exp(-2 * 0.25 * 0.25), 1e-6); // a few roundings of 1
}

TEST(PlainOnly, DrawsAStreak) {
    Picture picture(9, 9);
    EXPECT_TRUE(op_star_streak(picture.fb, at(2, 4), at(6, 4), 1, white, 1, 1, OP_STARS_LINES_ALL));
    // sqrt(pi) / 2 * (erf(2) - erf(-2)) / 4
    EXPECT_NEAR(picture.red(4, 4), 0.886226925 * 2 * 0.995322265 / 4, 1e-6);
}
