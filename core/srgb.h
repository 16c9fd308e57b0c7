// The sRGB transfer curve.
//
// Source:    IEC 61966-2-1.
#pragma once

namespace velmora {

// Encodes a linear value in [0, 1].
double srgb_of_linear(double linear);

} // namespace velmora
