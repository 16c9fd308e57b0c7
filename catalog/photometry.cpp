// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/photometry.h"

#include "core/srgb.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velmora {

double flux_of_magnitude(double v) {
    return std::pow(10.0, -0.4 * v);
}

double magnitude_of_flux(double flux) {
    return -2.5 * std::log10(flux);
}

// Ballesteros' formula, within the range of B-V.
double temperature_of_bv(double bv) {
    const double b = 0.92 * std::clamp(bv, bluest_bv, reddest_bv);
    return 4600 * (1 / (b + 1.7) + 1 / (b + 0.62));
}

struct Xyz {
    double x, y, z;
};

// A Gaussian lobe with the standard deviation `left` below its centre and `right` above it.
static double lobe(double nm, double center, double left, double right) {
    const double t = (nm - center) / (nm < center ? left : right);
    return std::exp(-0.5 * t * t);
}

// The CIE 1931 2-degree observer.
static Xyz color_matching(double nm) {
    return {1.056 * lobe(nm, 599.8, 37.9, 31.0) + 0.362 * lobe(nm, 442.0, 16.0, 26.7) -
                0.065 * lobe(nm, 501.1, 20.4, 26.2),
            0.821 * lobe(nm, 568.8, 46.9, 40.5) + 0.286 * lobe(nm, 530.9, 16.3, 31.1),
            1.217 * lobe(nm, 437.0, 11.8, 36.0) + 0.681 * lobe(nm, 459.0, 26.0, 13.8)};
}

// Planck's law per unit of wavelength, without the factor that all wavelengths share.
static double black_body(double nm, double kelvin) {
    const double second_radiation_constant = 1.438776877e7; // hc/k in nm K
    return std::pow(nm / 560, -5) / std::expm1(second_radiation_constant / (nm * kelvin));
}

static const int shortest_nm = 360;
static const int step_nm = 5;
static const int sample_count = 95; // up to 830 nm

// The observer at the sampled wavelengths, computed once.
static std::array<Xyz, sample_count> sampled_color_matching() {
    std::array<Xyz, sample_count> samples;
    for (int i = 0; i < sample_count; i++)
        samples[i] = color_matching(shortest_nm + i * step_nm);
    return samples;
}

// The spectrum times the observer's sensitivity, summed over the samples.
static Xyz xyz_of_black_body(double kelvin) {
    static const std::array<Xyz, sample_count> matching = sampled_color_matching();
    Xyz sum = {0, 0, 0};
    for (int i = 0; i < sample_count; i++) {
        const double power = black_body(shortest_nm + i * step_nm, kelvin);
        sum.x += power * matching[i].x;
        sum.y += power * matching[i].y;
        sum.z += power * matching[i].z;
    }
    return sum;
}

// A linear channel in [0, 1], encoded and rounded.
static unsigned char srgb_byte(double linear) {
    return static_cast<unsigned char>(std::lround(255 * srgb_of_linear(linear)));
}

ColorBytes color_of_temperature(double kelvin) {
    const Xyz c = xyz_of_black_body(std::clamp(kelvin, coolest, hottest));

    // To linear sRGB with its D65 white; colours outside its gamut are clipped to its edge.
    const double red = std::max(0.0, 3.2406 * c.x - 1.5372 * c.y - 0.4986 * c.z);
    const double green = std::max(0.0, -0.9689 * c.x + 1.8758 * c.y + 0.0415 * c.z);
    const double blue = std::max(0.0, 0.0557 * c.x - 0.2040 * c.y + 1.0570 * c.z);

    // Scale the brightest channel to 1, then encode: the record's flux carries the brightness.
    const double largest = std::max({red, green, blue});
    return {srgb_byte(red / largest), srgb_byte(green / largest), srgb_byte(blue / largest)};
}

ColorBytes color_of_bv(double bv) {
    return color_of_temperature(temperature_of_bv(bv));
}

} // namespace velmora
