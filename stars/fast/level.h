// SPDX-License-Identifier: BSD-3-Clause

// The kernels of each level, and which levels this machine has.
//
// Accuracy:  every level gives the same bytes.
// Threads:   pure functions.
#pragma once

#include "stars/fast/lane_kernels.h"
#include "stars/kernels.h"

namespace velmora {

// The widest level of this machine; every x86-64 processor has SSE2.
KernelLevel widest_level();

// The kernels of a level; null for the plain reading. REQUIRES: level <= widest_level().
const LaneKernels* lane_kernels(KernelLevel level);

} // namespace velmora
