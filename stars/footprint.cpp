// SPDX-License-Identifier: BSD-3-Clause
#include "stars/footprint.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace velmora {

static const float flattest_rise = 1e-6f; // a path that rises less is horizontal
static const float steepest_slope =
    100000;                           // columns per row below which row centres follow the path
static const float unbounded = 1e20f; // slope and half-width of a horizontal path

// NaN and values outside the integers become INT_MIN, as on x86, so that it is defined everywhere.
static s32 to_int(float whole) {
    return whole >= -0x1p31f && whole < 0x1p31f ? s32(whole) : INT_MIN;
}

// floorf and ceilf without a call. Floats from 2^23 on have no fraction.
static float floor_of(float v) {
    if (!(fabsf(v) < whole_from))
        return v;
    const float whole = float(s32(v));
    return whole > v ? whole - 1 : whole;
}

static float ceil_of(float v) {
    return -floor_of(-v);
}

static s32 wrapping_increment(s32 i) {
    return s32(u32(i) + 1);
}

Path::Path(const Vector2& from, const Vector2& to) : from(from), to(to) {
    const float dx = to[0] - from[0];
    const float dy = to[1] - from[1];
    mid = {{(from[0] + to[0]) * 0.5f, (from[1] + to[1]) * 0.5f}};
    length = sqrtf(dx * dx + dy * dy);
    ux = length != 0 ? dx / length : 0;
    uy = length != 0 ? dy / length : 0;
}

RowGeometry row_geometry(const Path& path, float rx, float size_x, float size_y) {
    const float rise = path.to[1] - path.from[1];
    if (fabsf(rise) <= flattest_rise)
        return {unbounded, unbounded};

    // size_x is a factor of both terms: narrow for spots below a pixel, generous for wide ones.
    const float slope = (path.to[0] - path.from[0]) / rise;
    const double across = size_x * rx;
    const double along = fabsf(size_y * rx * slope);
    return {slope, float(std::max(across, along + across))};
}

bool clip_box(const Path& path, float rx, float ry, s32 width, s32 height, Box& box) {
    // Round outwards.
    box.x_lo = to_int(floor_of(std::min(path.from[0], path.to[0]) - rx));
    box.y_lo = to_int(floor_of(std::min(path.from[1], path.to[1]) - ry));
    box.x_hi = wrapping_increment(to_int(floor_of(std::max(path.from[0], path.to[0]) + rx)));
    box.y_hi = wrapping_increment(to_int(floor_of(std::max(path.from[1], path.to[1]) + ry)));

    // Reject.
    if (box.x_hi < 0 || box.x_lo >= width || box.y_hi < 0 || box.y_lo >= height)
        return false;

    // Clip.
    box.x_lo = std::min(std::max(box.x_lo, 0), width - 1);
    box.x_hi = std::min(box.x_hi, width - 1);
    box.y_lo = std::min(std::max(box.y_lo, 0), height - 1);
    box.y_hi = std::min(box.y_hi, height - 1);
    return box.y_hi >= box.y_lo;
}

bool row_is_written(s32 iy, op_stars_lines lines) {
    if (lines == OP_STARS_LINES_ALL)
        return true;
    return lines == OP_STARS_LINES_EVEN ? iy % 2 == 0 : iy % 2 != 0;
}

// The order of the comparisons makes the span of a NaN row centre empty.
Span row_span(const Path& path, const RowGeometry& rows, const Box& box, float Y) {
    // Row centre. The test is signed: a nearly flat path that falls to the left follows its line.
    const float xc = rows.slope < steepest_slope
                         ? path.from[0] + (Y + path.mid[1] - path.from[1]) * rows.slope
                         : path.mid[0];
    // Span.
    const float xs = std::max(xc - rows.half_width, float(box.x_lo));
    const float xe = std::min(float(box.x_hi), xc + rows.half_width);
    const float first = floor_of(xs);
    return {to_int(first), first - path.mid[0], ceil_of(xe) - path.mid[0]};
}

} // namespace velmora
