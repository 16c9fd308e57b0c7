// Draws one star by the fast kernels.
//
// Threads:   no state; calls that write disjoint rows may run at once.
#pragma once

#include "stars/fast/lane_kernels.h"
#include "stars/footprint.h"

namespace velmora {

// What all stars of a frame have in common.
struct Brush {
    const LaneKernels* kernels;
    StarFramebuffer dst;
    float size_x, size_y;
    op_stars_lines lines;
};

// The brush of a call.
Brush brush_of(const LaneKernels& kernels, const StarCall& call);

// A star and the pixels that it reaches.
struct Stroke {
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
    left_to_plain // what no node asks for: images without pixels (to fail as it does), sizes
                  // outside [1e-15, 1e15], paths longer than 1e18 pixels, and values that a float
                  // does not hold
};

// Finds where a call draws, if the fast kernels are to draw it.
Fit find_stroke(const StarCall& call, Stroke& star);

// Draws what lies in the window. Windows side by side add up to the same bits, and report the same,
// as one around them.
Drawn draw_stroke(const Brush& brush, const Stroke& star, const Window& window);

} // namespace velmora
