#include "stars/setup.h"

#include <cmath>

namespace velmora {

bool image_fits(int width, int height) {
    const u64 pixel_size = 4 * sizeof(float), limit = u64(1) << 32;
    return width > 0 && height > 0 && u64(width) * u64(height) < limit / pixel_size;
}

int camera_samples(int blur_segs) {
    return blur_segs > 0 && blur_segs <= most_blur_segs ? blur_segs + 1 : 1;
}

double sample_time(double frame, int n, int blur_segs, double shutter, double shutter_offset) {
    if (blur_segs < 1)
        return frame;
    return frame + n * shutter / blur_segs + shutter_offset;
}

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

camera camera_of_host(const float columns[16], double focal) {
    // Read in memory order the column-vector matrix is its own row-vector transpose.
    DblMatrix4 to_world;
    for (int i = 0; i < 16; i++)
        to_world.e[i] = columns[i];

    for (int i = 0; i < 4; i++) {
        if (i == 2)
            continue;
        to_world(i, 2) = -to_world(i, 2);
        to_world(2, i) = -to_world(2, i);
    }

    camera cam;
    cam.matrix = to_world.inverse();
    cam.focal = focal;
    cam.near = 0.1f;
    cam.far = -1.0;
    return cam;
}

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

StarFramebuffer framebuffer_of(const Kess::Image& image) {
    float* pixels = reinterpret_cast<float*>(image.data);
    StarFramebuffer fb;
    fb.alpha = pixels;
    fb.red = pixels + 1;
    fb.green = pixels + 2;
    fb.blue = pixels + 3;
    fb.width = image.width;
    fb.height = image.height;
    fb.row_stride = s32(image.stride / sizeof(float));
    fb.pixel_stride = 4;
    return fb;
}

} // namespace velmora
