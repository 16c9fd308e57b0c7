// From a catalogue record to linear light and a direction.
//
// Units:     angles in degrees, luminance and colours linear, in single precision; directions are
//            unit vectors with the catalogue's pole at +y.
// Threads:   pure functions.
// Source:    the sRGB decoding curve is IEC 61966-2-1, with the threshold 0.03928 of its drafts.
#pragma once

#include "stars/stars.h"

namespace velmora {

// The flux to the power `bias_exponent`, capped at `lum_max`. Not-a-number passes through.
float shaded_luminance(float flux, const StarRendererData& data);

// The record's colour in linear light, tinted, then blended towards mid grey.
Color3 shaded_color(const star& s, const StarRendererData& data);

// The same two for the fast kernels: the power is steady_pow's, and colour bytes go through a table
// of what the formula gives for each.
float steady_luminance(float flux, const StarRendererData& data);
Color3 steady_color(const star& s, const StarRendererData& data);

// (cos dec · cos ra, sin dec, cos dec · sin ra).
VectorN<double, 3> scene_direction(const star& s);

// What is left of 1 / distance without parallax / 100, never below 0, which is infinitely far.
double inverse_distance(bool has_distance, double distance, double parallax);

} // namespace velmora
