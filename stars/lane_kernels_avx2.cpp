#include "stars/lanes_avx2.h"

#define VELMORA_LANES avx2_lanes
#include "stars/lane_kernels.inc"

namespace velmora {
extern const LaneKernels lane_kernels_avx2 = {avx2_lanes::draw_spot, avx2_lanes::draw_streak};
} // namespace velmora
