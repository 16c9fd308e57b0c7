// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/transform.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::host;

// Half an ulp of a float below 1, and the rounding in double.
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

// Rotates `p` about an axis, counterclockwise as seen from the axis's tip.
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
