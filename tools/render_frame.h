// One frame: the knobs and the sampled camera go to the renderer, a picture comes back.
//
// Shapes:    four floats per pixel, alpha, red, green, blue, rows top first; alpha stays 0.
// Errors:    what the renderer throws.
#pragma once

#include "kessimage/image.h"
#include "tools/float_picture.h"
#include "tools/shot.h"

#include <memory>

namespace velmora {

struct RenderedFrame {
    Kess::Image image;
    StarRendererData data;
    Array<camera> cameras; // one per sample, in the order of time

    RenderedFrame(const KnobValues& knobs, const Shot& shot, double frame);

    FloatPicture picture() const;
};

// Draws the whole of `stars`, which stands at its header before and after; without stars (null) the
// frame is black.
std::unique_ptr<RenderedFrame> render_frame(const KnobValues& knobs, const Shot& shot,
                                            StarInput* stars, double frame);

} // namespace velmora
