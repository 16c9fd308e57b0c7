#include "stars/lanes_avx2.h"

#define VELMORA_LANES avx2_lanes
#include "stars/lane_decode.inc"
#include "stars/lane_kernels.inc"

namespace velmora {
const LaneKernels lane_kernels_avx2 = {
    avx2_lanes::draw_spot,       avx2_lanes::draw_quadrature, avx2_lanes::draw_streak,
    avx2_lanes::find_directions, avx2_lanes::project,         avx2_lanes::mark_reaching,
};
} // namespace velmora
