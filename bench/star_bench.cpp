// SPDX-License-Identifier: BSD-3-Clause

// What one record costs before any pixel: kept or left out.
#include "bench/sky.h"

#include <benchmark/benchmark.h>

using namespace velmora;

// One still 50 mm view that looks away from every star, so that nothing is ever drawn.
static void render_unseen(benchmark::State& state, float flux, int samples) {
    const std::size_t count = 100000;
    std::vector<star> stars = made_up_sky(count);
    for (star& s : stars) {
        s.flux = flux;
        s.ra = 210 + s.ra / 18; // the camera looks at the other half of the sky
        s.dec /= 18;
    }
    MemoryStars input(stars);
    BenchImage image(1920, 1080);
    const StarRendererData data = default_render_data(1920, 1080);
    Array<camera> cameras;
    for (int i = 0; i < samples; i++)
        cameras.append(panned_camera(0.1 * i, 50));

    for (auto _ : state) {
        bool drew = false;
        StarRenderer renderer(data, image.framebuffer(), input, cameras);
        renderer.render_all(drew);
        input.reset();
        if (drew) {
            state.SkipWithError("a star was drawn that cannot be seen");
            return;
        }
    }
    state.SetItemsProcessed(int64_t(count) * state.iterations());
}

static void StarBelowThreshold(benchmark::State& state) {
    render_unseen(state, 0.00005f, 1);
}
BENCHMARK(StarBelowThreshold)->Unit(benchmark::kMillisecond);

// Decoded, shaded and projected once, or once per camera sample.
static void StarOutsideView(benchmark::State& state) {
    render_unseen(state, 0.01f, int(state.range(0)));
}
BENCHMARK(StarOutsideView)
    ->ArgName("samples")
    ->Arg(1)
    ->Arg(2)
    ->Arg(4)
    ->Unit(benchmark::kMillisecond);
