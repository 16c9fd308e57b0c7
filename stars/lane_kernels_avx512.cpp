#include "stars/lanes_avx512.h"

#define VELMORA_LANES avx512_lanes
#include "stars/lane_kernels.inc"

namespace velmora {
extern const LaneKernels lane_kernels_avx512 = {avx512_lanes::draw_spot, avx512_lanes::draw_streak};
} // namespace velmora
