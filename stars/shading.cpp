#include "stars/shading.h"
#include "stars/steady_math.h"

#include <cmath>

namespace velmora {

static const float radians_per_degree = 0.017453292f;

template <class Power>
static float srgb_to_linear(int byte, Power power) {
    const float c = float(byte) * 0.003921568859368563f;
    if (c <= 0.03928f)
        return c * 0.07739938f;
    return power((c + 0.055f) * 0.9478673f, 2.4f);
}

template <class Power>
static float luminance_of(float flux, const StarRendererData& data, Power power) {
    float lum = flux;
    if (data.bias_exponent != 1.0)
        lum = power(lum, float(data.bias_exponent));
    if (double(lum) > data.lum_max)
        lum = float(data.lum_max);
    return lum;
}

static Color3 tinted(Color3 color, const StarRendererData& data) {
    const float tint = float(data.tint_strength);
    const float saturation = float(data.saturation);
    for (int k = 0; k < 3; k++) {
        color[k] = color[k] * (1 - tint) + data.tint_color[k] * tint;
        color[k] = 0.5f * (1 - saturation) + color[k] * saturation;
    }
    return color;
}

float shaded_luminance(float flux, const StarRendererData& data) {
    return luminance_of(flux, data, powf);
}

Color3 shaded_color(const star& s, const StarRendererData& data) {
    return tinted({{srgb_to_linear(s.red, powf), srgb_to_linear(s.green, powf),
                    srgb_to_linear(s.blue, powf)}},
                  data);
}

namespace {
struct LinearBytes {
    float of[256];

    LinearBytes() {
        for (int byte = 0; byte < 256; byte++)
            of[byte] = srgb_to_linear(byte, steady_pow);
    }
};
} // namespace

float steady_luminance(float flux, const StarRendererData& data) {
    return luminance_of(flux, data, steady_pow);
}

Color3 steady_color(const star& s, const StarRendererData& data) {
    static const LinearBytes linear;
    return tinted({{linear.of[s.red], linear.of[s.green], linear.of[s.blue]}}, data);
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
