// SPDX-License-Identifier: BSD-3-Clause

// What the plug-in offers to programs that drive it, besides the node: which kernels draw, and what
// the last frame took. The functions are extern "C", to be found with dlsym().
//
// Threads:   main thread, while nothing is being opened.
#pragma once

#include "stars/stars.h"

namespace DD::Image {
class Op;
}

#define VELMORA_DOOR __attribute__((visibility("default")))

extern "C" {

// "plain", "SSE2", "AVX2" or "AVX-512": the level that nodes draw with.
VELMORA_DOOR const char* velmora_kernels();

// Makes nodes draw with the plain reading, or again with the best kernels that the machine has.
VELMORA_DOOR void velmora_draw_plainly(bool plainly);

// The counts of the opening that ended last, on any node; all 0 before the first.
VELMORA_DOOR void velmora_last_counts(velmora::RenderCounts* counts);

// What a validated op draws, or null when it is not of this class. The op owns both, until its next
// validation.
VELMORA_DOOR const StarRendererData* velmora_render_data(DD::Image::Op* op);
VELMORA_DOOR const Array<camera>* velmora_cameras(DD::Image::Op* op);
}

namespace velmora {

// Takes the counts of an opening, for velmora_last_counts(). Not visible outside the plug-in.
void note_opening(const RenderCounts& counts);

} // namespace velmora
