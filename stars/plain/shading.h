// SPDX-License-Identifier: BSD-3-Clause

// From a catalogue record to linear light and a direction: the plain reading.
//
// Units:     angles in degrees, luminance and colours linear, in single precision; directions are
//            unit vectors with the catalogue's pole at +y.
// Threads:   pure functions.
// Source:    the sRGB decoding curve is IEC 61966-2-1, with the threshold 0.03928 of its drafts.
#pragma once

#include "stars/render_data.h"
#include "stars/starfile.h"

namespace velmora {

// The flux to the power `bias_exponent`, capped at `lum_max`. A NaN passes through.
float shaded_luminance(float flux, const StarRendererData& data);

// The record's colour in linear light, tinted, then blended towards mid grey.
Color3 shaded_color(const star& s, const StarRendererData& data);

// (cos dec · cos ra, sin dec, cos dec · sin ra).
VectorN<double, 3> scene_direction(const star& s);

// max(0, 1/distance - parallax/100), without the first term when there is no distance; 0 is
// infinitely far, and so is a NaN.
double inverse_distance(bool has_distance, double distance, double parallax);

} // namespace velmora
