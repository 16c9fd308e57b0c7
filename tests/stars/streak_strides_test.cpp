// SPDX-License-Identifier: BSD-3-Clause

// Strides whose products overflow: pixel (x, y) is at y * row_stride + x * pixel_stride, each
// product in 32 bits, where it wraps, the sum in 64.
#include "tests/stars/picture.h"

#include <climits>
#include <sys/mman.h>

using namespace stars_test;

namespace {

const float faintest = 1.6e-4f; // reach 0: a spot at the last pixel touches that one alone

// A little over 16 GiB of addresses; memory only where it is touched.
class Plane {
public:
    float* data;

    Plane()
        : data(static_cast<float*>(mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))) {}
    Plane(const Plane&) = delete;
    Plane& operator=(const Plane&) = delete;
    ~Plane() {
        if (is_there())
            munmap(data, bytes);
    }

    bool is_there() const { return data != MAP_FAILED; }

private:
    static constexpr size_t bytes = (size_t(1) << 34) + 4096;
};

} // namespace

// 2^31 on top of the stride: twice that is 2^32, nothing in 32 bits, so every even row is where
// it stood.
TEST(StreakStrides, WrapInTheProductWithTheRow) {
    for (Layout layout : {INTERLEAVED, GUARDED, PLANAR}) {
        Picture plain(20, 20, layout), wrapping(20, 20, layout);
        StarFramebuffer fb = wrapping.fb;
        fb.row_stride += INT_MIN;
        const Vector2 from = at(3, 4), to = at(15, 17);
        EXPECT_TRUE(op_star_streak(plain.fb, from, to, 1, white, 1.5f, 2, OP_STARS_LINES_EVEN));
        EXPECT_TRUE(op_star_streak(fb, from, to, 1, white, 1.5f, 2, OP_STARS_LINES_EVEN));
        EXPECT_TRUE(same_bits(plain, wrapping)) << layout;
        EXPECT_TRUE(wrapping.surroundings_intact());
    }
}

// The same along the row, from beyond whose end a spot reaches the last column only, an even one.
TEST(StreakStrides, WrapInTheProductWithTheColumn) {
    for (Layout layout : {INTERLEAVED, GUARDED, PLANAR, BOTTOM_UP}) {
        Picture plain(9, 12, layout), wrapping(9, 12, layout);
        StarFramebuffer fb = wrapping.fb;
        fb.pixel_stride += INT_MIN;
        const Vector2 beside = at(10.5f, 6); // the reach is 2.1
        EXPECT_TRUE(
            op_star_streak(plain.fb, beside, beside, 0.013f, white, 1, 1, OP_STARS_LINES_ALL));
        EXPECT_TRUE(op_star_streak(fb, beside, beside, 0.013f, white, 1, 1, OP_STARS_LINES_ALL));
        EXPECT_TRUE(same_bits(plain, wrapping)) << layout;
        EXPECT_GT(plain.red(8, 6), 0);
        EXPECT_EQ(plain.red(7, 6), 0);
        EXPECT_TRUE(wrapping.surroundings_intact());
    }
}

// Products of 2^31 - 1 floats each, which both fit; 32 bits would make -2 of their sum.
TEST(StreakStrides, DoNotWrapInTheSum) {
    const Plane plane;
    if (!plane.is_there())
        FAIL() << "no room for 16 GiB of addresses";
    const float none[16] = {};
    float* const colour = plane.data + 8;
    const StarFramebuffer fb = {colour, colour, colour, colour, 2, 2, INT_MAX, INT_MAX};
    EXPECT_TRUE(
        op_star_streak(fb, at(1, 1), at(1, 1), faintest, {{0, 1, 0}}, 1, 1, OP_STARS_LINES_ALL));
    EXPECT_EQ(colour[2 * size_t(INT_MAX)], faintest);
    EXPECT_EQ(std::memcmp(plane.data, none, sizeof none), 0);
}
