// SPDX-License-Identifier: BSD-3-Clause

// One call of op_star_streak, and what it reports: what both readings of it take and give.
//
// Units:     pixels, x right, y down from the top row, as in streak.h.
// Ownership: the framebuffer is a view; the image must outlive the call.
#pragma once

#include "core/newmatrix.h"
#include "stars/framebuffer.h"

namespace velmora {

// The arguments, in their order.
struct StarCall {
    StarFramebuffer dst;
    Vector2 from, to;
    float amplitude;
    Color3 color;
    float size_x, size_y;
    op_stars_lines lines;
};

// What a call did. Reports of disjoint parts of a call add up.
struct Drawn {
    bool lit;   // whether any pixel got a weight above zero
    s64 pixels; // how many were written

    Drawn& operator+=(const Drawn& more) {
        lit |= more.lit;
        pixels += more.pixels;
        return *this;
    }
};

} // namespace velmora
