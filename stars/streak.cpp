// The plain reading: scalar, one pixel after the other, every value as the formulas in streak.h
// have it in single precision. It defines the result.
#define XSOURCE "stars"

#include "stars/streak.h"
#include "core/xception.h"

#include <algorithm>
#include <climits>
#include <cmath>

static const char* const streak_signature =
    "bool op_star_streak(const StarFramebuffer&, const Vector2&, const Vector2&, float, "
    "const Color3&, float, float, op_stars_lines)";

static const float longest_spot = 1e-5f;    // a longer path is a streak
static const float flattest_rise = 1e-6f;   // a path that rises less is horizontal
static const float steepest_slope = 100000; // columns per row up to which the row centre follows
static const float unbounded = 1e20f;       // slope and half-width of a horizontal path
static const float reach_intensity = 6250;  // the footprint ends where the profile is 1/6250
static const float half_sqrt_pi = 0.88622695f;

namespace {

// The spot's way during the exposure. Pixel offsets are taken from its midpoint.
struct Path {
    Vector2 from, to, mid;
    float ux, uy; // unit direction, 0 when `from` is `to`
    float length;
};

// Rows [y_lo, y_hi] and columns [x_lo, x_hi] of the image that the footprint can touch.
struct Box {
    s32 x_lo, y_lo, x_hi, y_hi;
};

// How a row's span follows the path.
struct RowGeometry {
    float slope;      // columns per row
    float half_width; // of the span around the row centre
};

// A footprint row: pixel ix stands at offset X from the midpoint, both counted up to X_end.
struct Span {
    s32 ix;
    float X, X_end;
};

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

// A value that is not a number or does not fit becomes INT_MIN, as the processor's own conversion
// has it, so that what follows is defined everywhere.
static s32 to_int(float whole) {
    return whole >= -2147483648.0f && whole < 2147483648.0f ? s32(whole) : INT_MIN;
}

static s32 wrapping_increment(s32 i) {
    return s32(u32(i) + 1);
}

static s32 wrapping_product(s32 a, s32 b) {
    return s32(u32(a) * u32(b));
}

static Path path_between(const Vector2& from, const Vector2& to) {
    const float dx = to[0] - from[0];
    const float dy = to[1] - from[1];
    Path path;
    path.from = from;
    path.to = to;
    path.mid = {{(from[0] + to[0]) * 0.5f, (from[1] + to[1]) * 0.5f}};
    path.length = sqrtf(dx * dx + dy * dy);
    path.ux = path.length != 0 ? dx / path.length : 0;
    path.uy = path.length != 0 ? dy / path.length : 0;
    return path;
}

static RowGeometry row_geometry(const Path& path, float rx, float size_x, float size_y) {
    const float rise = path.to[1] - path.from[1];
    if (fabsf(rise) <= flattest_rise)
        return {unbounded, unbounded};

    // size_x times the reach, twice: narrow for spots below a pixel, generous for wide ones.
    const float slope = (path.to[0] - path.from[0]) / rise;
    const double across = size_x * rx;
    const double along = fabsf(size_y * rx * slope);
    return {slope, float(std::max(across, along + across))};
}

// The footprint's box clipped to the image. False when nothing of it is inside.
static bool clip_box(const Path& path, float rx, float ry, s32 width, s32 height, Box& box) {
    box.x_lo = to_int(floorf(std::min(path.from[0], path.to[0]) - rx));
    box.y_lo = to_int(floorf(std::min(path.from[1], path.to[1]) - ry));
    box.x_hi = wrapping_increment(to_int(floorf(std::max(path.from[0], path.to[0]) + rx)));
    box.y_hi = wrapping_increment(to_int(floorf(std::max(path.from[1], path.to[1]) + ry)));
    if (box.x_hi < 0 || box.x_lo >= width || box.y_hi < 0 || box.y_lo >= height)
        return false;

    box.x_lo = std::min(std::max(box.x_lo, 0), width - 1);
    box.x_hi = std::min(box.x_hi, width - 1);
    box.y_lo = std::min(std::max(box.y_lo, 0), height - 1);
    box.y_hi = std::min(box.y_hi, height - 1);
    return box.y_hi >= box.y_lo;
}

static bool row_is_written(s32 iy, op_stars_lines lines) {
    if (lines == OP_STARS_LINES_ALL)
        return true;
    return lines == OP_STARS_LINES_EVEN ? iy % 2 == 0 : iy % 2 != 0;
}

// The columns around the path at row offset Y. The order of the comparisons lets a row centre that
// is not a number through to an empty span.
static Span row_span(const Path& path, const RowGeometry& rows, const Box& box, float Y) {
    // The test is signed: a nearly flat path that falls to the left still follows its line.
    const float xc = rows.slope < steepest_slope
                         ? path.from[0] + (Y + path.mid[1] - path.from[1]) * rows.slope
                         : path.mid[0];
    const float xs = std::max(xc - rows.half_width, float(box.x_lo));
    const float xe = std::min(float(box.x_hi), xc + rows.half_width);
    return {to_int(floorf(xs)), floorf(xs) - path.mid[0], ceilf(xe) - path.mid[0]};
}

template <class Profile>
static bool add_row(const StarFramebuffer& dst, s32 iy, const Span& span, float Y,
                    const Profile& profile, const Color3& color) {
    bool drew = false;
    s32 ix = span.ix;
    s64 at = s64(wrapping_product(iy, dst.row_stride)) + wrapping_product(ix, dst.pixel_stride);
    for (float X = span.X; X <= span.X_end; X += 1.0f, ix++, at += dst.pixel_stride) {
        if (ix >= dst.width)
            break;
        XASSERT_AT(ix >= 0 && ix < dst.width, "ix >= 0 && ix < dst.width", streak_signature,
                   __LINE__);
        const float a = dst.alpha[at];
        if (a >= 1.0f)
            continue;
        const float w = (1 - a) * profile(X, Y);
        dst.red[at] += color[0] * w;
        dst.green[at] += color[1] * w;
        dst.blue[at] += color[2] * w;
        if (w > 0)
            drew = true;
    }
    return drew;
}

template <class Profile>
static bool add_rows(const StarFramebuffer& dst, const Path& path, const RowGeometry& rows,
                     const Box& box, const Profile& profile, const Color3& color,
                     op_stars_lines lines) {
    bool drew = false;
    float Y = float(box.y_lo) - path.mid[1];
    for (s32 iy = box.y_lo; iy <= box.y_hi; iy++, Y += 1.0f) {
        XASSERT_AT(iy >= 0 && iy < dst.height, "iy >= 0 && iy < dst.height", streak_signature,
                   __LINE__);
        if (!row_is_written(iy, lines))
            continue;
        const Span span = row_span(path, rows, box, Y);
        // A span that starts beyond what an integer holds starts beyond the image.
        if (span.ix != INT_MIN && add_row(dst, iy, span, Y, profile, color))
            drew = true;
    }
    return drew;
}

bool op_star_streak(const StarFramebuffer& dst, const Vector2& from, const Vector2& to,
                    float amplitude, const Color3& color, float size_x, float size_y,
                    op_stars_lines lines) {
    const Path path = path_between(from, to);
    // A place that is not a number has no pixels around it.
    if (std::isnan(path.mid[0]) || std::isnan(path.mid[1]))
        return false;

    // Below 1/6250 the root is not a number, the box comes out invalid and nothing is drawn.
    const float k = sqrtf(logf(amplitude * reach_intensity));
    const float rx = k * size_x;
    const float ry = k * size_y;

    Box box;
    if (!clip_box(path, rx, ry, dst.width, dst.height, box))
        return false;

    const RowGeometry rows = row_geometry(path, rx, size_x, size_y);
    if (path.length > longest_spot)
        return add_rows(dst, path, rows, box, StreakProfile(path, amplitude, size_x, size_y), color,
                        lines);
    return add_rows(dst, path, rows, box, SpotProfile{amplitude, size_x, size_y}, color, lines);
}
