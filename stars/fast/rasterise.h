// SPDX-License-Identifier: BSD-3-Clause

// Draws one star by the fast kernels: first where it draws, then, window by window, the pixels.
//
// Units:     pixels, as in streak.h.
// Accuracy:  as accuracy.h states; the same bytes at every level.
// Errors:    none; calls that the kernels do not hold are left to the plain reading.
// Threads:   no state; calls that write disjoint rows may run at once.
#pragma once

#include "stars/fast/lane_kernels.h"
#include "stars/footprint.h"

namespace velmora {

// What all stars of a frame have in common.
// Ownership: the kernels are static; the framebuffer is a view.
struct Brush {
    const LaneKernels* kernels;
    StarFramebuffer dst;
    float size_x, size_y;
    op_stars_lines lines;
};

// The brush that a call asks for.
Brush brush_of(const LaneKernels& kernels, const StarCall& call);

// A star's path, and the pixels that it reaches.
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
    outside,      // nothing to draw
    inside,       // find_stroke() has filled the stroke
    left_to_plain // what no node asks for: images without pixels (to fail as it does), sizes
                  // outside [1e-15, 1e15], paths longer than 1e18 pixels, and values that a float
                  // does not hold
};

// Finds where a call draws. Fills `stroke` when the kernels are to draw it.
Fit find_stroke(const StarCall& call, Stroke& stroke);

// Draws the part of the stroke in the window. Windows that tile a larger one give the same bits, and
// add up to the same report, as the larger one. REQUIRES: find_stroke() was `inside`.
Drawn draw_stroke(const Brush& brush, const Stroke& stroke, const Window& window);

} // namespace velmora
