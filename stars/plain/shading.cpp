// SPDX-License-Identifier: BSD-3-Clause
#include "stars/plain/shading.h"

#include <cmath>

namespace velmora {

static const float radians_per_degree = 0.017453292f;

float shaded_luminance(float flux, const StarRendererData& data) {
    // Bias.
    float lum = flux;
    if (data.bias_exponent != 1.0)
        lum = powf(lum, float(data.bias_exponent));

    // Cap.
    if (double(lum) > data.lum_max)
        lum = float(data.lum_max);
    return lum;
}

static float srgb_to_linear(int byte) {
    const float c = float(byte) * 0.003921568859368563f;
    if (c <= 0.03928f)
        return c * 0.07739938f;
    return powf((c + 0.055f) * 0.9478673f, 2.4f);
}

Color3 shaded_color(const star& s, const StarRendererData& data) {
    Color3 color = {{srgb_to_linear(s.red), srgb_to_linear(s.green), srgb_to_linear(s.blue)}};
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

VectorN<double, 3> scene_direction(const star& s) {
    double sin_ra, cos_ra, sin_dec, cos_dec;
    sincos(double(float(s.ra) * radians_per_degree), &sin_ra, &cos_ra);
    sincos(double(float(s.dec) * radians_per_degree), &sin_dec, &cos_dec);
    return {{cos_dec * cos_ra, sin_dec, sin_ra * cos_dec}};
}

double inverse_distance(bool has_distance, double distance, double parallax) {
    const double left = (has_distance ? 1 / distance : 0) - parallax * 0.01;
    return left >= 0 ? left : 0;
}

} // namespace velmora
