// SPDX-License-Identifier: BSD-3-Clause
#include "stars/render_data.h"

namespace velmora {

op_stars_projection projection_of_index(int index) {
    switch (index) {
    case 1:
        return OP_STARS_HEMISPHERICAL;
    case 2:
        return OP_STARS_AZIMUTHAL_EQUIDISTANT;
    default:
        return OP_STARS_PERSPECTIVE;
    }
}

double bias_exponent_of(double bias) {
    return bias == 0 ? 100.0 : 1 / bias;
}

} // namespace velmora
