// The two ways to draw one star, behind op_star_streak: the plain reading and the fast kernels.
//
// Errors:    as op_star_streak has them.
// Threads:   no state; calls that write disjoint rows may run at once.
#pragma once

#include "stars/footprint.h"
#include "stars/lane_kernels.h"

namespace velmora {

// ---- Accuracy --------------------------------------------------------------------------------

// Bounds of a pixel's error against the formula in double, in parts of the largest value of a
// picture of up to 57 by 47 pixels that holds the middle of the path: two to three times the
// largest error of 100,000 random calls of each kind, with sizes from 0.2 (spots) or 0.3 (streaks)
// to 200 and amplitudes from 2e-4 to 1e5. What is left for streaks is mostly the rounding of the
// middle to a float, which both readings have.
struct Accuracy {
    double fast, plain;
};

constexpr Accuracy spot_accuracy = {1.5e-7, 3e-6};
constexpr Accuracy tiny_streak_accuracy = {6e-5, 3}; // shorter than 1e-3 pixels, for which the
                                                     // plain reading can lose or double the light
constexpr Accuracy short_streak_accuracy = {6e-5, 3e-2}; // from there to 1 pixel
constexpr Accuracy wide_streak_accuracy = {6e-7, 3e-4};  // 0.1 to 30 pixels, sizes from 10 on
constexpr Accuracy streak_accuracy = {5e-5, 5e-5};       // from 1 pixel on
constexpr Accuracy long_streak_accuracy = {2e-5, 2e-5};  // from 10 pixels to 1e7

// ---- Drawing one star ------------------------------------------------------------------------

// One call of op_star_streak.
struct StarCall {
    StarFramebuffer dst;
    Vector2 from, to;
    float amplitude;
    Color3 color;
    float size_x, size_y;
    op_stars_lines lines;
};

// Scalar, one pixel after the other, through the C library.
Drawn plain_star_streak(const StarCall& call);

// Draws the call by the kernels of the level in use.
Drawn draw_star_streak(const StarCall& call);

// ---- The fast kernels ------------------------------------------------------------------------

// What all stars of a frame have in common.
struct Brush {
    const LaneKernels* kernels;
    StarFramebuffer dst;
    float size_x, size_y;
    op_stars_lines lines;
};

// A star and the pixels that it reaches.
struct PlacedStar {
    Path path;
    Box box;
    RowGeometry rows;
    float amplitude;
    Color3 color;
};

// Pixels [x_lo, x_end) of rows [y_lo, y_end).
struct Window {
    s32 x_lo, y_lo, x_end, y_end;
};

enum class Fit {
    outside, // nothing to draw
    inside,
    left_to_plain // what no renderer asks for: images without pixels (to fail as it does), sizes
                  // outside of [1e-15, 1e15], paths longer than 1e18 pixels, and values that a
                  // float does not hold
};

// Finds where a call draws, if the fast kernels are to draw it.
Fit place_star(const StarCall& call, PlacedStar& star);

// Draws what lies in the window. Windows side by side add up to the same bits, and report the same,
// as one around them.
Drawn draw_placed(const Brush& brush, const PlacedStar& star, const Window& window);

} // namespace velmora
