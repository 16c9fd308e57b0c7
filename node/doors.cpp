#include "node/doors.h"

#include "node/VelmoraNK.h"
#include "stars/kernels.h"

using namespace velmora;

const char* velmora_kernels() {
    return kernel_level_name(kernel_level());
}

void velmora_draw_plainly(bool plainly) {
    set_kernel_level(plainly ? KernelLevel::plain : best_kernel_level());
}

void velmora_last_counts(RenderCounts* counts) {
    *counts = VelmoraNK::last_counts;
}
