// SPDX-License-Identifier: BSD-3-Clause

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
// Errors:    AssertXception only, for an image without columns or rows. A star too faint, outside
//            the image or at a NaN position draws nothing and gives false, and so does an infinite
//            amplitude. Ends so far apart that the square of their distance overflows (1e19 pixels)
//            can leave NaN values.
// Accuracy:  as accuracy.h states, for the plain reading and the fast kernels.
// Threads:   no state but the process's kernel level (kernels.h); calls that write disjoint rows may
//            run at once.
#pragma once

#include "core/newmatrix.h"
#include "stars/framebuffer.h"

// Adds (1 - alpha) * profile * color to every pixel of the footprint that is not covered
// (alpha >= 1). A path of up to 1e-5 pixels is a spot at its midpoint. Returns whether any pixel
// got a contribution above zero, whatever its colour.
bool op_star_streak(const StarFramebuffer& dst, const Vector2& from, const Vector2& to,
                    float amplitude, const Color3& color, float size_x, float size_y,
                    op_stars_lines lines);
