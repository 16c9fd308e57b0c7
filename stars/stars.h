// SPDX-License-Identifier: BSD-3-Clause

// Renders a star database into a float image: one StarRenderer draws one image.
//
//     const StarFramebuffer fb = framebuffer_of(image);
//     StarRenderer renderer(data, fb, *input, cameras);
//     bool drew = false;
//     renderer.render_all(drew);
//     input->reset(); // for the next frame
//
// Units:     the film window and focal lengths share one film unit; `spot_width` and `star_size`
//            are in 1/2000 of the image's width; luminances and colours are linear.
// Ownership: a StarRenderer borrows its parameters, framebuffer and star input, which must outlive it
//            and, the pixels aside, stay as they are. The cameras are needed by its constructor only.
// Errors:    the constructor asserts "priv->cams.len() > 0" and throws StrXception "error in star
//            database file"; drawing throws "unknown projection"; both throw velmora::StarsLost when
//            a mapped database gets shorter meanwhile. Pixels drawn before stay drawn.
// Threads:   one renderer belongs to one thread.
#pragma once

#include "core/array.h"
#include "stars/kernels.h"
#include "stars/render_data.h"
#include "stars/star_trace.h"
#include "stars/starfile.h"
#include "stars/streak.h"

#include <memory>

namespace velmora {

// Counts of what a renderer has done so far.
struct RenderCounts {
    u64 read;   // records taken from the input
    u64 kept;   // of those, not below the threshold
    u64 drawn;  // of those, stars that put light into a pixel
    u64 pixels; // written; the fast kernels leave out some whose value is 0
};

} // namespace velmora

class StarRenderer {
public:
    // Combines the cameras' matrices, derives the spot's size and intensity, and takes the header
    // from `input`. With two or more cameras every star leaves a streak from sample to sample.
    // `level` says which kernels draw; one that is not available counts as the best.
    StarRenderer(const StarRendererData& data, const StarFramebuffer& fb, StarInput& input,
                 const Array<camera>& cams, velmora::KernelLevel level = velmora::kernel_level());
    StarRenderer(const StarRenderer&) = delete;
    StarRenderer& operator=(const StarRenderer&) = delete;
    ~StarRenderer();

    // Draws the next star of the input; sets `drew` when light got into a pixel and never clears
    // it. Returns whether there is more to do: false at the end, and at once when brightness is 0.
    bool render_star(bool& drew);

    // Draws every star that is left, bit for bit as render_star called until it returns false.
    void render_all(bool& drew);

    // Draws `s`, which need not come from the input. Returns whether light got into a pixel.
    bool do_render_star(const star* s);

    // What has been done so far.
    velmora::RenderCounts counts() const;

    // What drawing `s` starts from. Draws nothing.
    velmora::StarTrace trace(const star& s) const;

private:
    struct Private;

    const StarRendererData* data;
    std::unique_ptr<Private> priv;
};
