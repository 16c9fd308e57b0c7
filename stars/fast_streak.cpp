// The fast rasteriser: the plain reading's steps up to the pixels, which are the kernels'.
#include "stars/fitted.h"
#include "stars/footprint.h"
#include "stars/rasteriser.h"
#include "stars/steady_math.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace velmora {

static const float half_sqrt_pi = 0.88622695f;
static const float longest_path = 1e18f;

static LaneTarget target_of(const StarCall& call) {
    const StarFramebuffer& fb = call.dst;
    const bool interleaved = fb.pixel_stride == 4 && fb.red == fb.alpha + 1 &&
                             fb.green == fb.alpha + 2 && fb.blue == fb.alpha + 3;
    return {fb, {call.color[0], call.color[1], call.color[2]}, interleaved};
}

// ---- Counting columns ------------------------------------------------------------------------

// X after 1.0 was added `count` times, each sum rounded to float, without adding them one by one:
// sums are exact except where they reach the next power of two.
static float counted_up(float X, s32 count) {
    // All of them are exact when the last is: every one between is as coarse and no larger.
    const double last = double(X) + count;
    if (double(float(last)) == last && fabsf(X) < 8388608.0f)
        return float(last);

    while (count > 0) {
        s32 exact = 0;
        if (X < 0 && X > -16777216.0f) {
            exact = s32(-X);
        } else if (X >= 1 && X < 16777216.0f) {
            int exponent;
            frexpf(X, &exponent);
            exact = s32(ceilf(ldexpf(1, exponent) - X)) - 1;
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

// How many columns are visited: X counted from span.X while it is at most span.X_end, up to `limit`.
static s32 columns_of(const Span& span, s32 limit) {
    if (limit <= 0 || !(span.X <= span.X_end))
        return 0;
    if (counted_up(span.X, limit - 1) <= span.X_end)
        return limit;
    // About as many as the difference says; rounding may have it one more or less.
    s32 count = s32(double(span.X_end) - double(span.X)) + 1;
    count = std::min(std::max(count, 1), limit);
    while (count > 1 && !(counted_up(span.X, count - 1) <= span.X_end))
        count--;
    while (count < limit && counted_up(span.X, count) <= span.X_end)
        count++;
    return count;
}

// ---- Columns that are exactly 0 --------------------------------------------------------------

// Offsets X of a row between which the plain reading can be other than 0.
struct Range {
    double low, high;

    // Keeps the X with |slope * X + offset| <= bound.
    void cut(double slope, double offset, double bound) {
        if (std::fabs(slope) < 1e-12) {
            if (std::fabs(offset) > bound + std::fabs(slope) * std::max(-low, high))
                high = low - 1;
            return;
        }
        const double a = (-bound - offset) / slope, b = (bound - offset) / slope;
        low = std::max(low, std::min(a, b));
        high = std::min(high, std::max(a, b));
    }
};

// The farthest that a streak's pixels can be from its path, in the plain reading's roundings: across
// it the exponential comes out as 0, beyond its ends both error functions as the same 1.
class Reach {
public:
    explicit Reach(const StreakWork& work) : work(work) {
        // exp gives 0 below -103.98; a faint light makes 0 of more. Products that round up on the
        // way there are allowed for by 3.
        const double brightest = 2 * double(work.width) * work.light;
        const double exponent = 107 + std::min(0.0, std::log2(brightest) * 0.69);
        across = std::sqrt(std::max(0.0, exponent) * work.Q);
        along = double(work.half_path) + 4.05 / work.t;
    }

    // Cuts the row's columns down to those that can be other than 0.
    void narrow(StreakRow& row) const {
        if (std::fabs(row.X) > 4e6f)
            return;
        const double first = row.X, last = first + row.count;
        const double farthest = std::max(std::fabs(first), std::fabs(last));
        const double rounding = 4e-7;
        Range range = {first, last};
        range.cut(work.uy, -double(work.ux) * row.Y,
                  across + rounding * (std::fabs(work.uy) * farthest +
                                       std::fabs(double(work.ux) * row.Y)));
        range.cut(work.qx, double(work.qy) * row.Y,
                  along + rounding *
                              (std::fabs(work.qx) * farthest + std::fabs(double(work.qy) * row.Y)));
        if (range.high < range.low) {
            row.count = 0;
            return;
        }
        const s32 skip = std::max(0, s32(range.low - first) - 1);
        const s32 end = std::min(row.count, s32(range.high - first) + 3);
        row.count = std::max(0, end - skip);
        if (row.count > 0 && skip > 0) {
            row.X = counted_up(row.X, skip);
            row.skip = skip;
        }
    }

private:
    const StreakWork& work;
    double across, along;
};

// ---- Steps -----------------------------------------------------------------------------------

static Drawn draw_spot_rows(const LaneKernels& kernels, const StarCall& call, const Path& path,
                            const RowGeometry& rows, const Box& box, s32 iy, s32 last, float Y) {
    const Span span = row_span(path, rows, box, Y);
    if (span.ix == INT_MIN)
        return {false, 0};
    return kernels.spot({target_of(call), call.amplitude, call.size_x, call.size_y, span.ix, iy,
                         last, span.X, span.X_end, Y, call.lines});
}

static Drawn draw_spot(const LaneKernels& kernels, const StarCall& call, const Path& path,
                       const RowGeometry& rows, const Box& box) {
    float Y = float(box.y_lo) - path.mid[1];
    if (rows.is_flat()) // every row spans the whole box
        return draw_spot_rows(kernels, call, path, rows, box, box.y_lo, box.y_hi, Y);
    Drawn drawn = {false, 0};
    for (s32 iy = box.y_lo; iy <= box.y_hi; iy++, Y += 1.0f)
        drawn += draw_spot_rows(kernels, call, path, rows, box, iy, iy, Y);
    return drawn;
}

static StreakWork streak_work(const StarCall& call, const Path& path) {
    const float size_x = call.size_x, size_y = call.size_y;
    StreakWork work;
    work.target = target_of(call);
    work.ux = path.ux;
    work.uy = path.uy;
    work.qx = size_y * size_y * path.ux;
    work.qy = size_x * size_x * path.uy;
    work.Q = (size_y * size_y) * (path.ux * path.ux) + (size_x * size_x) * (path.uy * path.uy);
    const float s = 1 / sqrtf(work.Q);
    work.half_path = 0.5f * path.length * work.Q;
    work.t = s / (size_x * size_y);
    work.width = half_sqrt_pi * size_x * size_y * s;
    work.light = call.amplitude / path.length;
    work.look_only = false;
    return work;
}

// The rows of a streak's footprint, some at a time.
class StreakRows {
public:
    StreakRows(const StarCall& call, const Path& path, const RowGeometry& rows, const Box& box)
        : call(call), path(path), rows(rows), box(box), iy(box.y_lo),
          Y(float(box.y_lo) - path.mid[1]) {}

    // The next rows that have pixels, at most row_batch; 0 when there are no more.
    int take(StreakRow* batch) {
        int taken = 0;
        for (; iy <= box.y_hi && taken < row_batch; iy++, Y += 1.0f) {
            if (!row_is_written(iy, call.lines))
                continue;
            const Span span = row_span(path, rows, box, Y);
            if (span.ix == INT_MIN)
                continue;
            const s32 count = columns_of(span, call.dst.width - span.ix);
            if (count > 0)
                batch[taken++] = {iy, span.ix, 0, count, span.X, Y};
        }
        return taken;
    }

private:
    const StarCall& call;
    const Path& path;
    const RowGeometry& rows;
    const Box& box;
    s32 iy;
    float Y;
};

static Drawn draw_streak(const LaneKernels& kernels, const StreakWork& work, StreakRows rows) {
    const Reach reach(work);
    Drawn drawn = {false, 0};
    StreakRow batch[row_batch];
    while (const int taken = rows.take(batch)) {
        int kept = 0;
        for (int i = 0; i < taken; i++) {
            reach.narrow(batch[i]);
            if (batch[i].count > 0)
                batch[kept++] = batch[i];
        }
        if (kept > 0)
            drawn += kernels.streak(work, batch, kept);
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

static Drawn draw_short_streak(const LaneKernels& kernels, const StarCall& call, const Path& path,
                               const StreakWork& closed, const fitted::Rule& rule, const Box& box,
                               StreakRows rows) {
    // The plain reading's difference of two error functions is other than 0 from this weight on.
    const float certain = call.amplitude * 2e-7f * closed.width / path.length;
    const double half = 0.5 * double(path.length);
    const QuadratureWork work = {closed.target,  call.amplitude * 0.5f, path.mid[0], path.mid[1],
                                 half * path.ux, half * path.uy,        call.size_x, call.size_y,
                                 box.x_lo,       call.dst.width,        certain,     &rule};
    Drawn drawn = {false, 0};
    StreakRow batch[row_batch];
    const StreakRows again = rows;
    while (const int taken = rows.take(batch)) {
        QuadratureWork part = work;
        part.x_end = 0;
        part.x_first = call.dst.width;
        for (int i = 0; i < taken; i++) {
            part.x_first = std::min(part.x_first, batch[i].ix);
            part.x_end = std::max(part.x_end, batch[i].ix + batch[i].count);
        }
        drawn += kernels.quadrature(part, batch, taken);
    }
    if (drawn.lit || drawn.pixels == 0)
        return drawn;

    // Nothing but the streak's faint surroundings: lit where the closed form is above 0.
    StreakWork look = closed;
    look.look_only = true;
    drawn.lit = draw_streak(kernels, look, again).lit;
    return drawn;
}

static bool within(float v, float low, float high) {
    return v >= low && v <= high;
}

// Whether the kernels' floats hold a streak's constants.
static bool is_moderate(const StreakWork& work) {
    const float huge = 1e37f;
    return within(work.Q, 1e-30f, 1e30f) && within(work.half_path, 0, huge) &&
           within(work.t, 1e-30f, huge) && within(work.width, 0, huge) &&
           within(work.light, 0, huge) && work.width * work.light <= huge;
}

bool fast_star_streak(const LaneKernels& kernels, const StarCall& call, Drawn& drawn) {
    drawn = {false, 0};
    if (call.dst.width <= 0 || call.dst.height <= 0 || !within(call.size_x, 1e-15f, 1e15f) ||
        !within(call.size_y, 1e-15f, 1e15f))
        return false;

    // Segment.
    const Path path(call.from, call.to);
    if (!path.is_somewhere())
        return true;

    // Reach. Below 1/6250 the root is not a number, the box comes out invalid and nothing is drawn.
    const float k = sqrtf(steady_log(call.amplitude * reach_intensity));
    const float rx = k * call.size_x;
    const float ry = k * call.size_y;

    // Bounding box.
    Box box;
    if (!clip_box(path, rx, ry, call.dst.width, call.dst.height, box))
        return true;

    // Row geometry.
    const RowGeometry rows = row_geometry(path, rx, call.size_x, call.size_y);
    if (!path.is_streak()) {
        drawn = draw_spot(kernels, call, path, rows, box);
        return true;
    }
    if (!(path.length <= longest_path))
        return false;
    const StreakWork work = streak_work(call, path);
    if (!is_moderate(work))
        return false;
    const StreakRows pixels(call, path, rows, box);
    const fitted::Rule* rule = rule_for(double(work.half_path) * work.t);
    drawn = rule ? draw_short_streak(kernels, call, path, work, *rule, box, pixels)
                 : draw_streak(kernels, work, pixels);
    return true;
}

} // namespace velmora
