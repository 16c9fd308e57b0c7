// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "stars"

#include "stars/projection.h"
#include "core/xception.h"

#include <cmath>

// 2 / pi as a float: 90 degrees off the axis come out as 1 - 4e-8.
static const double two_over_pi = 0.6366197466850281;

namespace {
struct Direction {
    double x, y, z;
};
} // namespace

static Direction normalized(Direction d) {
    const double length = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
    if (length != 0)
        return {d.x / length, d.y / length, d.z / length};
    return d;
}

static bool outside_unit_disc(const Direction& d) {
    return d.x * d.x + d.y * d.y > 1;
}

bool world_to_screen(double x, double y, double z, double w, DblMatrix4 m,
                     op_stars_projection projection, int width, int height, double left,
                     double right, double bottom, double top, Vector2& out) {
    // Transform.
    Direction p = {x * m(0, 0) + y * m(1, 0) + z * m(2, 0) + w * m(3, 0),
                   x * m(0, 1) + y * m(1, 1) + z * m(2, 1) + w * m(3, 1),
                   x * m(0, 2) + y * m(1, 2) + z * m(2, 2) + w * m(3, 2)};
    const double divisor = x * m(0, 3) + y * m(1, 3) + z * m(2, 3) + w * m(3, 3);

    // Not "divisor >= 0": a NaN counts as visible.
    bool visible = !(divisor < 0);

    // Projection.
    switch (projection) {
    case OP_STARS_PERSPECTIVE: {
        const double scale = 1 / divisor;
        p = {p.x * scale, p.y * scale, p.z * scale};
        break;
    }
    case OP_STARS_HEMISPHERICAL:
        p = normalized(p);
        if (outside_unit_disc(p))
            visible = false;
        break;
    case OP_STARS_AZIMUTHAL_EQUIDISTANT: {
        p = normalized(p);
        const double radius = std::sqrt(p.x * p.x + p.y * p.y);
        const double angle = std::asin(radius) * two_over_pi;
        // A star exactly on the axis divides by zero; the rasteriser discards its NaN position.
        p.x = p.x * angle / radius;
        p.y = p.y * angle / radius;
        if (outside_unit_disc(p))
            visible = false;
        break;
    }
    default:
        XTHROW_AT(__PRETTY_FUNCTION__, 290, "unknown projection");
    }

    if (p.z < 0)
        visible = false;

    // Pixel position.
    out[0] = float((p.x - left) / (right - left) * width);
    out[1] = float((top - p.y) / (top - bottom) * height);
    return visible;
}
