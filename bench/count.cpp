// SPDX-License-Identifier: BSD-3-Clause

// Work to count instructions of: velmora_count CASE LEVEL TIMES prints how many units (stars or
// pixels) it did. Two runs of different length and the difference of what they took give the
// instructions per unit; scripts/count-instructions does that.
#include "bench/sky.h"
#include "stars/kernels.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace velmora;

namespace {

// Stars that the threshold keeps and the camera cannot see.
s64 keep_stars(int times) {
    std::vector<star> stars = made_up_sky(4096);
    for (star& s : stars) {
        s.flux = 0.01f;
        s.ra = 210 + s.ra / 18;
        s.dec /= 18;
    }
    MemoryStars input(stars);
    BenchImage image(64, 36);
    const StarRendererData data = default_render_data(64, 36);
    Array<camera> cameras;
    cameras.append(panned_camera(0, 50));
    s64 kept = 0;
    for (int i = 0; i < times; i++) {
        bool drew = false;
        StarRenderer renderer(data, image.framebuffer(), input, cameras);
        renderer.render_all(drew);
        kept += s64(renderer.counts().kept);
        input.reset();
    }
    return kept;
}

// Pixels that the plain reading visits: what the fast kernels leave out counts as done.
s64 draw(int times, float size, float length) {
    BenchImage image(960, 540);
    const Vector2 from = {{480.25f, 270.5f}};
    const Vector2 to = {{from[0] + length * 0.8f, from[1] + length * 0.6f}};
    const auto stroke = [&](const Color3& color) {
        op_star_streak(image.framebuffer(), from, to, 1, color, size, size, OP_STARS_LINES_ALL);
    };
    for (int i = 0; i < times; i++)
        stroke({{1, 1, 1}});

    const KernelLevel level = kernel_level();
    set_kernel_level(KernelLevel::plain);
    image.clear();
    const float nan = __builtin_nanf("");
    stroke({{nan, 0, 0}});
    set_kernel_level(level);
    s64 visited = 0;
    for (int i = 0; i < 960 * 540; i++)
        visited += image.framebuffer().red[4 * i] != image.framebuffer().red[4 * i];
    return visited * times;
}

bool set_level(const std::string& name) {
    for (KernelLevel level :
         {KernelLevel::plain, KernelLevel::sse2, KernelLevel::avx2, KernelLevel::avx512})
        if (name == kernel_level_name(level))
            return set_kernel_level(level);
    return false;
}

} // namespace

int main(int argc, char** argv) {
    const std::string what = argc == 4 ? argv[1] : "";
    if (argc != 4 || !set_level(argv[2])) {
        fprintf(stderr,
                "velmora_count: star|spot|short|long LEVEL TIMES, with a level that is here\n");
        return 2;
    }
    const int times = atoi(argv[3]);
    const s64 units = what == "star"    ? keep_stars(times)
                      : what == "spot"  ? draw(times, 3, 0)
                      : what == "short" ? draw(times, 3, 10)
                                        : draw(times, 3, 100);
    printf("%ld\n", units);
    return 0;
}
