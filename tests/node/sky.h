// SPDX-License-Identifier: BSD-3-Clause

// Star databases for the node's tests: small skies around the direction that a node without camera,
// and a camera that nobody has moved, look along.
#pragma once

#include "tests/stars/dice.h"
#include "tests/stars/sky.h"

namespace node_test {

// Stars all over the picture, of every colour, some of them near; others for every seed.
inline std::vector<star> scattered_stars(int count, unsigned seed = 1) {
    stars_test::Dice dice(seed);
    std::vector<star> stars;
    for (int i = 0; i < count; i++) {
        const double ra = 90 + dice.between(-25, 25), dec = dice.between(-18, 18);
        const float flux = float(dice.log_between(1e-3, 10));
        const int red = dice.below(256), green = dice.below(256), blue = dice.below(256);
        const double distance = dice.below(2) ? dice.between(1, 50) : 0;
        stars.push_back(stars_test::make_star(ra, dec, flux, red, green, blue, distance));
    }
    return stars;
}

inline std::string sky(int count, unsigned seed = 1, const char* magic = "VELMORA1") {
    return stars_test::sky_bytes(magic, scattered_stars(count, seed));
}

} // namespace node_test
