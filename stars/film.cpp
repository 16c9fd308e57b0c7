// SPDX-License-Identifier: BSD-3-Clause
#include "stars/film.h"

#include <cmath>

namespace velmora {

void set_film_window(StarRendererData& data, double horizontal_aperture, double vertical_aperture) {
    data.left = -horizontal_aperture / 2;
    data.right = horizontal_aperture / 2;
    data.bottom = -vertical_aperture / 2;
    data.top = vertical_aperture / 2;
}

void set_default_film_window(StarRendererData& data, int width, int height) {
    const double aspect = double(width) / double(height);
    data.left = -aspect;
    data.right = aspect;
    data.bottom = -1;
    data.top = 1;
}

double film_stretch(const StarRendererData& data, int width, int height) {
    const double image_shape = double(width) / double(height);
    const double film_shape = std::fabs(data.right - data.left) / std::fabs(data.bottom - data.top);
    return image_shape / film_shape;
}

} // namespace velmora
