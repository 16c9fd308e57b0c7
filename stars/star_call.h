// One call of op_star_streak, and what it reports: what both readings of it take and give.
//
// Units:     as in streak.h.
#pragma once

#include "core/newmatrix.h"
#include "stars/framebuffer.h"

namespace velmora {

struct StarCall {
    StarFramebuffer dst;
    Vector2 from, to;
    float amplitude;
    Color3 color;
    float size_x, size_y;
    op_stars_lines lines;
};

// What a call left behind.
struct Drawn {
    bool lit;   // whether any pixel got a weight above zero
    s64 pixels; // that were written

    Drawn& operator+=(const Drawn& more) {
        lit |= more.lit;
        pixels += more.pixels;
        return *this;
    }
};

} // namespace velmora
