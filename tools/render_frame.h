// One frame: the knobs and the sampled camera go to the renderer, a picture comes back.
//
// Shapes:    four floats per pixel, alpha, red, green, blue, rows top first; alpha stays 0.
// Errors:    what the renderer throws.
#pragma once

#include "tools/float_picture.h"
#include "tools/shot.h"

#include <vector>

namespace velmora {

struct RenderedFrame {
    int width, height;
    std::vector<float> pixels;
    camera first_camera; // where the shutter opens
    StarRendererData data;

    FloatPicture picture() const { return {width, height, pixels.data()}; }
};

// Draws the whole of `stars`, which stands at its header before and after; without stars (null) the
// frame is black.
RenderedFrame render_frame(const KnobValues& knobs, const Shot& shot, StarInput* stars,
                           double frame);

} // namespace velmora
