// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/lens.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::host;

// A few roundings in double.
static const double tolerance = 1e-13;

TEST(Lens, SeesTheApertureUnderTheFieldOfView) {
    const struct {
        double fov, aperture, focal;
    } cases[] = {
        {90, 24.576, 12.288},    // tan 45° = 1
        {60, 2, std::sqrt(3.0)}, // tan 30° = 1 / sqrt 3
        {120, 18.672, 9.336 / std::sqrt(3.0)},
        {45, 2, 1 + std::sqrt(2.0)}, // tan 22.5° = sqrt 2 - 1
    };
    for (const auto& c : cases)
        EXPECT_NEAR(focal_of_fov(c.fov, c.aperture) / c.focal, 1, tolerance) << c.fov;
}

TEST(Lens, IsUndoneByTheArcTangent) {
    for (double fov = 1; fov < 180; fov += 1) {
        const double back = 2 * std::atan(24.576 / (2 * focal_of_fov(fov, 24.576)));
        EXPECT_NEAR(back * 57.29577951308232, fov, 180 * tolerance);
    }
}
