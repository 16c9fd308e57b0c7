// SPDX-License-Identifier: BSD-3-Clause

// What a spot and a streak should be, twice: the moving spot's integral in double, worked out
// numerically, and the rasteriser once more in float, operation by operation, for comparing bits.
#pragma once

#include "stars/streak.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace stars_test {

// ---- The profile, in double -------------------------------------------------------------------

const double pi = 3.141592653589793;

// The spot of peak 1 at `p`, sampled at (x, y).
inline double still_value(double x, double y, double px, double py, double size_x, double size_y) {
    const double across = (x - px) / size_x, along = (y - py) / size_y;
    return std::exp(-across * across - along * along);
}

// The time average at (x, y) of a spot of peak 1 that moves evenly from `from` to `to`: five-point
// Gauss-Legendre over panels of half the smaller size, left out where the spot is eight sizes away.
// Its own error is below 1e-9.
inline double moving_value(double x, double y, Vector2 from, Vector2 to, double size_x,
                           double size_y) {
    static const double node[5] = {0, -0.5384693101056831, 0.5384693101056831, -0.9061798459386640,
                                   0.9061798459386640};
    static const double weight[5] = {0.5688888888888889, 0.4786286704993665, 0.4786286704993665,
                                     0.2369268850561891, 0.2369268850561891};
    const double dx = double(to[0]) - from[0], dy = double(to[1]) - from[1];
    const double length = std::sqrt(dx * dx + dy * dy);
    const int panels = 1 + int(length / (0.5 * std::min(size_x, size_y)));
    const double reach = 8 * std::max(size_x, size_y) + length / panels;
    double sum = 0;
    for (int i = 0; i < panels; i++) {
        const double middle = (i + 0.5) / panels;
        if (std::hypot(from[0] + middle * dx - x, from[1] + middle * dy - y) > reach)
            continue;
        for (int j = 0; j < 5; j++) {
            const double t = middle + 0.5 * node[j] / panels;
            sum += 0.5 * weight[j] / panels *
                   still_value(x, y, from[0] + t * dx, from[1] + t * dy, size_x, size_y);
        }
    }
    return sum;
}

// ---- Which pixels a call visits, in double ----------------------------------------------------

struct Footprint {
    double k;                    // reach in sizes
    double rx, ry;               // and in pixels
    double slope, h;             // columns per row and half the span; 1e20 for a horizontal path
    double left, right, up, low; // what box edges and rows are floors of
    Vector2 from, to;

    Footprint(Vector2 from_, Vector2 to_, double amplitude, double size_x, double size_y)
        : from(from_), to(to_) {
        k = std::sqrt(std::log(amplitude * 6250));
        rx = k * size_x;
        ry = k * size_y;
        const double ddy = double(to[1]) - from[1];
        const bool flat = std::fabs(ddy) <= 1e-6;
        slope = flat ? 1e20 : (double(to[0]) - from[0]) / ddy;
        h = flat ? 1e20 : k * size_x * (size_x + size_y * std::fabs(slope));
        left = std::min(from[0], to[0]) - rx;
        right = std::max(from[0], to[0]) + rx;
        up = std::min(from[1], to[1]) - ry;
        low = std::max(from[1], to[1]) + ry;
    }

    double centre(int row) const {
        return slope < 100000 ? from[0] + (double(row) - from[1]) * slope
                              : 0.5 * (double(from[0]) + to[0]);
    }

    // Whether pixel (x, y) is visited; with a margin, whether it would be if both the box and the
    // span were that much wider on every side (or, below 0, narrower).
    bool visits(int x, int y, double margin) const {
        if (x < std::floor(left - margin) || x > std::floor(right + margin) + 1 ||
            y < std::floor(up - margin) || y > std::floor(low + margin) + 1)
            return false;
        return x >= std::floor(centre(y) - h - margin) && x <= std::ceil(centre(y) + h + margin);
    }
};

// ---- The rasteriser in float, operation by operation ------------------------------------------

// Truncates, with what does not fit and what is not a number giving the smallest integer.
inline s32 narrowed(float v) {
    return v >= -2147483648.0f && v < 2147483648.0f ? s32(v) : INT_MIN;
}

inline s32 wrapping_plus_one(s32 v) {
    return v == INT_MAX ? INT_MIN : v + 1;
}

inline bool reread_streak(const StarFramebuffer& dst, Vector2 from, Vector2 to, float amplitude,
                          Color3 color, float size_x, float size_y, int lines) {
    // Segment.
    const float dx = to[0] - from[0];
    const float dy = to[1] - from[1];
    const float L = sqrtf(dx * dx + dy * dy);
    float ux = 0, uy = 0;
    if (L != 0) {
        ux = dx / L;
        uy = dy / L;
    }
    const bool streak = L > 1e-5f;
    const float mx = (from[0] + to[0]) * 0.5f;
    const float my = (from[1] + to[1]) * 0.5f;

    // Reach.
    const float k = sqrtf(logf(amplitude * 6250.0f));
    const float rx = k * size_x;
    const float ry = k * size_y;

    // Row geometry.
    const float ddy = to[1] - from[1];
    float slope = 1e20f, h = 1e20f;
    if (!(fabsf(ddy) <= 1e-6f)) {
        slope = (to[0] - from[0]) / ddy;
        const double own = size_x * rx;
        const double leaning = fabsf(size_y * rx * slope);
        h = float(std::max(own, leaning + own));
    }

    // Bounding box.
    s32 x_lo = narrowed(floorf(std::min(from[0], to[0]) - rx));
    s32 y_lo = narrowed(floorf(std::min(from[1], to[1]) - ry));
    s32 x_hi = wrapping_plus_one(narrowed(floorf(std::max(from[0], to[0]) + rx)));
    s32 y_hi = wrapping_plus_one(narrowed(floorf(std::max(from[1], to[1]) + ry)));
    if (x_hi < 0 || x_lo >= dst.width || y_hi < 0 || y_lo >= dst.height)
        return false;
    x_lo = std::min(std::max(x_lo, 0), dst.width - 1);
    x_hi = std::min(x_hi, dst.width - 1);
    y_lo = std::min(std::max(y_lo, 0), dst.height - 1);
    y_hi = std::min(y_hi, dst.height - 1);
    if (y_hi < y_lo)
        return false;

    // Streak constants.
    const float sx2 = size_x * size_x;
    const float sy2 = size_y * size_y;
    const float Q = sy2 * (ux * ux) + sx2 * (uy * uy);
    const float s = 1.0f / sqrtf(Q);
    const float t = s / (size_x * size_y);

    bool lit = false;
    float Y = float(y_lo) - my;
    for (s32 iy = y_lo; iy <= y_hi; iy++, Y += 1.0f) {
        const bool odd = iy % 2 != 0;
        if (lines != 0 && (lines == 1 ? odd : !odd))
            continue;
        const float xc = slope < 100000.0f ? from[0] + ((Y + my) - from[1]) * slope : mx;
        const float xs = std::max(xc - h, float(x_lo));
        const float xe = std::min(float(x_hi), xc + h);
        s32 ix = narrowed(floorf(xs));
        if (ix < 0)
            continue;
        const float X_end = ceilf(xe) - mx;
        for (float X = floorf(xs) - mx; X <= X_end; X += 1.0f, ix++) {
            if (ix >= dst.width)
                break;
            const s64 element = s64(iy * dst.row_stride) + s64(ix * dst.pixel_stride);
            const float a = dst.alpha[element];
            if (a >= 1.0f)
                continue;
            float v;
            if (streak) {
                const float p = uy * X - ux * Y;
                const float q = sy2 * ux * X + sx2 * uy * Y;
                const float g = expf(-(p * p) / Q);
                const float e = erff((0.5f * L * Q - q) * t) - erff((-0.5f * L * Q - q) * t);
                v = (amplitude / L) * (e * (0.88622695f * size_x * size_y * s * g));
            } else {
                v = amplitude * expf(-(X * X) / sx2 - (Y * Y) / sy2);
            }
            const float w = (1.0f - a) * v;
            dst.red[element] += color[0] * w;
            dst.green[element] += color[1] * w;
            dst.blue[element] += color[2] * w;
            if (w > 0)
                lit = true;
        }
    }
    return lit;
}

} // namespace stars_test
