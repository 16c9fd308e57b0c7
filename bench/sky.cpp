// SPDX-License-Identifier: BSD-3-Clause
#include "bench/sky.h"

#include "stars/film.h"
#include "stars/host_camera.h"

#include <cmath>
#include <cstring>
#include <random>

namespace velmora {

static const double degrees_per_radian = 57.295779513082323;

MemoryStars::MemoryStars(const std::vector<star>& stars) : records(1) {
    std::memcpy(&records[0], "VELMORA2", 8);
    records.insert(records.end(), stars.begin(), stars.end());
    count = u32(records.size());
    cursor = records.data();
}

std::vector<star> made_up_sky(std::size_t count) {
    std::mt19937_64 random(20130610);
    const auto uniform = [&random] { return (double(random() >> 11) + 0.5) / 9007199254740992.0; };

    std::vector<star> stars(count);
    for (star& s : stars) {
        s.ra = 360 * uniform();
        s.dec = std::asin(2 * uniform() - 1) * degrees_per_radian;
        s.flux = float(0.0001 * std::pow(2 * uniform(), -0.8));
        s.red = static_cast<unsigned char>(155 + 100 * uniform());
        s.green = 210;
        s.blue = static_cast<unsigned char>(155 + 100 * uniform());
        s.distance = 1000 * uniform();
    }
    return stars;
}

StarRendererData default_render_data(int width, int height) {
    StarRendererData data = {};
    set_film_window(data, 24.576, 24.576 * height / width);
    data.spot_width = data.star_size = 2.5;
    data.lum_threshold = 0.0001;
    data.lum_max = 0.5;
    data.brightness = 5;
    data.saturation = 0.4;
    data.bias_exponent = 1;
    data.parallax = 100;
    data.threed = true;
    return data;
}

camera panned_camera(double degrees, double focal) {
    const double angles[3] = {(30 + degrees) / degrees_per_radian, 0.2, 0};
    camera cam;
    cam.matrix = DblMatrix4::from_euler_angles(angles).inverse();
    cam.focal = focal;
    cam.near = 0.1f;
    cam.far = -1;
    return cam;
}

BenchImage::BenchImage(int width, int height)
    : image(Kess::ImageSpec(width, height, Kess::ImageSpec::BGRA_FLOAT)),
      fb(framebuffer_of(image)) {
    clear();
}

double BenchImage::light() const {
    double sum = 0;
    for (int y = 0; y < fb.height; y++)
        for (int x = 0; x < fb.width; x++)
            sum += double(fb.red[y * fb.row_stride + x * fb.pixel_stride]);
    return sum;
}

} // namespace velmora
