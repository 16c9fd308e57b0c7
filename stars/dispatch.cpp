// SPDX-License-Identifier: BSD-3-Clause
#include "stars/dispatch.h"

#include "stars/plain/engine.h"
#include "stars/plain/rasterise.h"

#ifndef VELMORA_PLAIN_ONLY
#include "stars/fast/engine.h"
#include "stars/fast/level.h"
#include "stars/fast/rasterise.h"

#include <algorithm>
#endif

namespace velmora {

#ifdef VELMORA_PLAIN_ONLY

KernelLevel widest_available_level() {
    return KernelLevel::plain;
}

Drawn draw_star_streak(const StarCall& call, KernelLevel) {
    return plain_star_streak(call);
}

std::unique_ptr<Engine> engine_for(const Frame& frame, KernelLevel) {
    return std::make_unique<PlainEngine>(frame);
}

#else

KernelLevel widest_available_level() {
    return widest_level();
}

static const LaneKernels* kernels_for(KernelLevel level) {
    return lane_kernels(std::min(level, best_kernel_level()));
}

Drawn draw_star_streak(const StarCall& call, KernelLevel level) {
    const LaneKernels* const kernels = kernels_for(level);
    Stroke stroke;
    const Fit fit = kernels ? find_stroke(call, stroke) : Fit::left_to_plain;
    if (fit == Fit::left_to_plain)
        return plain_star_streak(call);
    if (fit == Fit::outside)
        return {false, 0};
    return draw_stroke(brush_of(*kernels, call), stroke, {0, 0, call.dst.width, call.dst.height});
}

std::unique_ptr<Engine> engine_for(const Frame& frame, KernelLevel level) {
    const LaneKernels* const kernels = kernels_for(level);
    if (kernels && FastEngine::can_draw(frame))
        return std::make_unique<FastEngine>(frame, *kernels, plain_star_streak);
    return std::make_unique<PlainEngine>(frame);
}

#endif

} // namespace velmora
