#include "stars/lanes_sse2.h"

#define VELMORA_LANES sse2_lanes
#include "stars/lane_kernels.inc"

namespace velmora {
extern const LaneKernels lane_kernels_sse2 = {sse2_lanes::draw_spot, sse2_lanes::draw_streak};
} // namespace velmora
