// SPDX-License-Identifier: BSD-3-Clause

// Where a star is drawn: the path that its spot takes, and the rows and columns that it reaches.
// Both rasterisers use it, so that they visit the same pixels.
//
//         x_lo                            x_hi
//     y_lo  . . . . . . . . . . . . . . . .      the box: the path and its reach, clipped to the image
//           . . [- - from - - - -] . . . .
//           . . . . [- - - - - - - -] . . .      a row's span: half_width to each side of the path
//           . . . . . . [- - - - to -] . .
//     y_hi  . . . . . . . . . . . . . . . .
//
// Units:     pixels, as in streak.h.
// Errors:    none: NaN or huge positions and sizes end in empty boxes and spans.
// Threads:   pure functions.
#pragma once

#include "core/newmatrix.h"
#include "stars/framebuffer.h"

namespace velmora {

// The spot's straight way during the exposure. Pixel offsets are relative to its midpoint.
struct Path {
    Vector2 from, to, mid;
    float ux, uy; // unit direction, 0 when `from` is `to`
    float length;

    Path() {}
    Path(const Vector2& from, const Vector2& to);

    // A path of up to 1e-5 pixels is a spot at its midpoint.
    bool is_streak() const { return length > 1e-5f; }

    // False when a coordinate is NaN: such a path has no pixels.
    bool is_somewhere() const { return mid[0] == mid[0] && mid[1] == mid[1]; }
};

// Rows [y_lo, y_hi] and columns [x_lo, x_hi] of the image that the footprint can touch.
struct Box {
    s32 x_lo, y_lo, x_hi, y_hi;
};

// How a row's span follows the path.
struct RowGeometry {
    float slope;      // columns per row
    float half_width; // of the span around the row centre

    // Whether every row spans the whole box.
    bool is_flat() const { return half_width == 1e20f; }
};

// A footprint row: pixel ix is at offset X from the midpoint, and both are counted up until X exceeds
// X_end.
struct Span {
    s32 ix;
    float X, X_end;
};

// Floats are whole numbers from 2^23 on, and from 2^24 on adding 1.0 may give the same float again:
// offsets below it grow, beyond it a row never reaches its end.
constexpr float whole_from = 0x1p23f;
constexpr float counting_limit = 0x1p24f;

// The footprint ends where the profile of unit intensity has fallen to 1 / this.
constexpr float reach_intensity = 6250;

// Finds the box of a reach of rx columns and ry rows around the path, clipped to the image. False
// when it is empty.
bool clip_box(const Path& path, float rx, float ry, s32 width, s32 height, Box& box);

// How the row spans follow a path whose reach is rx columns.
RowGeometry row_geometry(const Path& path, float rx, float size_x, float size_y);

// The columns around the path at row offset Y. A span that starts outside the integers has an `ix` of
// INT_MIN and is empty.
Span row_span(const Path& path, const RowGeometry& rows, const Box& box, float Y);

// Whether a call for `lines` may write row iy.
bool row_is_written(s32 iy, op_stars_lines lines);

} // namespace velmora
