// SPDX-License-Identifier: BSD-3-Clause

// A view of a float image as a renderer leaves it; it owns nothing.
#pragma once

#include <cstddef>

namespace velmora {

struct FloatPicture {
    int width;           // pixels, at least 1
    int height;          // rows, at least 1
    const float* pixels; // alpha, red, green, blue of each pixel; rows back to back, the top first

    const float* pixel(int x, int y) const {
        return pixels + 4 * (std::size_t(y) * std::size_t(width) + std::size_t(x));
    }
};

} // namespace velmora
