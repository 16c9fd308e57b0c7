// The two ways to draw one star, behind op_star_streak: the plain reading and the fast kernels.
//
// Errors:    as op_star_streak has them.
// Threads:   no state; calls that write disjoint rows may run at once.
#pragma once

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

// The same pixels by the kernels of one level. False, and nothing drawn, for what they leave to the
// plain reading, none of which a renderer asks for: images without pixels (to fail as it does), sizes
// outside of [1e-15, 1e15], paths longer than 1e18 pixels, and values that a float does not hold.
bool fast_star_streak(const LaneKernels& kernels, const StarCall& call, Drawn& drawn);

// Draws the call by the kernels of the level in use.
Drawn draw_star_streak(const StarCall& call);

} // namespace velmora
