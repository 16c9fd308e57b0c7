// SPDX-License-Identifier: BSD-3-Clause

// Which stars put light into one pixel of a frame, and how much each.
//
// The frame's stars are drawn once more, one after the other in the order of the file, and the pixel
// is looked at after each: a star is listed when the pixel's floats have changed. One whose light is
// too faint to change a float, after what was there before, is not.
//
// Units:     pixels, x right, y down from the top row; linear light.
// Errors:    what the renderer throws.
#pragma once

#include "tools/comp/view.h"

#include <array>
#include <vector>

namespace velmora {

typedef std::array<float, 3> Light; // red, green, blue

struct TracedStar {
    u32 record; // its number in the file; the first star is 1
    star bytes; // as the file has them
    StarTrace trace;
    Light before, after; // the pixel, before and after it was drawn

    // The differences of floats, which a double holds.
    std::array<double, 3> added() const;
};

struct PixelTrace {
    star header = {};           // the file's first record
    bool has_distances = false; // whether the file is of the version that has them
    std::vector<TracedStar> stars;

    // The pixel after the last star.
    Light light() const { return stars.empty() ? Light{0, 0, 0} : stars.back().after; }
};

// Reads all of `input`, which is at its header. The pixel lies inside the image.
PixelTrace trace_pixel(const View& view, StarInput& input, int x, int y,
                       KernelLevel level = kernel_level());

} // namespace velmora
