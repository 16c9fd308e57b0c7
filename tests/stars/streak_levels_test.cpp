// SPDX-License-Identifier: BSD-3-Clause

// The fast kernels of every level give the same bytes, touch nothing else, and report the same.
#include "stars/dispatch.h"
#include "stars/plain/rasterise.h"
#include "tests/stars/dice.h"
#include "tests/stars/kernels.h"
#include "tests/stars/picture.h"

#include <memory>

using namespace stars_test;
using namespace velmora;

namespace {

// A picture with colours in it, and holes, partly covered and over-covered pixels here and there.
std::unique_ptr<Picture> some_picture(unsigned seed, int width, int height, Layout layout) {
    Dice dice(seed);
    std::unique_ptr<Picture> picture(new Picture(width, height, layout));
    const int one_in = dice.below(2) ? 200 : 6; // covered pixels, with long free runs or without
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            for (int p = 0; p < 3; p++)
                picture->paint(p, x, y, float((x + 3 * y + p) % 5) / 3);
            if (dice.below(one_in) == 0) {
                static const float alphas[] = {0.25f, 1, 1.5f, -0.5f, -0.0f, 0.99999994f};
                picture->cover(x, y, alphas[dice.below(6)]);
            }
        }
    return picture;
}

StarCall some_call(Dice& dice, int width, int height) {
    StarCall call;
    call.size_x = float(dice.log_between(0.2, 30));
    call.size_y = dice.below(2) ? call.size_x : float(dice.log_between(0.2, 30));
    call.amplitude = float(dice.log_between(1e-4, 1e4));
    for (int p = 0; p < 3; p++)
        call.color[p] = float(dice.between(-0.2, 1.5));
    call.lines = static_cast<op_stars_lines>(dice.below(8) ? 0 : dice.below(4));
    const double x = dice.between(-9, width + 9), y = dice.between(-9, height + 9);
    call.from = call.to = at(float(x), float(y));
    if (dice.below(4) != 0) {
        const double length = dice.log_between(1e-6, dice.below(4) ? 100 : 1e8);
        const double angle = dice.below(5) ? dice.between(0, 6.2831853) : 1.5707963 * dice.below(4);
        const double part = dice.between(0, 1), dx = length * std::cos(angle),
                     dy = length * std::sin(angle);
        call.from = at(float(x - part * dx), float(y - part * dy));
        call.to = at(float(x + (1 - part) * dx), float(y + (1 - part) * dy));
    }
    return call;
}

std::string name_of(const StarCall& call) {
    char text[300];
    snprintf(text, sizeof text, "%a, %a to %a, %a amplitude %a sizes %a, %a lines %d in %d x %d",
             double(call.from[0]), double(call.from[1]), double(call.to[0]), double(call.to[1]),
             double(call.amplitude), double(call.size_x), double(call.size_y), int(call.lines),
             call.dst.width, call.dst.height);
    return text;
}

// Whether a white star put light into the picture, which was black and is not covered.
bool has_light(const Picture& picture) {
    for (int y = 0; y < picture.fb.height; y++)
        for (int x = 0; x < picture.fb.width; x++)
            if (picture.red(x, y) > 0)
                return true;
    return false;
}

} // namespace

TEST(StreakLevels, DrawTheSameBytesIntoEveryLayout) {
    Dice dice(6);
    for (unsigned i = 0; i < 1500; i++) {
        const int width = 1 + dice.below(i % 10 ? 50 : 600), height = 1 + dice.below(40);
        StarCall call = some_call(dice, width, height);
        std::unique_ptr<Picture> first;
        Drawn told = {};
        for (KernelLevel level : fast_levels())
            for (Layout layout : {INTERLEAVED, static_cast<Layout>(1 + i % 3)}) {
                std::unique_ptr<Picture> picture = some_picture(i, width, height, layout);
                call.dst = picture->fb;
                const WithKernels kernels(level);
                const Drawn drawn = draw_star_streak(call);
                ASSERT_TRUE(picture->surroundings_intact()) << name_of(call);
                if (!first) {
                    first = std::move(picture);
                    told = drawn;
                    continue;
                }
                EXPECT_EQ(drawn.lit, told.lit) << name_of(call);
                EXPECT_EQ(drawn.pixels, told.pixels) << name_of(call);
                ASSERT_TRUE(same_bits(*picture, *first))
                    << kernel_level_name(level) << ": " << name_of(call);
            }
    }
}

// The plain reading visits the same pixels, adds to each what the fast kernels add but for both
// accuracies, and reports the same. What a pixel gets is off by a few roundings of the amplitude
// (spots of sub-pixel size: by the exponential's of a large exponent) and, along a streak, by what
// two error functions lose of their difference before it is divided by the length.
TEST(StreakLevels, StayByThePlainReading) {
    Dice dice(7);
    for (unsigned i = 0; i < 1500; i++) {
        const int width = 1 + dice.below(50), height = 1 + dice.below(40);
        StarCall call = some_call(dice, width, height);
        Picture plain(width, height), fast(width, height);
        call.color = white;
        call.dst = plain.fb;
        const Drawn expected = plain_star_streak(call);
        call.dst = fast.fb;
        const WithKernels kernels(KernelLevel::sse2);
        const Drawn drawn = draw_star_streak(call);
        EXPECT_LE(drawn.pixels, expected.pixels) << "zeros may be left out: " << name_of(call);
        EXPECT_EQ(expected.lit, has_light(plain)) << name_of(call);
        EXPECT_EQ(drawn.lit, has_light(fast)) << name_of(call);

        const double length = std::hypot(double(call.to[0]) - double(call.from[0]),
                                         double(call.to[1]) - double(call.from[1]));
        const double size = std::max(call.size_x, call.size_y);
        const double lost = length > 1e-5 ? size / length : 0;
        const double far = std::max(std::hypot(double(call.from[0]), double(call.from[1])),
                                    std::hypot(double(call.to[0]), double(call.to[1])));
        const double sharp = 1 + far / std::min(call.size_x, call.size_y);
        const double allowed = call.amplitude * 3e-7 * (sharp + lost);
        double worst = 0;
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                worst = std::max(worst, std::fabs(double(plain.red(x, y)) - fast.red(x, y)));
        EXPECT_LE(worst, allowed) << name_of(call);
    }
}

// A small picture beside a wide spot that hardly moves: the closed form's two error functions often
// round to the same float there, while the sum of spots does not. Either way the result is what the
// picture says, and a list counts by it.
TEST(StreakLevels, TellWhatTheReadingThatDrewAdded) {
    Dice dice(9);
    int cancelled = 0;
    for (unsigned i = 0; i < 600; i++) {
        const float size = float(dice.log_between(1, 300));
        const double far = dice.between(0.5, 6) * size, angle = dice.between(0, 6.2831853);
        const double x = far * std::cos(angle), y = far * std::sin(angle);
        const double dx = dice.log_between(1e-5, 1e-3) * size, dy = dice.between(-1, 1) * dx;
        StarCall call = {
            {},   at(float(x), float(y)), at(float(x + dx), float(y + dy)), 1, white, size,
            size, OP_STARS_LINES_ALL};
        Picture plain(4, 3);
        call.dst = plain.fb;
        const Drawn expected = plain_star_streak(call);
        EXPECT_EQ(expected.lit, has_light(plain)) << name_of(call);
        for (KernelLevel level : fast_levels()) {
            const WithKernels kernels(level);
            Picture fast(4, 3);
            call.dst = fast.fb;
            const bool lit = op_star_streak(fast.fb, call.from, call.to, call.amplitude, call.color,
                                            size, size, call.lines);
            EXPECT_EQ(lit, has_light(fast))
                << kernel_level_name(level) << ": " << fast.red(0, 0) << " by " << name_of(call);
            cancelled += has_light(fast) && !has_light(plain);
        }
    }
    EXPECT_GT(cancelled, 10);
}
