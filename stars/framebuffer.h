// SPDX-License-Identifier: BSD-3-Clause

// The float image that stars are added into, and which of its rows may be written.
//
// Ownership: a StarFramebuffer is a view; the image must outlive it.
// Threads:   plain values and pure functions.
#pragma once

#include "core/types.h"

#include <cstddef>

namespace Kess {
class Image;
}

// Which rows a call may write, for video rendered field by field; other values act as ODD.
enum op_stars_lines : s32 {
    OP_STARS_LINES_ALL = 0,
    OP_STARS_LINES_EVEN = 1,
    OP_STARS_LINES_ODD = 2,
};

// A view of a float image with coverage. Sample (x, y) of a plane lies
// y * row_stride + x * pixel_stride floats after its pointer. Row 0 is the top row.
struct StarFramebuffer {
    float* red;
    float* green;
    float* blue;
    float* alpha; // coverage: only read, stars show where it leaves room
    s32 width;    // pixels in a row
    s32 height;   // rows
    s32 row_stride;
    s32 pixel_stride;
};

static_assert(offsetof(StarFramebuffer, alpha) == 3 * sizeof(float*) &&
                  offsetof(StarFramebuffer, width) == 4 * sizeof(float*) &&
                  sizeof(StarFramebuffer) == 4 * sizeof(float*) + 4 * sizeof(s32),
              "four planes, then four numbers");

namespace velmora {

// Whether a width x height image has pixels and takes less than 4 GiB at four floats per pixel.
bool image_fits(int width, int height);

// The view of a BGRA_FLOAT image, whose four floats per pixel are alpha, red, green and blue here.
StarFramebuffer framebuffer_of(const Kess::Image& image);

} // namespace velmora
