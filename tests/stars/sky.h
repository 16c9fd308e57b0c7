// SPDX-License-Identifier: BSD-3-Clause

// Small skies for the tests: star files in folders of their own, star inputs in memory, cameras and
// parameters that leave the stars as they are.
#pragma once

#include "stars/stars.h"
#include "tests/scratch_folder.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace stars_test {

inline star make_star(double ra, double dec, float flux, int red = 255, int green = 255,
                      int blue = 255, double distance = 0) {
    star s;
    s.ra = ra;
    s.dec = dec;
    s.flux = flux;
    s.red = static_cast<unsigned char>(red);
    s.green = static_cast<unsigned char>(green);
    s.blue = static_cast<unsigned char>(blue);
    s.reserved = 0xee;
    s.distance = distance;
    return s;
}

// The star that a camera of identity matrix has in the middle of its image.
inline star star_ahead(float flux = 1) {
    return make_star(90, 0, flux);
}

// A header: the magic and 24 reserved bytes.
inline std::string header_bytes(const char* magic = "VELMORA1") {
    return std::string(magic, 8) + std::string(24, '\xee');
}

inline std::string star_bytes(const star& s) {
    char bytes[32];
    std::memcpy(bytes, &s, sizeof bytes);
    return std::string(bytes, sizeof bytes);
}

inline std::string sky_bytes(const char* magic, const std::vector<star>& stars) {
    std::string bytes = header_bytes(magic);
    for (const star& s : stars)
        bytes += star_bytes(s);
    return bytes;
}

// Stars in memory that count how often they are asked for.
class CountingInput : public StarInput {
public:
    int taken = 0;  // calls of next()
    int resets = 0; // calls of reset()

    explicit CountingInput(const std::vector<star>& stars, const char* magic = "VELMORA1") {
        const std::string bytes = sky_bytes(magic, stars);
        records.resize(bytes.size() / sizeof(star));
        std::memcpy(static_cast<void*>(records.data()), bytes.data(), bytes.size());
        count = u32(records.size());
    }

    const star* next() override {
        taken++;
        return &records.at(position++);
    }

    void reset() override {
        resets++;
        position = 0;
    }

private:
    std::vector<star> records;
    size_t position = 0;
};

inline DblMatrix4 identity() {
    return DblMatrix4::the_identity();
}

// A camera at the origin that looks along +z, or with another matrix.
inline camera make_camera(const DblMatrix4& matrix = identity(), double focal = 1) {
    camera c;
    c.matrix = matrix;
    c.focal = focal;
    c.near = 0.1f;
    c.far = -1;
    return c;
}

// The row-vector matrix that turns points by `degrees` about the y axis, from +z towards +x.
inline DblMatrix4 turn_about_y(double degrees) {
    const double angle = degrees * 3.141592653589793 / 180;
    DblMatrix4 m = identity();
    m(0, 0) = std::cos(angle);
    m(0, 2) = -std::sin(angle);
    m(2, 0) = std::sin(angle);
    m(2, 2) = std::cos(angle);
    return m;
}

inline Array<camera> cameras(const std::vector<camera>& list) {
    Array<camera> all;
    for (const camera& c : list)
        all.append(c);
    return all;
}

// Parameters under which a star of flux f has a peak of 4 f: nothing is biased, capped, tinted or
// desaturated. The film window is ±1 by ±1, spots are `size` pixels wide in an image of `width`.
inline StarRendererData plain_data(int width, double size = 2) {
    StarRendererData d = {};
    d.left = -1;
    d.right = 1;
    d.bottom = -1;
    d.top = 1;
    d.spot_width = d.star_size = size * 2000 / width;
    d.lum_threshold = 0;
    d.lum_max = 1e30;
    d.brightness = 1;
    d.saturation = 1;
    d.bias_exponent = 1;
    d.projection = OP_STARS_HEMISPHERICAL;
    d.lines = OP_STARS_LINES_ALL;
    return d;
}

} // namespace stars_test
