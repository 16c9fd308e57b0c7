#include "host/script/lens.h"

#include "host/script/angles.h"

#include <cmath>

namespace velmora::host {

double focal_of_fov(double fov, double aperture) {
    return aperture / (2.0 * std::tan(fov * radians_per_degree / 2.0));
}

} // namespace velmora::host
