// SPDX-License-Identifier: BSD-3-Clause

// The plain reading's steps as the fast kernels take them: segment, reach, bounding box and row
// geometry are the same code; streak constants, rows and pixels are worked out a row at a time, and
// only columns that come out as exactly 0 are left out.
#include "stars/fast/rasterise.h"
#include "stars/fast/fitted.h"
#include "stars/fast/steady_math.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

namespace velmora {

// Rounded as the plain reading has it.
static const float half_sqrt_pi = 0.88622695f;

// What the kernels' floats hold: squares of lengths stay below 3.4e38, Q within 1e-30 and 1e30, and
// the products of Q, t and light below `largest`, each with room for the roundings on the way.
static const float longest_path = 1e18f;
static const float smallest_size = 1e-15f, largest_size = 1e15f;
static const float smallest_t = 1e-30f, largest = 1e37f;

static LaneTarget target_of(const Brush& brush, const Stroke& star) {
    const StarFramebuffer& fb = brush.dst;
    const bool interleaved = fb.pixel_stride == 4 && fb.red == fb.alpha + 1 &&
                             fb.green == fb.alpha + 2 && fb.blue == fb.alpha + 3;
    return {fb, {star.color[0], star.color[1], star.color[2]}, interleaved};
}

// ---- Counting columns ------------------------------------------------------------------------

// The power of two above X >= 1.
static float power_above(float X) {
    u32 bits;
    memcpy(&bits, &X, sizeof bits);
    bits = (bits & 0x7f800000) + 0x00800000;
    memcpy(&X, &bits, sizeof X);
    return X;
}

static float counted_up_far(float X, s32 count) {
    while (count > 0) {
        // Sums are exact up to the first above 0, and up to the last below each power of two.
        s32 exact = 0;
        if (X < 0 && X > -counting_limit) {
            exact = s32(-X);
        } else if (X >= 1 && X < counting_limit) {
            const float room = power_above(X) - X;
            exact = float(s32(room)) == room ? s32(room) - 1 : s32(room);
        }
        exact = std::min(exact, count);
        X += float(exact);
        count -= exact;
        if (count == 0)
            break;
        const float sum = X + 1.0f;
        if (sum == X)
            break; // too far out for 1.0 to count
        X = sum;
        count--;
    }
    return X;
}

// X after 1.0 was added `count` times, each sum rounded to float, without adding them one by one.
static inline float counted_up(float X, s32 count) {
    // All sums are exact when the last is: those between are as coarse and no larger.
    const double last = double(X) + count;
    if (double(float(last)) == last && fabsf(X) < whole_from)
        return float(last);
    return counted_up_far(X, count);
}

// How many columns are visited: X counted from span.X while it is at most span.X_end, up to
// `limit`.
static inline s32 columns_of(const Span& span, s32 limit) {
    if (limit <= 0 || !(span.X <= span.X_end))
        return 0;
    // As many as the difference says, give or take one for rounding.
    const double steps = double(span.X_end) - double(span.X) + 0.5;
    const s32 nearest = steps < limit ? s32(steps) : limit - 1;
    if (fabsf(span.X) < fine_below && fabsf(span.X_end) < fine_below)
        return std::min(limit, nearest + (counted_up(span.X, nearest) <= span.X_end));

    if (counted_up(span.X, limit - 1) <= span.X_end)
        return limit;
    s32 count = nearest + 1;
    while (count > 1 && !(counted_up(span.X, count - 1) <= span.X_end))
        count--;
    while (count < limit && counted_up(span.X, count) <= span.X_end)
        count++;
    return count;
}

// ---- Columns that are exactly 0 --------------------------------------------------------------

namespace {

// Slopes below this change nothing along an image: 2^31 columns of it are 2e-3 of a bound that is
// widened by more.
const double flat_slope = 1e-12;

// Floats round by 6e-8. The plain reading takes two products and a sum, and its bound two more: 4e-7
// of their sizes is more than twice what all of them can be off.
const double float_rounding = 4e-7;

// A bound on |slope * X + offset|, where the offset changes from row to row.
class Cut {
public:
    Cut(double slope, double bound)
        : slope(slope), bound(bound), flat(std::fabs(slope) < flat_slope),
          per_slope(flat ? 0 : 1 / slope) {}

    // Takes from [low, high] what exceeds the bound; leaves high < low when all does.
    void narrow(double offset, double& low, double& high) const {
        const double size = std::fabs(slope) * std::max(std::fabs(low), std::fabs(high));
        const double limit = bound + float_rounding * (size + std::fabs(offset));
        if (flat) {
            if (std::fabs(offset) > limit + size)
                high = low - 1;
            return;
        }
        const double a = (-limit - offset) * per_slope, b = (limit - offset) * per_slope;
        low = std::max(low, std::min(a, b));
        high = std::min(high, std::max(a, b));
    }

private:
    double slope, bound;
    bool flat;
    double per_slope;
};

// erff is exactly 1 from 3.92 on; the rest is for the rounding of its argument.
const double erf_is_one = 4.05;

// expf gives 0 below -103.98. Products that round up on the way there are allowed for by 3.
const double exp_is_zero = 107;

// Rows that start farther out are not cut: their offsets are too coarse to skip columns by.
const float farthest_cut = 4e6f;

// The columns of a row whose value the plain reading rounds to exactly 0: across the path the
// exponential comes out as 0, beyond its ends both error functions as the same 1.
class Reach {
public:
    explicit Reach(const StreakWork& work)
        : ux(work.ux), qy(work.qy), across(work.uy, across_bound(work)),
          along(work.qx, double(work.half_path) + erf_is_one / double(work.t)) {}

    // Cuts the row's columns down to those that can be other than 0.
    void narrow(StreakRow& row) const {
        if (fabsf(row.X) > farthest_cut)
            return;
        const double first = row.X;
        double low = first, high = first + row.count;
        across.narrow(-ux * double(row.Y), low, high);
        along.narrow(qy * double(row.Y), low, high);
        const s32 skip = high < low ? row.count : std::max(0, s32(low - first) - 1);
        row.count = high < low ? 0 : std::min(row.count, s32(high - first) + 3) - skip;
        if (row.count > 0 && skip > 0) {
            row.X = counted_up(row.X, skip);
            row.skip = skip;
        }
    }

private:
    double ux, qy;
    Cut across, along;

    // A faint light makes 0 of more.
    static double across_bound(const StreakWork& work) {
        const float brightest = 2 * work.width * work.light;
        const double exponent = exp_is_zero + std::min(0.0, double(steady_log(brightest)));
        return std::sqrt(std::max(0.0, exponent) * double(work.Q));
    }
};

} // namespace

// ---- Rows ------------------------------------------------------------------------------------

namespace {

// The rows of a streak's footprint that lie in a window, some at a time.
class StreakRows {
public:
    StreakRows(const Brush& brush, const Stroke& star, const Window& window)
        : brush(brush), star(star), window(window), iy(std::max(star.box.y_lo, window.y_lo)),
          last(std::min(star.box.y_hi, window.y_end - 1)),
          Y(counted_up(float(star.box.y_lo) - star.path.mid[1], iy - star.box.y_lo)) {}

    // The next rows that have pixels, at most row_batch; 0 when there are no more.
    int take(StreakRow* batch) {
        int taken = 0;
        for (; iy <= last && taken < row_batch; iy++, Y += 1.0f) {
            if (!row_is_written(iy, brush.lines))
                continue;
            const Span span = row_span(star.path, star.rows, star.box, Y);
            if (span.ix == INT_MIN || is_beside(span))
                continue;
            const s32 count = columns_of(span, brush.dst.width - span.ix);
            if (count > 0)
                batch[taken++] = {iy, span.ix, 0, count, span.X, Y};
        }
        return taken;
    }

private:
    const Brush& brush;
    const Stroke& star;
    const Window& window;
    s32 iy, last;
    float Y;

    // True when a row has no pixel in the window; some rows without any give false.
    bool is_beside(const Span& span) const {
        return span.ix >= window.x_end ||
               (columns_count(span) &&
                span.ix + (double(span.X_end) - double(span.X)) + 2 < window.x_lo);
    }

    // Whether every step of the row's offset moves it. Otherwise the row runs on to the image's
    // right edge.
    static bool columns_count(const Span& span) {
        return fabsf(span.X) < counting_limit && fabsf(span.X_end) < counting_limit;
    }
};

} // namespace

// Cuts a row down to the window's columns. False when none is left.
static bool clip_row(StreakRow& row, const Window& window) {
    const s32 first = row.ix + row.skip;
    const s32 cut = std::max(0, window.x_lo - first);
    row.count = std::min(row.count, window.x_end - first) - cut;
    if (row.count <= 0)
        return false;
    row.X = counted_up(row.X, cut);
    row.skip += cut;
    return true;
}

// ---- Steps -----------------------------------------------------------------------------------

// Rows [y_lo, y_end) of a spot, which have the span of the first.
static Drawn draw_spot_rows(const Brush& brush, const Stroke& star, const Window& window, s32 y_lo,
                            s32 y_end, float Y) {
    const Span span = row_span(star.path, star.rows, star.box, Y);
    if (span.ix == INT_MIN)
        return {false, 0};
    const s32 skip = std::max(0, window.x_lo - span.ix);
    const s32 last = std::min(columns_of(span, brush.dst.width - span.ix), window.x_end - span.ix);
    if (skip >= last)
        return {false, 0};
    return brush.kernels->spot({target_of(brush, star), star.amplitude, brush.size_x, brush.size_y,
                                span.ix, skip, last - skip, y_lo, y_end, counted_up(span.X, skip),
                                Y, brush.lines});
}

static Drawn draw_spot(const Brush& brush, const Stroke& star, const Window& window) {
    const s32 y_lo = std::max(star.box.y_lo, window.y_lo);
    const s32 y_end = std::min(star.box.y_hi + 1, window.y_end);
    Drawn drawn = {false, 0};
    if (y_lo >= y_end)
        return drawn;
    float Y = counted_up(float(star.box.y_lo) - star.path.mid[1], y_lo - star.box.y_lo);
    if (star.rows.is_flat()) // every row spans the whole box
        return draw_spot_rows(brush, star, window, y_lo, y_end, Y);
    for (s32 iy = y_lo; iy < y_end; iy++, Y += 1.0f)
        drawn += draw_spot_rows(brush, star, window, iy, iy + 1, Y);
    return drawn;
}

// Streak constants, in the plain reading's floats and in its order.
static StreakWork streak_work(const Brush& brush, const Stroke& star) {
    const float size_x = brush.size_x, size_y = brush.size_y;
    const Path& path = star.path;
    StreakWork work;
    work.target = target_of(brush, star);
    work.ux = path.ux;
    work.uy = path.uy;
    work.qx = size_y * size_y * path.ux;
    work.qy = size_x * size_x * path.uy;
    work.Q = (size_y * size_y) * (path.ux * path.ux) + (size_x * size_x) * (path.uy * path.uy);
    const float s = 1 / sqrtf(work.Q);
    work.half_path = 0.5f * path.length * work.Q;
    work.t = s / (size_x * size_y);
    work.width = half_sqrt_pi * size_x * size_y * s;
    work.light = star.amplitude / path.length;
    return work;
}

static Drawn draw_streak(const Brush& brush, const Stroke& star, const StreakWork& work,
                         const Window& window) {
    const Reach reach(work);
    StreakRows rows(brush, star, window);
    Drawn drawn = {false, 0};
    StreakRow batch[row_batch];
    while (const int taken = rows.take(batch)) {
        int kept = 0;
        for (int i = 0; i < taken; i++) {
            reach.narrow(batch[i]);
            if (batch[i].count > 0 && clip_row(batch[i], window))
                batch[kept++] = batch[i];
        }
        if (kept > 0)
            drawn += brush.kernels->streak(work, batch, kept);
    }
    return drawn;
}

// The smallest quadrature rule accurate enough for a path reaching `half` spot sizes to each side of
// its midpoint; null for longer paths, where the closed form is cheaper.
static const fitted::Rule* rule_for(double half) {
    for (const fitted::Rule& rule : fitted::rules)
        if (half <= rule.longest)
            return &rule;
    return nullptr;
}

static Drawn draw_short_streak(const Brush& brush, const Stroke& star, const fitted::Rule& rule,
                               const Window& window) {
    const double half = 0.5 * double(star.path.length);
    QuadratureWork work = {target_of(brush, star),
                           star.amplitude * 0.5f,
                           star.path.mid[0],
                           star.path.mid[1],
                           half * star.path.ux,
                           half * star.path.uy,
                           brush.size_x,
                           brush.size_y,
                           0,
                           0,
                           &rule};
    StreakRows rows(brush, star, window);
    Drawn drawn = {false, 0};
    StreakRow batch[row_batch];
    while (const int taken = rows.take(batch)) {
        int kept = 0;
        work.x_first = window.x_end;
        work.x_end = window.x_lo;
        for (int i = 0; i < taken; i++) {
            if (!clip_row(batch[i], window))
                continue;
            const s32 first = batch[i].ix + batch[i].skip;
            work.x_first = std::min(work.x_first, first);
            work.x_end = std::max(work.x_end, first + batch[i].count);
            batch[kept++] = batch[i];
        }
        if (kept > 0)
            drawn += brush.kernels->quadrature(work, batch, kept);
    }
    return drawn;
}

static bool within(float v, float low, float high) {
    return v >= low && v <= high;
}

// Whether the kernels' floats hold a streak's constants.
static bool is_moderate(const StreakWork& work) {
    return within(work.half_path, 0, largest) && within(work.t, smallest_t, largest) &&
           within(work.light, 0, largest) && work.width * work.light <= largest;
}

Brush brush_of(const LaneKernels& kernels, const StarCall& call) {
    return {&kernels, call.dst, call.size_x, call.size_y, call.lines};
}

Fit find_stroke(const StarCall& call, Stroke& star) {
    if (call.dst.width <= 0 || call.dst.height <= 0 ||
        !within(call.size_x, smallest_size, largest_size) ||
        !within(call.size_y, smallest_size, largest_size))
        return Fit::left_to_plain;

    // Segment.
    star.path = Path(call.from, call.to);
    if (!star.path.is_somewhere())
        return Fit::outside;

    // Reach. Below 1/6250 the root is not a number, the box comes out invalid and nothing is drawn.
    // steady_log is correctly rounded but for one value in 500: k is at most its last bit off.
    const float k = sqrtf(steady_log(call.amplitude * reach_intensity));
    const float rx = k * call.size_x;
    const float ry = k * call.size_y;

    // Bounding box.
    if (!clip_box(star.path, rx, ry, call.dst.width, call.dst.height, star.box))
        return Fit::outside;

    // Row geometry.
    star.rows = row_geometry(star.path, rx, call.size_x, call.size_y);
    star.amplitude = call.amplitude;
    star.color = call.color;
    if (!star.path.is_streak())
        return Fit::inside;
    if (!(star.path.length <= longest_path) ||
        !is_moderate(streak_work({nullptr, call.dst, call.size_x, call.size_y, call.lines}, star)))
        return Fit::left_to_plain;
    return Fit::inside;
}

// Rows and pixels: spots are exact to half a last bit of their largest value, short streaks are sums
// of spots, and long ones go by the plain reading's closed form.
Drawn draw_stroke(const Brush& brush, const Stroke& star, const Window& window) {
    if (!star.path.is_streak())
        return draw_spot(brush, star, window);
    const StreakWork work = streak_work(brush, star);
    const fitted::Rule* rule = rule_for(double(work.half_path) * work.t);
    return rule ? draw_short_streak(brush, star, *rule, window)
                : draw_streak(brush, star, work, window);
}

} // namespace velmora
