// Gaussian spots and the streaks they leave while they move, added into a float framebuffer.
//
// Units:     positions and sizes in pixels, x right, y down from the top row; pixel (x, y) is
//            sampled at exactly (x, y). A spot at P has the profile
//                amplitude * exp(-(dx / size_x)^2 - (dy / size_y)^2),  (dx, dy) = pixel - P,
//            so it carries amplitude * pi * size_x * size_y of light. A streak is the time average
//            of the spot moving evenly from `from` to `to`: the profile's line integral along the
//            segment, in closed form with the error function, divided by the segment's length.
// Shapes:    the footprint reaches k = sqrt(ln(6250 * amplitude)) sizes beyond the segment's
//            bounding box, to where the profile has fallen to 1/6250, rounded outwards to whole
//            pixels. Along a sloping path a row's span is k * size_x * (size_x + size_y * |slope|)
//            to either side: narrower than the reach for sizes below one pixel, so callers keep
//            them at 1 or above.
// Errors:    AssertXception only, for an image without columns or rows. A star too faint,
//            outside the image or at a position that is not a number draws nothing and gives
//            false, and so does an amplitude that is infinite. Ends so far apart that the square of
//            their distance overflows (1e19 pixels) can leave values that are not numbers.
// Threads:   no state; calls that write disjoint rows may run at once.
#pragma once

#include "core/newmatrix.h"

#include <cstddef>

// Which rows a call may write, for video rendered field by field; other values act as ODD.
enum op_stars_lines : s32 {
    OP_STARS_LINES_ALL = 0,
    OP_STARS_LINES_EVEN = 1,
    OP_STARS_LINES_ODD = 2,
};

// A view of a float image with coverage; it owns nothing. Pixel (x, y) of a plane stands
// y * row_stride + x * pixel_stride floats from its pointer. Row 0 is the top row.
struct StarFramebuffer {
    float* red;
    float* green;
    float* blue;
    float* alpha; // coverage: only read, stars are added behind it
    s32 width;    // pixels in a row
    s32 height;   // rows
    s32 row_stride;
    s32 pixel_stride;
};

static_assert(offsetof(StarFramebuffer, alpha) == 3 * sizeof(float*) &&
                  offsetof(StarFramebuffer, width) == 4 * sizeof(float*) &&
                  sizeof(StarFramebuffer) == 4 * sizeof(float*) + 4 * sizeof(s32),
              "four planes, then four numbers");

// Adds (1 - alpha) * profile * color to every pixel of the footprint that is not covered
// (alpha >= 1). A path of up to 1e-5 pixels is a spot at its midpoint. Returns whether any pixel
// got a contribution above zero, whatever its colour.
bool op_star_streak(const StarFramebuffer& dst, const Vector2& from, const Vector2& to,
                    float amplitude, const Color3& color, float size_x, float size_y,
                    op_stars_lines lines);
