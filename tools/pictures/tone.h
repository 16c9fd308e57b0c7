// SPDX-License-Identifier: BSD-3-Clause

// The display transform of 8-bit pictures: exposure, a shoulder that keeps the hue, sRGB encoding.
//
// For a linear colour c with largest channel m, exposed by E stops:
//
//     d = c / m * (1 - exp(-m * 2^E))                    0 for m = 0; never clips
//     s = 12.92 d                    for d <= 0.0031308  (IEC 61966-2-1)
//       = 1.055 d^(1/2.4) - 0.055    above
//     byte = round(255 s)
//
// Shapes:    negative channels and those that are not numbers count as 0. Where channels are
//            infinite, they show as 255 and the finite ones as 0, the formula's limit.
// Accuracy:  computed in double.
// Threads:   pure functions.
#pragma once

#include <array>
#include <cstdint>

namespace velmora {

// Red, green and blue to show for linear ones. `exposure` is in stops, any number.
std::array<std::uint8_t, 3> display_color(float red, float green, float blue, double exposure);

} // namespace velmora
