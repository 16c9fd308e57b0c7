// SPDX-License-Identifier: BSD-3-Clause
#include "tools/pictures/tone.h"

#include "core/srgb.h"

#include <algorithm>
#include <cmath>

namespace velmora {

static std::uint8_t byte_of(double linear) {
    return std::uint8_t(std::lround(255.0 * srgb_of_linear(linear)));
}

// Light that is negative or not a number is none.
static double light_of(float channel) {
    return channel > 0.0f ? double(channel) : 0.0;
}

std::array<std::uint8_t, 3> display_color(float red, float green, float blue, double exposure) {
    const double channels[3] = {light_of(red), light_of(green), light_of(blue)};
    const double largest = *std::max_element(channels, channels + 3);
    std::array<std::uint8_t, 3> shown = {0, 0, 0};
    if (largest == 0.0)
        return shown;

    // Compress the largest channel; the others keep their share of it, and so the hue.
    const bool endless = std::isinf(largest);
    const double level = endless ? 1.0 : -std::expm1(-largest * std::exp2(exposure));
    for (std::size_t k = 0; k < 3; k++) {
        const double share =
            endless ? (std::isinf(channels[k]) ? 1.0 : 0.0) : channels[k] / largest;
        shown[k] = byte_of(share * level);
    }
    return shown;
}

} // namespace velmora
