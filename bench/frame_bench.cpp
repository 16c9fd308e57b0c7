// SPDX-License-Identifier: BSD-3-Clause

// Whole frames at 1920x1080 with the node's default knobs.
#include "bench/sky.h"

#include <benchmark/benchmark.h>
#include <cmath>

using namespace velmora;

// `segments` 0 is a still camera; more pan it by 0.35 degrees within the shutter.
static void render(benchmark::State& state, double focal) {
    const std::size_t count = std::size_t(state.range(0));
    const int segments = int(state.range(1));
    MemoryStars input(made_up_sky(count));
    BenchImage image(1920, 1080);
    const StarRendererData data = default_render_data(1920, 1080);
    Array<camera> cameras;
    for (int i = 0; i <= segments; i++)
        cameras.append(panned_camera(segments ? 0.35 * i / segments : 0, focal));

    const auto frame = [&] {
        image.clear();
        bool drew = false;
        StarRenderer renderer(data, image.framebuffer(), input, cameras);
        renderer.render_all(drew);
        input.reset();
    };
    frame();
    const double light = image.light();
    if (!(light > 0 && std::isfinite(light))) {
        state.SkipWithError("the frame is black or not a picture");
        return;
    }

    for (auto _ : state)
        frame();
    state.SetItemsProcessed(int64_t(count) * state.iterations());
    if (image.light() != light)
        state.SkipWithError("the same frame came out differently");
}

static void Frame50mm(benchmark::State& state) {
    render(state, 50);
}
static void Frame18mm(benchmark::State& state) {
    render(state, 18);
}

static void sizes(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"stars", "segments"})->Unit(benchmark::kMillisecond);
    for (const int stars : {10000, 1000000})
        for (const int segments : {0, 1, 3})
            bench->Args({stars, segments});
}
BENCHMARK(Frame50mm)->Apply(sizes);
BENCHMARK(Frame18mm)->Apply(sizes);
