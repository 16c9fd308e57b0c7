// SPDX-License-Identifier: BSD-3-Clause

// Draws stars as the plain reading has them: one after the other, step by step. It defines what a
// frame should be.
//
// Errors:    as engine.h has them.
// Threads:   one engine belongs to one thread.
#pragma once

#include "stars/engine.h"
#include "stars/star_call.h"
#include "stars/star_trace.h"

namespace velmora {

class PlainEngine : public Engine {
public:
    using Engine::Engine;

    bool draw(const star& s) override;
    void draw_all(KeptStars& stars) override;

private:
    bool draw_segment(const StarCall& call);
};

// What drawing `s` starts from.
StarTrace trace_of(const Frame& frame, const star& s);

} // namespace velmora
