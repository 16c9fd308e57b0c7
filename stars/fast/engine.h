// SPDX-License-Identifier: BSD-3-Clause

// Draws stars by the fast kernels: a batch at a time is placed on the image, and those that reach
// it wait to be drawn tile by tile.
//
//     record -> StarBatch -> star that reaches the image -> Stroke -> TileQueue -> pixels
//
// Accuracy:  the same bytes at every level, and whether stars come one at a time or all at once;
//            as near to the plain reading as accuracy.h states.
// Errors:    as engine.h has them.
// Threads:   one engine belongs to one thread.
#pragma once

#include "stars/engine.h"
#include "stars/fast/batch.h"
#include "stars/fast/tiles.h"

namespace velmora {

class FastEngine : public Engine {
public:
    // What draws the calls that the kernels do not take.
    typedef Drawn (*Fallback)(const StarCall& call);

    // Whether the kernels draw such frames: the projection must be known, and the film window have
    // a size.
    static bool can_draw(const Frame& frame);

    // REQUIRES: can_draw(frame).
    FastEngine(const Frame& frame, const LaneKernels& kernels, Fallback fallback);

    bool draw(const star& s) override;
    void draw_all(KeptStars& stars) override;

private:
    const LaneKernels& kernels;
    const Fallback fallback;
    StarBatch batch;
    TileQueue queue;
    bool queueing = false; // whether strokes wait in the queue instead of being drawn at once
    u32 owner = 0;         // numbers the stars that reach the image
    LitOwners lit;

    StarBatch::View view() const;
    bool draw_batch();
    bool draw_star(int i);
    bool draw_segment(const StarCall& call);
    Drawn draw_now(const StarCall& call, Fit fit, const Stroke& stroke);
    void put_on_queue(const Stroke& stroke);
    void empty_queue();
};

} // namespace velmora
