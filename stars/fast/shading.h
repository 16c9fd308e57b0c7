// SPDX-License-Identifier: BSD-3-Clause

// From a catalogue record to linear light, the same on every machine.
//
// Units:     luminance and colours linear, in single precision.
// Accuracy:  the plain reading's arithmetic, but for the powers, which are steady_pow's.
// Threads:   pure functions.
#pragma once

#include "stars/render_data.h"
#include "stars/starfile.h"

namespace velmora {

// The flux to the power `bias_exponent`, capped at `lum_max`. A NaN passes through.
float steady_luminance(float flux, const StarRendererData& data);

// The record's colour in linear light, tinted, then blended towards mid grey.
Color3 steady_color(const star& s, const StarRendererData& data);

} // namespace velmora
