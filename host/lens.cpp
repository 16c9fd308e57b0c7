#include "host/lens.h"

#include <cmath>

namespace velmora {

static const double radians_per_degree = 0.017453292519943295;

double focal_of_fov(double fov, double aperture) {
    return aperture / (2.0 * std::tan(fov * radians_per_degree / 2.0));
}

double fov_of_focal(double focal, double aperture) {
    return 2.0 * std::atan(aperture / (2.0 * focal)) / radians_per_degree;
}

} // namespace velmora
