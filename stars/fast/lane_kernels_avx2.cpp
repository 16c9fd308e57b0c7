// SPDX-License-Identifier: BSD-3-Clause
#include "stars/fast/lanes_avx2.h"

#define VELMORA_LANES avx2_lanes
#include "stars/fast/lane_kernels.inc"
#include "stars/fast/lane_places.inc"

namespace velmora {
const LaneKernels lane_kernels_avx2 = {
    avx2_lanes::draw_spot,       avx2_lanes::draw_quadrature, avx2_lanes::draw_streak,
    avx2_lanes::find_directions, avx2_lanes::project,         avx2_lanes::mark_reaching,
};
} // namespace velmora
