#include "node/doors.h"

#include "stars/kernels.h"

using namespace velmora;

static RenderCounts last_counts = {};

const char* velmora_kernels() {
    return kernel_level_name(kernel_level());
}

void velmora_draw_plainly(bool plainly) {
    set_kernel_level(plainly ? KernelLevel::plain : best_kernel_level());
}

void velmora_last_counts(RenderCounts* counts) {
    *counts = last_counts;
}

void velmora::note_counts(const RenderCounts& counts) {
    last_counts = counts;
}
