// SPDX-License-Identifier: BSD-3-Clause
#include "stars/fast/shading.h"
#include "stars/fast/steady_math.h"

namespace velmora {

float steady_luminance(float flux, const StarRendererData& data) {
    // Bias.
    float lum = flux;
    if (data.bias_exponent != 1.0)
        lum = steady_pow(lum, float(data.bias_exponent));

    // Cap.
    if (double(lum) > data.lum_max)
        lum = float(data.lum_max);
    return lum;
}

static float srgb_to_linear(int byte) {
    const float c = float(byte) * 0.003921568859368563f;
    if (c <= 0.03928f)
        return c * 0.07739938f;
    return steady_pow((c + 0.055f) * 0.9478673f, 2.4f);
}

namespace {
struct LinearBytes {
    float of[256];

    LinearBytes() {
        for (int byte = 0; byte < 256; byte++)
            of[byte] = srgb_to_linear(byte);
    }
};
} // namespace

Color3 steady_color(const star& s, const StarRendererData& data) {
    // A table of what the formula gives for each byte.
    static const LinearBytes linear;
    Color3 color = {{linear.of[s.red], linear.of[s.green], linear.of[s.blue]}};
    const float tint = float(data.tint_strength);
    const float saturation = float(data.saturation);
    for (int k = 0; k < 3; k++) {
        // Tint.
        color[k] = color[k] * (1 - tint) + data.tint_color[k] * tint;
        // Saturation: towards mid grey, whatever the star's luminance.
        color[k] = 0.5f * (1 - saturation) + color[k] * saturation;
    }
    return color;
}

} // namespace velmora
