#include "tools/render_frame.h"

#include "stars/setup.h"

namespace velmora {

static Kess::ImageSpec spec_of(const Format& format) {
    return {format.width, format.height, Kess::ImageSpec::BGRA_FLOAT};
}

RenderedFrame::RenderedFrame(const KnobValues& knobs, const Shot& shot, double frame)
    : image(spec_of(knobs.format)), data(), cameras(shot.cameras(knobs, frame)) {
    image.make_blank();
    fill_render_data(knobs, data);
    shot.set_window(knobs, data);
}

FloatPicture RenderedFrame::picture() const {
    return {image.width, image.height, reinterpret_cast<const float*>(image.data)};
}

namespace {

// Leaves the input at its header, whatever ends the drawing, so that the next frame finds it there.
struct Rewound {
    StarInput& input;
    explicit Rewound(StarInput& input) : input(input) {}
    ~Rewound() { input.reset(); }
};

} // namespace

std::unique_ptr<RenderedFrame> render_frame(const KnobValues& knobs, const Shot& shot,
                                            StarInput* stars, double frame) {
    auto rendered = std::make_unique<RenderedFrame>(knobs, shot, frame);
    if (!stars)
        return rendered;

    const Rewound rewound(*stars);
    const StarFramebuffer fb = framebuffer_of(rendered->image);
    StarRenderer renderer(rendered->data, fb, *stars, rendered->cameras);
    bool drew = false;
    renderer.render_all(drew);
    return rendered;
}

} // namespace velmora
