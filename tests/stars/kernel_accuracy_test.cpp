// SPDX-License-Identifier: BSD-3-Clause

// How far the plain reading and the fast kernels are from the formulas in double, case by case, at
// every pixel that the plain reading visits: within what stars/accuracy.h states.
#include "stars/accuracy.h"
#include "stars/dispatch.h"
#include "stars/footprint.h"
#include "stars/plain/rasterise.h"
#include "tests/stars/dice.h"
#include "tests/stars/kernels.h"
#include "tests/stars/picture.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

using namespace stars_test;
using namespace velmora;

namespace {

// erf(a) - erf(b), without losing what is left of it far out.
double erf_between(double a, double b) {
    if (b > 0)
        return std::erfc(b) - std::erfc(a);
    if (a < 0)
        return std::erfc(-a) - std::erfc(-b);
    return std::erf(a) - std::erf(b);
}

// The formula of a pixel's value, in double from the call's own floats on.
class Exact {
public:
    explicit Exact(const StarCall& call)
        : A(call.amplitude), sx(call.size_x), sy(call.size_y),
          mx(0.5 * (double(call.from[0]) + call.to[0])),
          my(0.5 * (double(call.from[1]) + call.to[1])) {
        const double dx = double(call.to[0]) - call.from[0], dy = double(call.to[1]) - call.from[1];
        L = std::sqrt(dx * dx + dy * dy);
        ux = dx / L;
        uy = dy / L;
        streak = Path(call.from, call.to).is_streak();
    }

    double operator()(int x, int y) const {
        const double X = x - mx, Y = y - my;
        if (!streak)
            return A * std::exp(-X * X / (sx * sx) - Y * Y / (sy * sy));
        const double Q = sy * sy * ux * ux + sx * sx * uy * uy, s = 1 / std::sqrt(Q),
                     t = s / (sx * sy);
        const double p = uy * X - ux * Y, q = sy * sy * ux * X + sx * sx * uy * Y;
        const double e = erf_between((0.5 * L * Q - q) * t, (-0.5 * L * Q - q) * t);
        return A / L *
               (e * (0.5 * std::sqrt(3.141592653589793) * sx * sy * s * std::exp(-p * p / Q)));
    }

private:
    double A, sx, sy, mx, my, L, ux, uy;
    bool streak;
};

struct Case {
    const char* name;
    double shortest, longest; // path; below 0 along an axis; 0 for a spot
    double narrowest, widest; // sizes
    double places;            // positions are rounded to 1 / places; 0: not at all
    Accuracy stated;
    double ratio; // of the fast kernels' largest to the plain reading's, at most
};

const unsigned seeds = 4, first_seed = 11;
const int calls_of_a_seed = 450;

// Where places are rounded, offsets from the middle are exact and the kernels' own error is what is
// left. Where they are not, the rounding of the middle to a float is in both; so it is for long
// paths, whose middle is far from the picture.
const Case cases[] = {
    {"spots below a pixel", 0, 0, 0.2, 1, 64, spot_accuracy, 1.1},
    {"spots", 0, 0, 1, 4, 64, spot_accuracy, 1.1},
    {"wide spots", 0, 0, 4, 200, 64, spot_accuracy, 1.1},
    {"spots anywhere", 0, 0, 0.2, 200, 0, spot_accuracy, 1.1},
    {"streaks to 1e-3", 1e-6, 1e-3, 0.3, 200, 0, tiny_streak_accuracy, 1.5},
    {"streaks to 1", 1e-3, 1, 0.3, 200, 0, short_streak_accuracy, 1.5},
    {"streaks to 10", 1, 10, 0.3, 200, 0, streak_accuracy, 1.5},
    {"short streaks of wide spots", 0.1, 30, 10, 200, 0, wide_streak_accuracy, 1.5},
    {"streaks to 1000", 10, 1000, 0.3, 200, 0, long_streak_accuracy, 1.5},
    {"along the axes, at exact places", -50, 1000, 0.3, 5, 64, long_streak_accuracy, 1.5},
    {"streaks to 1e7", 1e3, 1e7, 0.3, 200, 0, long_streak_accuracy, 1.5},
    {"along the axes", -0.1, 50, 0.3, 20, 0, short_streak_accuracy, 1.5},
};

float placed(double v, double places) {
    return float(places > 0 ? std::round(v * places) / places : v);
}

StarCall some_call(Dice& dice, const Case& c, int width, int height) {
    StarCall call;
    call.size_x = float(dice.log_between(c.narrowest, c.widest));
    call.size_y = dice.below(2) ? call.size_x : float(dice.log_between(c.narrowest, c.widest));
    call.amplitude = float(dice.log_between(2e-4, 1e5));
    call.color = white;
    call.lines = OP_STARS_LINES_ALL;
    // The middle lies in the picture, so that the peak does.
    const double x = dice.between(1, width - 1), y = dice.between(1, height - 1);
    call.from = call.to = at(placed(x, c.places), placed(y, c.places));
    if (c.longest > 0) {
        const bool axes = c.shortest < 0;
        const double length = dice.log_between(std::fabs(c.shortest), c.longest);
        const double angle = axes ? 1.5707963267948966 * dice.below(4) : dice.between(0, 6.2831853);
        const double dx = 0.5 * length * std::cos(angle), dy = 0.5 * length * std::sin(angle);
        call.from = at(placed(x - dx, c.places), placed(y - dy, c.places));
        call.to = at(placed(x + dx, c.places), placed(y + dy, c.places));
    }
    return call;
}

// One call drawn both ways, and what its pixels should have got.
class Drawing {
public:
    Drawing(StarCall c, int width, int height)
        : call(c), plain(width, height), fast(width, height),
          exact(size_t(width) * size_t(height), 0) {
        // A green that is not a number marks what the plain reading visits.
        call.color = {{1, std::nanf(""), 1}};
        call.dst = plain.fb;
        plain_star_streak(call);
        call.color = white;
        call.dst = fast.fb;
        const WithKernels kernels(KernelLevel::sse2);
        draw_star_streak(call);

        const Exact formula(call);
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                largest = std::max(largest, value(x, y) = formula(x, y));
        if (largest == 0)
            return;
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                if (is_visited(x, y)) {
                    plain_error = std::max(plain_error, error(plain, x, y));
                    fast_error = std::max(fast_error, error(fast, x, y));
                }
    }

    double largest = 0, plain_error = 0, fast_error = 0;

    // The call, and the fast kernels' errors pixel by pixel, in tenths of the largest.
    std::string picture() const {
        char text[300];
        snprintf(text, sizeof text, "%a, %a to %a, %a amplitude %a sizes %a, %a in %d x %d\n",
                 double(call.from[0]), double(call.from[1]), double(call.to[0]), double(call.to[1]),
                 double(call.amplitude), double(call.size_x), double(call.size_y), fast.fb.width,
                 fast.fb.height);
        std::string lines = text;
        for (int y = 0; y < fast.fb.height; y++) {
            for (int x = 0; x < fast.fb.width; x++)
                lines +=
                    is_visited(x, y) ? char('0' + int(9.99 * error(fast, x, y) / fast_error)) : '.';
            lines += '\n';
        }
        return lines;
    }

private:
    StarCall call;
    Picture plain, fast;
    std::vector<double> exact;

    double& value(int x, int y) { return exact[size_t(y * fast.fb.width + x)]; }
    double value(int x, int y) const { return exact[size_t(y * fast.fb.width + x)]; }
    bool is_visited(int x, int y) const { return std::isnan(plain.green(x, y)); }
    double error(const Picture& picture, int x, int y) const {
        return std::fabs(picture.red(x, y) - value(x, y)) / largest;
    }
};

} // namespace

TEST(KernelAccuracy, IsAsStatedAndNearThePlainReadings) {
    for (const Case& c : cases) {
        std::unique_ptr<Drawing> worst;
        double plain_worst = 0;
        for (unsigned seed = first_seed; seed < first_seed + seeds; seed++) {
            Dice dice(seed);
            for (int i = 0; i < calls_of_a_seed; i++) {
                const int width = 8 + dice.below(50), height = 8 + dice.below(40);
                std::unique_ptr<Drawing> drawing(
                    new Drawing(some_call(dice, c, width, height), width, height));
                plain_worst = std::max(plain_worst, drawing->plain_error);
                if (!worst || drawing->fast_error > worst->fast_error)
                    worst = std::move(drawing);
            }
        }
        printf("%-32s fast %.2g (stated %.2g), plain %.2g (stated %.2g)\n", c.name,
               worst->fast_error, c.stated.fast, plain_worst, c.stated.plain);
        EXPECT_LE(worst->fast_error, c.stated.fast) << c.name << ": " << worst->picture();
        EXPECT_LE(worst->fast_error, c.ratio * plain_worst) << c.name << ": " << worst->picture();
        EXPECT_LE(plain_worst, c.stated.plain) << c.name;
    }
}
