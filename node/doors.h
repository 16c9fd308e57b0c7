// What the plug-in shows beside the node itself, for programs that drive it: which kernels draw,
// and what the last frame took. In the C language's way, to be looked up by name in the loaded
// file.
//
// Threads:   main thread, while nothing is being opened.
#pragma once

#include "stars/stars.h"

namespace DD::Image {
class Op;
}

#define VELMORA_DOOR __attribute__((visibility("default")))

extern "C" {

// "plain", "SSE2", "AVX2" or "AVX-512".
VELMORA_DOOR const char* velmora_kernels();

// Draws with the plain reading from now on, or again with the best kernels that the machine has.
VELMORA_DOOR void velmora_draw_plainly(bool plainly);

// Of the opening that ended last, on any node; all 0 before the first.
VELMORA_DOOR void velmora_last_counts(velmora::RenderCounts* counts);

// What a validated op draws, or null when it is not of this class. The op owns both, until its next
// validation.
VELMORA_DOOR const StarRendererData* velmora_render_data(DD::Image::Op* op);
VELMORA_DOOR const Array<camera>* velmora_cameras(DD::Image::Op* op);
}
