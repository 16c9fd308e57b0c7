// SPDX-License-Identifier: BSD-3-Clause
#include "stars/fast/lanes_sse2.h"

#define VELMORA_LANES sse2_lanes
#include "stars/fast/lane_kernels.inc"
#include "stars/fast/lane_places.inc"

namespace velmora {
const LaneKernels lane_kernels_sse2 = {
    sse2_lanes::draw_spot,       sse2_lanes::draw_quadrature, sse2_lanes::draw_streak,
    sse2_lanes::find_directions, sse2_lanes::project,         sse2_lanes::mark_reaching,
};
} // namespace velmora
