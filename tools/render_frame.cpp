#include "tools/render_frame.h"

#include "stars/setup.h"

namespace velmora {

RenderedFrame render_frame(const KnobValues& knobs, const Shot& shot, StarInput* stars,
                           double frame) {
    const int width = knobs.format.width, height = knobs.format.height;
    const Array<camera> cameras = shot.cameras(knobs, frame);
    RenderedFrame rendered{width,
                           height,
                           std::vector<float>(4 * std::size_t(width) * std::size_t(height)),
                           cameras[0],
                           {}};
    fill_render_data(knobs, rendered.data);
    shot.set_window(knobs, rendered.data);
    if (!stars)
        return rendered;

    const int row_bytes = width * 4 * int(sizeof(float));
    const StarFramebuffer fb = framebuffer_of(rendered.pixels.data(), width, height, row_bytes);
    StarRenderer renderer(rendered.data, fb, *stars, cameras);
    bool drew = false;
    renderer.render_all(drew);
    stars->reset();
    return rendered;
}

} // namespace velmora
