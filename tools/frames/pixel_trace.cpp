// SPDX-License-Identifier: BSD-3-Clause
#include "tools/frames/pixel_trace.h"

#include "stars/record_reader.h"

#include <cstring>

namespace velmora {

std::array<double, 3> TracedStar::added() const {
    std::array<double, 3> difference;
    for (std::size_t k = 0; k < 3; k++)
        difference[k] = double(after[k]) - double(before[k]);
    return difference;
}

// By bits: a pixel that has become not-a-number would differ from itself.
static bool is_same(const Light& a, const Light& b) {
    return memcmp(a.data(), b.data(), sizeof a) == 0;
}

namespace {

// A black image of the view's size.
class Canvas {
public:
    explicit Canvas(const View& view)
        : width(view.width), height(view.height),
          floats(4 * std::size_t(width) * std::size_t(height)) {}

    // Pixels of alpha, red, green, blue, as the node has them.
    StarFramebuffer framebuffer() {
        float* const first = floats.data();
        return {first + 1, first + 2, first + 3, first, width, height, 4 * width, 4};
    }

    Light at(int x, int y) const {
        const float* const pixel =
            &floats[4 * (std::size_t(y) * std::size_t(width) + std::size_t(x))];
        return {pixel[1], pixel[2], pixel[3]};
    }

private:
    const int width, height;
    std::vector<float> floats;
};

} // namespace

PixelTrace trace_pixel(const View& view, StarInput& input, int x, int y, KernelLevel level) {
    PixelTrace traced;
    // A copy of the header, which whoever saves the stars needs.
    RecordReader records(input);
    traced.header = *records.next(1, input.count).first;
    input.reset();

    // Draw star by star, and look at the pixel after each.
    Canvas canvas(view);
    const StarFramebuffer framebuffer = canvas.framebuffer();
    StarRenderer renderer(view.data, framebuffer, input, view.cameras, level);
    traced.has_distances = input.version2;
    for (u32 record = 1; record < input.count; record++) {
        const star source = *records.next(1, input.count - record).first;
        const Light before = canvas.at(x, y);
        if (!renderer.do_render_star(&source))
            continue;
        const Light after = canvas.at(x, y);
        if (!is_same(before, after))
            traced.stars.push_back({record, source, renderer.trace(source), before, after});
    }
    return traced;
}

} // namespace velmora
