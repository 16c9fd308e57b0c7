// SPDX-License-Identifier: BSD-3-Clause

// Draws the stars of one frame in the order in which they come. There are two engines: the plain
// reading's, which defines the result, and the fast kernels'.
//
// Ownership: an engine borrows what its Frame points to.
// Errors:    StrXception "unknown projection"; StarsLost from the stars' input. Pixels drawn before
//            stay drawn, and are counted.
// Threads:   one engine belongs to one thread.
#pragma once

#include "core/array.h"
#include "stars/kept_stars.h"
#include "stars/render_data.h"

namespace velmora {

// What all stars of a frame have in common.
struct Frame {
    const StarRendererData* data = nullptr;
    const StarFramebuffer* fb = nullptr;
    const StarInput* input = nullptr;
    Array<DblMatrix4> matrices;   // one per camera sample, scene to projection
    float intensity_scale = 0;    // multiplies each star's luminance
    float spot_w = 0, spot_h = 0; // pixels, at least 1

    // Whether the input's distances count.
    bool has_distances() const { return data->threed && input->version2; }
};

class Engine {
public:
    explicit Engine(const Frame& frame) : frame(frame) {}
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    virtual ~Engine() {}

    // Draws a star at once. Returns whether light got into a pixel.
    virtual bool draw(const star& s) = 0;

    // Draws what `stars` still has.
    virtual void draw_all(KeptStars& stars) = 0;

    u64 drawn() const { return stars_drawn; }     // stars that put light into a pixel
    u64 pixels() const { return pixels_written; } // that were written

protected:
    const Frame& frame;
    u64 stars_drawn = 0, pixels_written = 0;
};

} // namespace velmora
