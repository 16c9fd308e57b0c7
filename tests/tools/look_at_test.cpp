// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/look_at.h"

#include "host/script/transform.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::host;

// Half an ulp of a float below 1, and what double adds to it.
static const double narrowing = 0x1p-25 + 1e-15;

static const double degree = std::acos(-1.0) / 180;

typedef std::array<double, 3> Point;

// Where the host's world has the star at (ra, dec).
static Point in_the_sky(double ra, double dec) {
    return {std::cos(dec * degree) * std::cos(ra * degree), std::sin(dec * degree),
            -std::cos(dec * degree) * std::sin(ra * degree)};
}

// The image of a direction on the film at distance 1 of a camera with this rotation: x right, y up.
static std::array<double, 2> image_of(const std::array<double, 3>& rotate, const Point& direction) {
    const HostMatrix m = Transform{{}, rotate}.matrix();
    Point local = {0, 0, 0};
    for (std::size_t axis = 0; axis < 3; axis++)
        for (std::size_t k = 0; k < 3; k++)
            local[axis] += double(m[4 * axis + k]) * direction[k];
    EXPECT_LT(local[2], 0) << "is in front of the camera";
    return {local[0] / -local[2], local[1] / -local[2]};
}

TEST(LookAt, PutsNorthUpAndEastToTheLeft) {
    // Standard coordinates of the sky's tangent plane: xi to the east, eta to the north.
    const double step = 0.5;
    for (const double ra : {0.0, 12.5, 90.0, 200.0, 359.0, -45.0}) {
        for (const double dec : {0.0, 30.0, -62.0, 88.0}) {
            for (const double to_east : {-step, 0.0, step}) {
                for (const double to_north : {-step, 0.0, step}) {
                    const double da = to_east * degree, d = (dec + to_north) * degree;
                    const double d0 = dec * degree;
                    const double ahead =
                        std::sin(d0) * std::sin(d) + std::cos(d0) * std::cos(d) * std::cos(da);
                    const double xi = std::cos(d) * std::sin(da) / ahead;
                    const double eta =
                        (std::cos(d0) * std::sin(d) - std::sin(d0) * std::cos(d) * std::cos(da)) /
                        ahead;
                    const auto image = image_of(look_at_rotation(ra, dec, 0),
                                                in_the_sky(ra + to_east, dec + to_north));
                    EXPECT_NEAR(image[0], -xi, 4 * narrowing);
                    EXPECT_NEAR(image[1], eta, 4 * narrowing);
                }
            }
        }
    }
}

TEST(LookAt, TurnsThePictureClockwiseByTheRoll) {
    const double north_by = std::tan(1 * degree);
    const auto image = image_of(look_at_rotation(40, 10, 30), in_the_sky(40, 11));
    EXPECT_NEAR(image[0], north_by * std::sin(30 * degree), 4 * narrowing);
    EXPECT_NEAR(image[1], north_by * std::cos(30 * degree), 4 * narrowing);
}

TEST(LookAt, SeesThePoles) {
    for (const double pole : {90.0, -90.0}) {
        const auto image = image_of(look_at_rotation(123, pole, 0), {0, pole / 90, 0});
        EXPECT_NEAR(image[0], 0, 4 * narrowing);
        EXPECT_NEAR(image[1], 0, 4 * narrowing);
    }
}
