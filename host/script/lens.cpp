// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/lens.h"

#include "host/script/angles.h"

#include <cmath>

namespace velmora::host {

double focal_of_fov(double fov, double aperture) {
    // Half the aperture is seen at half the angle: tan(fov / 2) = (aperture / 2) / focal length.
    return aperture / (2.0 * std::tan(fov * radians_per_degree / 2.0));
}

} // namespace velmora::host
