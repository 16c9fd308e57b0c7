// SPDX-License-Identifier: BSD-3-Clause

// Windows side by side add up to the same bits as one around them, and so do the tiles of a draw
// list, wherever on the float axis a star is: from 2^24 pixels on a column counter adds 1.0 without
// moving, and the row runs on to the image's right edge.
#include "stars/dispatch.h"
#include "stars/fast/level.h"
#include "stars/fast/rasterise.h"
#include "stars/fast/tiles.h"
#include "stars/plain/rasterise.h"
#include "tests/stars/dice.h"
#include "tests/stars/kernels.h"
#include "tests/stars/picture.h"

#include <limits>
#include <memory>

using namespace stars_test;
using namespace velmora;

namespace {

// A coordinate in or around [0, pixels), or somewhere between 2^22 and 1e18 on either side.
float some_place(Dice& dice, int pixels) {
    const double sign = dice.below(2) ? 1 : -1;
    switch (dice.below(5)) {
    case 0:
        return float(sign * dice.log_between(4194304, 67108864));
    case 1:
        return float(sign * dice.log_between(4194304, 2147483648.0));
    case 2:
        return float(sign * dice.log_between(1e9, 1e18));
    default:
        return float(dice.between(-20, pixels + 20));
    }
}

float some_size(Dice& dice) {
    switch (dice.below(4)) {
    case 0:
        return float(dice.log_between(1, 1e3));
    case 1:
        return float(dice.log_between(1e5, 1e9));
    default:
        return float(dice.log_between(1, 30));
    }
}

// The far end of half of the paths lies opposite the near one as seen from the image, so that they
// cross it.
StarCall some_call(Dice& dice, int width, int height) {
    StarCall call;
    call.size_x = some_size(dice);
    call.size_y = dice.below(2) ? call.size_x : some_size(dice);
    call.amplitude = float(dice.log_between(1e-3, 1e6));
    call.color = {{1, 0.5f, 2}};
    call.lines = static_cast<op_stars_lines>(dice.below(8) ? 0 : dice.below(3));
    call.from = at(some_place(dice, width), some_place(dice, height));
    call.to = at(some_place(dice, width), some_place(dice, height));
    const double x = dice.between(0, width), y = dice.between(0, height);
    const int kind = dice.below(6);
    if (kind == 0)
        call.to = call.from;
    else if (kind == 1) // short against its size, wherever it is
        call.to[0] = std::nextafter(call.from[0], std::numeric_limits<float>::infinity());
    else if (kind < 5) { // through (x, y)
        const double part = dice.below(2) ? 1 : dice.log_between(0.01, 100);
        call.to = at(float(x - part * (double(call.from[0]) - x)),
                     float(y - part * (double(call.from[1]) - y)));
    }
    return call;
}

std::string name_of(const StarCall& call) {
    char text[300];
    snprintf(text, sizeof text,
             "%.9g, %.9g to %.9g, %.9g amplitude %.9g sizes %.9g, %.9g lines %d in %d x %d",
             double(call.from[0]), double(call.from[1]), double(call.to[0]), double(call.to[1]),
             double(call.amplitude), double(call.size_x), double(call.size_y), int(call.lines),
             call.dst.width, call.dst.height);
    return text;
}

Brush brush_for(const StarCall& call) {
    return brush_of(*lane_kernels(kernel_level()), call);
}

// Draws the star window by window: the image cut in two at a random row or column, and each part
// again, until `cuts` are made.
Drawn draw_cut(Dice& dice, const Brush& brush, const Stroke& star, const Window& w, int cuts) {
    const bool down = dice.below(2) != 0;
    const int pixels = down ? w.y_end - w.y_lo : w.x_end - w.x_lo;
    if (cuts == 0 || pixels < 2)
        return draw_stroke(brush, star, w);
    const int cut = 1 + dice.below(pixels - 1);
    Window first = w, second = w;
    if (down)
        first.y_end = second.y_lo = w.y_lo + cut;
    else
        first.x_end = second.x_lo = w.x_lo + cut;
    Drawn drawn = draw_cut(dice, brush, star, first, cuts - 1);
    drawn += draw_cut(dice, brush, star, second, cuts - 1);
    return drawn;
}

} // namespace

TEST(Windows, SideBySideAddUpToTheSameBits) {
    Dice dice(31);
    int drawn_calls = 0;
    for (int i = 0; i < 6000; i++) {
        const int width = 1 + dice.below(i % 8 ? 90 : 900), height = 1 + dice.below(30);
        StarCall call = some_call(dice, width, height);
        Picture whole(width, height), cut(width, height);
        Stroke star;
        call.dst = whole.fb;
        if (find_stroke(call, star) != Fit::inside)
            continue;
        const Window all = {0, 0, width, height};
        const Drawn expected = draw_stroke(brush_for(call), star, all);
        call.dst = cut.fb;
        const Drawn drawn = draw_cut(dice, brush_for(call), star, all, 4);
        ASSERT_TRUE(same_bits(cut, whole)) << name_of(call);
        EXPECT_EQ(drawn.pixels, expected.pixels) << name_of(call);
        EXPECT_EQ(drawn.lit, expected.lit) << name_of(call);
        drawn_calls += expected.pixels > 0;
    }
    EXPECT_GT(drawn_calls, 2000);
}

// Images that the list takes: wider than a tile, higher than several.
TEST(Windows, OfADrawListAddUpToTheSameBits) {
    Dice dice(32);
    int drawn_calls = 0;
    static const int sizes[][2] = {{1100, 130}, {530, 260}, {3000, 50}, {140, 1000}};
    for (const int* size : {sizes[0], sizes[1], sizes[2], sizes[3]}) {
        Picture whole(size[0], size[1]), listed(size[0], size[1]);
        for (int i = 0; i < 1000; i++) {
            StarCall call = some_call(dice, size[0], size[1]);
            Stroke star;
            call.dst = whole.fb;
            if (find_stroke(call, star) != Fit::inside)
                continue;
            const Drawn expected = draw_star_streak(call);
            call.dst = listed.fb;
            TileQueue list;
            list.start(brush_for(call));
            ASSERT_TRUE(list.is_worth_it());
            list.append(star, 1);
            LitOwners lit;
            u64 pixels = 0;
            list.draw(lit, pixels);
            EXPECT_EQ(pixels, u64(expected.pixels)) << name_of(call);
            EXPECT_EQ(lit.count(), u64(expected.lit)) << name_of(call);
            drawn_calls += expected.pixels > 0;
            if (pixels != u64(expected.pixels) || i % 50 == 49) {
                ASSERT_TRUE(same_bits(listed, whole)) << name_of(call);
            }
        }
        ASSERT_TRUE(same_bits(listed, whole));
    }
    EXPECT_GT(drawn_calls, 1000);
}

// Both readings count columns and rows in the same floats. Beside their exponentials' and error
// functions' last bits they differ where the plain one rounds exponents, and along short paths,
// where the fast one adds up spots: those it places exactly, the plain one by its counters, off by
// up to the image's width and height where they do not move.
TEST(Windows, AreThePlainReadingsFarOut) {
    Dice dice(33);
    int drawn_calls = 0;
    for (int i = 0; i < 3000; i++) {
        const int width = 1 + dice.below(i % 8 ? 60 : 600), height = 1 + dice.below(30);
        StarCall call = some_call(dice, width, height);
        call.color = white;
        Picture plain(width, height), fast(width, height);
        call.dst = plain.fb;
        const Drawn expected = plain_star_streak(call);
        call.dst = fast.fb;
        const Drawn drawn = draw_star_streak(call);
        ASSERT_LE(drawn.pixels, expected.pixels) << name_of(call);
        drawn_calls += drawn.pixels > 0;

        const Path path(call.from, call.to);
        const double size = std::min(call.size_x, call.size_y);
        const double length = path.is_streak() ? double(path.length) : 0;
        const double far = std::fabs(double(path.mid[0])) + std::fabs(double(path.mid[1]));
        const bool counts = far + width + height < 8388608;
        const double widest = std::max(call.size_x, call.size_y);
        const double lost = length > 0 ? widest / length : 0;
        const double peak = length > 0 ? std::min(1.0, 1.8 * widest / length) : 1;
        const bool may_be_a_sum = length > 0 && length < 8 * widest;
        const double off = may_be_a_sum ? (counts ? 0 : width + height) + 1.2e-7 * far : 0;
        const double allowed =
            call.amplitude * (3e-6 * peak + 1e-6 * lost + std::min(1.0, off / size));
        double worst = 0;
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                worst = std::max(worst, std::fabs(double(plain.red(x, y)) - fast.red(x, y)));
        EXPECT_LE(worst, allowed) << name_of(call);
    }
    EXPECT_GT(drawn_calls, 1000);
}

// By hand: X starts at 0 - (-16777216) = 2^24, where adding 1.0 changes nothing, and X_end is the
// same 2^24, so each row of this spot, whose box ends at the first columns, goes on to the last.
TEST(Windows, RunToTheRightEdgeWhereColumnsDoNotCount) {
    // k = sqrt(ln(6250 * 40)) = 3.52551: 4758862 sizes of it reach column 200.
    const float size = 4758862;
    for (KernelLevel level : fast_levels()) {
        const WithKernels kernels(level);
        Picture plain(1024, 256), fast(1024, 256), listed(1024, 256);
        StarCall call = {plain.fb, at(-16777216, 100), at(-16777216, 100), 40, white, size,
                         size,     OP_STARS_LINES_ALL};
        const Drawn expected = plain_star_streak(call);
        EXPECT_EQ(expected.pixels, 1024 * 256);
        call.dst = fast.fb;
        EXPECT_EQ(draw_star_streak(call).pixels, 1024 * 256);
        call.dst = listed.fb;
        Stroke star;
        ASSERT_EQ(find_stroke(call, star), Fit::inside);
        EXPECT_LT(star.box.x_hi, 500);
        TileQueue list;
        list.start(brush_for(call));
        list.append(star, 1);
        LitOwners lit;
        u64 pixels = 0;
        list.draw(lit, pixels);
        EXPECT_EQ(pixels, 1024u * 256u);
        EXPECT_TRUE(same_bits(listed, fast));
    }
}
