// SPDX-License-Identifier: BSD-3-Clause
#include "node/doors.h"

#include "node/VelmoraNK.h"
#include "stars/kernels.h"

#include <DDImage/NukeWrapper.h>

using namespace velmora;

static RenderCounts last_opening = {};

const char* velmora_kernels() {
    return kernel_level_name(kernel_level());
}

void velmora_draw_plainly(bool plainly) {
    set_kernel_level(plainly ? KernelLevel::plain : best_kernel_level());
}

void velmora_last_counts(RenderCounts* counts) {
    *counts = last_opening;
}

void velmora::note_opening(const RenderCounts& counts) {
    last_opening = counts;
}

// The host's wrapper is what others hold.
static const VelmoraNK* node_of(DD::Image::Op* op) {
    const auto* const wrapper = dynamic_cast<DD::Image::NukeWrapper*>(op);
    return wrapper ? dynamic_cast<VelmoraNK*>(wrapper->wrapped_iop()) : nullptr;
}

const StarRendererData* velmora_render_data(DD::Image::Op* op) {
    const VelmoraNK* const node = node_of(op);
    return node ? &node->render_data : nullptr;
}

const Array<camera>* velmora_cameras(DD::Image::Op* op) {
    const VelmoraNK* const node = node_of(op);
    return node ? &node->cameras : nullptr;
}
