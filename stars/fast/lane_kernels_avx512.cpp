// SPDX-License-Identifier: BSD-3-Clause
#include "stars/fast/lanes_avx512.h"

#define VELMORA_LANES avx512_lanes
#include "stars/fast/lane_kernels.inc"
#include "stars/fast/lane_places.inc"

namespace velmora {
const LaneKernels lane_kernels_avx512 = {
    avx512_lanes::draw_spot,       avx512_lanes::draw_quadrature, avx512_lanes::draw_streak,
    avx512_lanes::find_directions, avx512_lanes::project,         avx512_lanes::mark_reaching,
};
} // namespace velmora
