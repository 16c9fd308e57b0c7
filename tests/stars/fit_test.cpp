// SPDX-License-Identifier: BSD-3-Clause

// What the fast kernels leave to the plain reading: a call on either side of each of their limits.
#include "stars/fast/rasterise.h"
#include "tests/special_values.h"
#include "tests/stars/picture.h"

using namespace stars_test;
using namespace velmora;
using namespace velmora_test::floats;

namespace {

// An image of 60 by 40 pixels that is never drawn into.
StarCall call_of(Vector2 from, Vector2 to, float amplitude, float size_x, float size_y) {
    StarFramebuffer fb = {};
    fb.width = 60;
    fb.height = 40;
    return {fb, from, to, amplitude, white, size_x, size_y, OP_STARS_LINES_ALL};
}

Fit fit_of(const StarCall& call) {
    Stroke star;
    return find_stroke(call, star);
}

// The faintest amplitude that is drawn, with a reach of 0 sizes: the box of a wider star would not
// fit the integers.
const float faintest = 1.6e-4f;

// A path along x up to the image's first columns. There Q is size_y^2, t is 1 / (size_x * size_y^2), the
// width sqrt(pi) / 2 * size_x and the light amplitude / length.
Fit fit_along_x(float length, float amplitude, float size_x, float size_y) {
    return fit_of(call_of(at(5 - length, 20), at(5, 20), amplitude, size_x, size_y));
}

} // namespace

TEST(Fit, IsInsideForUsualStars) {
    EXPECT_EQ(faintest * 6250.0f, 1.0f);
    EXPECT_EQ(fit_along_x(0, 1, 2, 2), Fit::inside);
    EXPECT_EQ(fit_along_x(10, 1, 2, 2), Fit::inside);
}

TEST(Fit, IsOutsideWhereNothingIsDrawn) {
    EXPECT_EQ(fit_along_x(10, 1e-5f, 2, 2), Fit::outside); // too faint
    EXPECT_EQ(fit_of(call_of(at(-90, 20), at(-80, 20), 1, 2, 2)), Fit::outside);
    EXPECT_EQ(fit_of(call_of(at(30, 90), at(30, 80), 1, 2, 2)), Fit::outside);
    for (float bad : {not_a_number, infinity})
        for (int axis : {0, 1}) {
            Vector2 place = at(30, 20);
            place[axis] = bad;
            EXPECT_EQ(fit_of(call_of(place, place, 1, 2, 2)), Fit::outside);
            EXPECT_EQ(fit_of(call_of(at(30, 20), place, 1, 2, 2)), Fit::outside);
        }
}

// There the plain reading asserts.
TEST(Fit, LeavesImagesWithoutPixels) {
    for (int size : {0, -5}) {
        StarCall call = call_of(at(0, 0), at(0, 0), 1, 2, 2);
        call.dst.width = size;
        EXPECT_EQ(fit_of(call), Fit::left_to_plain);
        call = call_of(at(0, 0), at(0, 0), 1, 2, 2);
        call.dst.height = size;
        EXPECT_EQ(fit_of(call), Fit::left_to_plain);
    }
}

TEST(Fit, LeavesSizesThatAreTooSmallOrLarge) {
    for (float good : {1.1e-15f, 2.0f, 0.9e15f}) {
        EXPECT_EQ(fit_along_x(0, faintest, good, 2), Fit::inside) << good;
        EXPECT_EQ(fit_along_x(0, faintest, 2, good), Fit::inside) << good;
    }
    for (float bad : {0.9e-15f, 0.0f, -2.0f, 1.1e15f, infinity, not_a_number}) {
        EXPECT_EQ(fit_along_x(0, faintest, bad, 2), Fit::left_to_plain) << bad;
        EXPECT_EQ(fit_along_x(0, faintest, 2, bad), Fit::left_to_plain) << bad;
    }
}

TEST(Fit, LeavesPathsThatAreTooLong) {
    for (float sign : {-1.0f, 1.0f}) { // its near end is in the image's first columns
        EXPECT_EQ(fit_of(call_of(at(-0.9e18f, 20), at(5, sign * 30), 1, 2, 2)), Fit::inside);
        EXPECT_EQ(fit_of(call_of(at(-1.1e18f, 20), at(5, sign * 30), 1, 2, 2)), Fit::left_to_plain);
        EXPECT_EQ(fit_of(call_of(at(-1e19f, 20), at(5, 20), 1, 2, 2)), Fit::left_to_plain);
        EXPECT_EQ(fit_of(call_of(at(-1e30f, 20), at(5, 20), 1, 2, 2)), Fit::left_to_plain);
    }
}

// Only one constant of each pair's second call is beyond what the kernels hold; the others are well
// within.
TEST(Fit, LeavesConstantsThatAreTooSmallOrLarge) {
    // length * Q / 2 is 5e36, then 5e37; t 1e-29.
    EXPECT_EQ(fit_along_x(1e11f, faintest, 1e3f, 1e13f), Fit::inside);
    EXPECT_EQ(fit_along_x(1e12f, faintest, 1e3f, 1e13f), Fit::left_to_plain);
    // t is 1e-29, then 1e-31.
    EXPECT_EQ(fit_along_x(1, faintest, 1e3f, 1e13f), Fit::inside);
    EXPECT_EQ(fit_along_x(1, faintest, 1e5f, 1e13f), Fit::left_to_plain);
    // t is 1e36, then 1e38.
    EXPECT_EQ(fit_along_x(1, 1, 1e-10f, 1e-13f), Fit::inside);
    EXPECT_EQ(fit_along_x(1, 1, 1e-12f, 1e-13f), Fit::left_to_plain);
    // The light is 5e36, then 5e37; by its width of 0.09 both come to less than 1e37. Around
    // (0.001, 0.001) floats are dense enough for so short a path.
    const auto faint_and_short = [](float amplitude) {
        return fit_of(call_of(at(0.001f, 0.001f), at(0.0011f, 0.001f), amplitude, 0.1f, 0.1f));
    };
    EXPECT_EQ(faint_and_short(5e32f), Fit::inside);
    EXPECT_EQ(faint_and_short(5e33f), Fit::left_to_plain);
    // Width by light is 9e36, then 9e37; the light 1e34 and 1e35.
    EXPECT_EQ(fit_along_x(0.1f, 1e33f, 1e3f, 1), Fit::inside);
    EXPECT_EQ(fit_along_x(0.1f, 1e34f, 1e3f, 1), Fit::left_to_plain);
}
