// The fast rasteriser: the plain reading's steps up to the pixels, which are the kernels'.
#include "stars/fast/rasterise.h"
#include "stars/fast/fitted.h"
#include "stars/fast/steady_math.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

namespace velmora {

static const float half_sqrt_pi = 0.88622695f;
static const float longest_path = 1e18f;

static LaneTarget target_of(const Brush& brush, const PlacedStar& star) {
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
        if (X < 0 && X > -16777216.0f) {
            exact = s32(-X);
        } else if (X >= 1 && X < 16777216.0f) {
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
    if (double(float(last)) == last && fabsf(X) < 8388608.0f)
        return float(last);
    return counted_up_far(X, count);
}

// How many columns are visited: X counted from span.X while it is at most span.X_end, up to
// `limit`.
static inline s32 columns_of(const Span& span, s32 limit) {
    if (limit <= 0 || !(span.X <= span.X_end))
        return 0;
    // About as many as the difference says; rounding may have it one more or less.
    const double steps = double(span.X_end) - double(span.X) + 0.5;
    const s32 nearest = steps < limit ? s32(steps) : limit - 1;
    if (fabsf(span.X) < 4194304.0f && fabsf(span.X_end) < 4194304.0f)
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

// A bound on slope * X + offset, the offset changing from row to row.
class Cut {
public:
    Cut(double slope, double bound)
        : slope(slope), bound(bound), flat(std::fabs(slope) < 1e-12),
          per_slope(flat ? 0 : 1 / slope) {}

    // Takes from [low, high] what exceeds the bound; leaves high < low when all does.
    void narrow(double offset, double& low, double& high) const {
        // Offsets and products are rounded to floats in the plain reading.
        const double size = std::fabs(slope) * std::max(std::fabs(low), std::fabs(high));
        const double limit = bound + 4e-7 * (size + std::fabs(offset));
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

// How far a streak's pixels can be from its path without being exactly 0 in the plain reading:
// across it the exponential comes out as 0, beyond its ends both error functions as the same 1.
class Reach {
public:
    explicit Reach(const StreakWork& work)
        : ux(work.ux), qy(work.qy), across(work.uy, across_bound(work)),
          along(work.qx, double(work.half_path) + 4.05 / double(work.t)) {}

    // Cuts the row's columns down to those that can be other than 0.
    void narrow(StreakRow& row) const {
        if (fabsf(row.X) > 4e6f)
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

    // exp gives 0 below -103.98; a faint light makes 0 of more. Products that round up on the way
    // there are allowed for by 3.
    static double across_bound(const StreakWork& work) {
        const float brightest = 2 * work.width * work.light;
        const double exponent = 107 + std::min(0.0, double(steady_log(brightest)));
        return std::sqrt(std::max(0.0, exponent) * double(work.Q));
    }
};

// ---- Rows ------------------------------------------------------------------------------------

// The rows of a streak's footprint that lie in a window, some at a time.
class StreakRows {
public:
    StreakRows(const Brush& brush, const PlacedStar& star, const Window& window)
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
    const PlacedStar& star;
    const Window& window;
    s32 iy, last;
    float Y;

    // Whether a row surely has no pixel in the window.
    bool is_beside(const Span& span) const {
        return span.ix >= window.x_end ||
               (columns_count(span) &&
                span.ix + (double(span.X_end) - double(span.X)) + 2 < window.x_lo);
    }

    // Whether every step of the row's offset moves it. A row in which one does not runs on to the
    // image's right edge.
    static bool columns_count(const Span& span) {
        return fabsf(span.X) < counting_limit && fabsf(span.X_end) < counting_limit;
    }
};

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
static Drawn draw_spot_rows(const Brush& brush, const PlacedStar& star, const Window& window,
                            s32 y_lo, s32 y_end, float Y) {
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

static Drawn draw_spot(const Brush& brush, const PlacedStar& star, const Window& window) {
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

static StreakWork streak_work(const Brush& brush, const PlacedStar& star) {
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

static Drawn draw_streak(const Brush& brush, const PlacedStar& star, const StreakWork& work,
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

// Which rule adds a path of `half` sizes to either side of its middle up closely enough; none for
// long paths, for which the closed form takes less.
static const fitted::Rule* rule_for(double half) {
    for (const fitted::Rule& rule : fitted::rules)
        if (half <= rule.longest)
            return &rule;
    return nullptr;
}

static Drawn draw_short_streak(const Brush& brush, const PlacedStar& star, const fitted::Rule& rule,
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

// Whether the kernels' floats hold a streak's constants. Sizes from 1e-15 to 1e15 keep Q within
// 1e-30 and 1e30, and the width below 1e15.
static bool is_moderate(const StreakWork& work) {
    const float huge = 1e37f;
    return within(work.half_path, 0, huge) && within(work.t, 1e-30f, huge) &&
           within(work.light, 0, huge) && work.width * work.light <= huge;
}

Brush brush_of(const LaneKernels* kernels, const StarCall& call) {
    return {kernels, call.dst, call.size_x, call.size_y, call.lines};
}

Fit place_star(const StarCall& call, PlacedStar& star) {
    if (call.dst.width <= 0 || call.dst.height <= 0 || !within(call.size_x, 1e-15f, 1e15f) ||
        !within(call.size_y, 1e-15f, 1e15f))
        return Fit::left_to_plain;

    // Segment.
    star.path = Path(call.from, call.to);
    if (!star.path.is_somewhere())
        return Fit::outside;

    // Reach. Below 1/6250 the root is not a number, the box comes out invalid and nothing is drawn.
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
        !is_moderate(streak_work(brush_of(nullptr, call), star)))
        return Fit::left_to_plain;
    return Fit::inside;
}

Drawn draw_placed(const Brush& brush, const PlacedStar& star, const Window& window) {
    if (!star.path.is_streak())
        return draw_spot(brush, star, window);
    const StreakWork work = streak_work(brush, star);
    const fitted::Rule* rule = rule_for(double(work.half_path) * work.t);
    return rule ? draw_short_streak(brush, star, *rule, window)
                : draw_streak(brush, star, work, window);
}

} // namespace velmora
