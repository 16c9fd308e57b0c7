#include "host/script/transform.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::host;

// Half an ulp of a float below 1, and what double adds to it.
static const double narrowing = 0x1p-25 + 1e-15;

static const double degree = std::acos(-1.0) / 180;

typedef std::array<double, 3> Point;

static Point transformed(const HostMatrix& m, const Point& p) {
    Point result;
    for (std::size_t row = 0; row < 3; row++)
        result[row] = double(m[row]) * p[0] + double(m[4 + row]) * p[1] +
                      double(m[8 + row]) * p[2] + double(m[12 + row]);
    return result;
}

// Turns `p` about an axis, counterclockwise as seen from the axis's tip.
static Point turned(const Point& p, std::size_t axis, double angle) {
    const std::size_t next = (axis + 1) % 3, last = (axis + 2) % 3;
    Point result = p;
    result[next] = p[next] * std::cos(angle * degree) - p[last] * std::sin(angle * degree);
    result[last] = p[next] * std::sin(angle * degree) + p[last] * std::cos(angle * degree);
    return result;
}

static void expect_near(const Point& a, const Point& b, double tolerance) {
    for (std::size_t k = 0; k < 3; k++)
        EXPECT_NEAR(a[k], b[k], tolerance) << "axis " << k;
}

TEST(Transform, IsTheIdentityUnlessMovedOrTurned) {
    const HostMatrix identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_EQ(Transform().matrix(), identity);
}

TEST(Transform, TurnsEachAxisIntoTheNextByARightAngle) {
    const struct {
        Point rotate, x_to, y_to, z_to;
    } cases[] = {
        {{90, 0, 0}, {1, 0, 0}, {0, 0, 1}, {0, -1, 0}},
        {{0, 90, 0}, {0, 0, -1}, {0, 1, 0}, {1, 0, 0}},
        {{0, 0, 90}, {0, 1, 0}, {-1, 0, 0}, {0, 0, 1}},
        // x goes to y about z, then to z about x, then back to x about y.
        {{90, 90, 90}, {1, 0, 0}, {0, 0, 1}, {0, -1, 0}},
    };
    for (const auto& c : cases) {
        const HostMatrix m = Transform{{}, c.rotate}.matrix();
        expect_near(transformed(m, {1, 0, 0}), c.x_to, narrowing);
        expect_near(transformed(m, {0, 1, 0}), c.y_to, narrowing);
        expect_near(transformed(m, {0, 0, 1}), c.z_to, narrowing);
    }
}

TEST(Transform, TurnsAboutZThenXThenYAndMovesLast) {
    const Transform transform{{10, -20, 30}, {25, -140, 77}};
    for (const Point& p : {Point{1, 0, 0}, Point{0, 1, 0}, Point{0, 0, 1}, Point{0.5, -0.25, 2}}) {
        Point expected = turned(turned(turned(p, 2, 77), 0, 25), 1, -140);
        for (std::size_t k = 0; k < 3; k++)
            expected[k] += transform.translate[k];
        // Three narrowed elements, by coordinates of at most 2.
        expect_near(transformed(transform.matrix(), p), expected, 6 * narrowing);
    }
}

TEST(Transform, KeepsTheTranslationInTheLastColumn) {
    const HostMatrix m = Transform{{1, 2, 3}, {}}.matrix();
    const HostMatrix expected = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1};
    EXPECT_EQ(m, expected);
}

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
    EXPECT_LT(local[2], 0) << "behind the camera";
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
