// SPDX-License-Identifier: BSD-3-Clause
#include "core/srgb.h"

#include <cmath>

namespace velmora {

// Linear near black, where the power function alone would be too steep.
double srgb_of_linear(double linear) {
    if (linear <= 0.0031308)
        return 12.92 * linear;
    return 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
}

} // namespace velmora
