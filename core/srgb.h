// SPDX-License-Identifier: BSD-3-Clause

// The sRGB transfer curve.
//
// Errors:    none; outside [0, 1] the curve is continued by the same formula.
// Threads:   pure functions.
// Source:    IEC 61966-2-1.
#pragma once

namespace velmora {

// Encodes a linear value in [0, 1].
double srgb_of_linear(double linear);

} // namespace velmora
