// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "stars"

#include "stars/plain/rasterise.h"

#include "core/xception.h"
#include "stars/footprint.h"

#include <climits>
#include <cmath>

using namespace velmora;

static const char* const streak_signature =
    "bool op_star_streak(const StarFramebuffer&, const Vector2&, const Vector2&, float, "
    "const Color3&, float, float, op_stars_lines)";

static const float half_sqrt_pi = 0.88622695f; // the Gaussian's line integral: sqrt(pi) / 2 per erf

namespace {

struct SpotProfile {
    float amplitude;
    float size_x, size_y;

    float operator()(float X, float Y) const {
        return amplitude * expf(-(X * X) / (size_x * size_x) - Y * Y / (size_y * size_y));
    }
};

// With p the offset across the path and q the weighted offset along it, the line integral of the
// Gaussian factors into exp(-p^2 / Q) and a difference of two error functions.
struct StreakProfile {
    float amplitude;
    float size_x, size_y;
    float ux, uy, length;
    float Q, s, t;

    StreakProfile(const Path& path, float amplitude, float size_x, float size_y)
        : amplitude(amplitude), size_x(size_x), size_y(size_y), ux(path.ux), uy(path.uy),
          length(path.length), Q((size_y * size_y) * (ux * ux) + (size_x * size_x) * (uy * uy)),
          s(1 / sqrtf(Q)), t(s / (size_x * size_y)) {}

    float operator()(float X, float Y) const {
        const float p = uy * X - ux * Y;
        const float q = size_y * size_y * ux * X + size_x * size_x * uy * Y;
        const float g = expf(-(p * p) / Q);
        const float e = erff((0.5f * length * Q - q) * t) - erff((-0.5f * length * Q - q) * t);
        return amplitude / length * (e * (half_sqrt_pi * size_x * size_y * s * g));
    }
};

} // namespace

// Offsets are products of 32 bits, which wrap.
static s32 wrapping_product(s32 a, s32 b) {
    return s32(u32(a) * u32(b));
}

// Adds one row's pixels: columns are counted in float, as the span has them.
template <class Profile>
static void add_row(const StarFramebuffer& dst, s32 iy, const Span& span, float Y,
                    const Profile& profile, const Color3& color, Drawn& drawn) {
    s32 ix = span.ix;
    s64 at = s64(wrapping_product(iy, dst.row_stride)) + wrapping_product(ix, dst.pixel_stride);
    for (float X = span.X; X <= span.X_end; X += 1.0f, ix++, at += dst.pixel_stride) {
        if (ix >= dst.width)
            break;
        XASSERT_AT(ix >= 0 && ix < dst.width, "ix >= 0 && ix < dst.width", streak_signature,
                   __LINE__);
        // Pixel.
        const float a = dst.alpha[at];
        if (a >= 1.0f)
            continue; // covered
        const float w = (1 - a) * profile(X, Y);
        dst.red[at] += color[0] * w;
        dst.green[at] += color[1] * w;
        dst.blue[at] += color[2] * w;
        drawn.pixels++;
        if (w > 0)
            drawn.lit = true;
    }
}

// Rows, from the top; those that `lines` leaves out are counted, too.
template <class Profile>
static Drawn add_rows(const StarCall& call, const Path& path, const RowGeometry& rows,
                      const Box& box, const Profile& profile) {
    Drawn drawn = {false, 0};
    float Y = float(box.y_lo) - path.mid[1];
    for (s32 iy = box.y_lo; iy <= box.y_hi; iy++, Y += 1.0f) {
        XASSERT_AT(iy >= 0 && iy < call.dst.height, "iy >= 0 && iy < dst.height", streak_signature,
                   __LINE__);
        if (!row_is_written(iy, call.lines))
            continue;
        const Span span = row_span(path, rows, box, Y);
        // A span that starts outside the integers starts outside the image.
        if (span.ix != INT_MIN)
            add_row(call.dst, iy, span, Y, profile, call.color, drawn);
    }
    return drawn;
}

Drawn velmora::plain_star_streak(const StarCall& call) {
    // Segment.
    const Path path(call.from, call.to);
    if (!path.is_somewhere())
        return {false, 0};

    // Reach. Below 1/6250 the root is not a number, the box comes out invalid and nothing is drawn.
    const float k = sqrtf(logf(call.amplitude * reach_intensity));
    const float rx = k * call.size_x;
    const float ry = k * call.size_y;

    // Bounding box.
    Box box;
    if (!clip_box(path, rx, ry, call.dst.width, call.dst.height, box))
        return {false, 0};

    // Row geometry.
    const RowGeometry rows = row_geometry(path, rx, call.size_x, call.size_y);
    if (path.is_streak())
        return add_rows(call, path, rows, box,
                        StreakProfile(path, call.amplitude, call.size_x, call.size_y));
    return add_rows(call, path, rows, box, SpotProfile{call.amplitude, call.size_x, call.size_y});
}
