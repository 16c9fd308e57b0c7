// SPDX-License-Identifier: BSD-3-Clause

// What one pixel of a spot or a streak costs.
#include "bench/sky.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <limits>

using namespace velmora;

static const float amplitude = 1;
static const Vector2 middle = {{480.25f, 270.5f}};

// How many pixels a call visits: each gets a value that is not a number.
static int64_t visited_pixels(const Vector2& from, const Vector2& to, float size) {
    BenchImage image(960, 540);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    op_star_streak(image.framebuffer(), from, to, amplitude, {{nan, 0, 0}}, size, size,
                   OP_STARS_LINES_ALL);
    int64_t visited = 0;
    for (int i = 0; i < 960 * 540; i++)
        visited += std::isnan(image.framebuffer().red[4 * i]);
    return visited;
}

static void draw(benchmark::State& state, const Vector2& from, const Vector2& to, float size) {
    BenchImage image(960, 540);
    const Color3 white = {{1, 1, 1}};
    op_star_streak(image.framebuffer(), from, to, amplitude, white, size, size, OP_STARS_LINES_ALL);
    const double light = double(amplitude) * 3.14159265358979 * double(size) * double(size);
    if (std::fabs(image.light() / light - 1) > 1e-3) {
        state.SkipWithError("the light is not that of the spot");
        return;
    }

    for (auto _ : state)
        op_star_streak(image.framebuffer(), from, to, amplitude, white, size, size,
                       OP_STARS_LINES_ALL);
    state.SetItemsProcessed(visited_pixels(from, to, size) * state.iterations());
}

static void SpotPixel(benchmark::State& state) {
    draw(state, middle, middle, float(state.range(0)));
}
BENCHMARK(SpotPixel)->ArgName("size")->Arg(1)->Arg(3)->Arg(10)->Arg(25);

static void StreakPixel(benchmark::State& state) {
    const float length = float(state.range(1));
    const Vector2 to = {{middle[0] + length * 0.8f, middle[1] + length * 0.6f}};
    draw(state, middle, to, float(state.range(0)));
}
BENCHMARK(StreakPixel)
    ->ArgNames({"size", "length"})
    ->Args({1, 3})
    ->Args({3, 10})
    ->Args({3, 100})
    ->Args({10, 100});
