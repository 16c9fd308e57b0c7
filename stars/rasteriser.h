// The two ways to draw one star, behind op_star_streak: the plain reading and the fast kernels.
//
// Errors:    as op_star_streak has them.
// Threads:   no state; calls that write disjoint rows may run at once.
// Accuracy:  against the formula in double, of the largest value in a picture of up to 58 pixels
//            that holds the middle of the path; sizes from 0.2 (spots) or 0.3 (streaks) to 200:
//
//                                              fast     plain
//                spots                         7e-8     5e-7
//                streaks up to 1 pixel long    8e-6     0.5 (4e-3 from 1e-3 on)
//                from 1 to 10                  3e-6     6e-6
//                of wide spots, up to 30       3e-7     7e-5
//                from 10 to 1e7                5e-6     5e-6
//
//            What is left for streaks is mostly the middle's rounding to a float, which both have.
#pragma once

#include "stars/footprint.h"
#include "stars/lane_kernels.h"

namespace velmora {

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
