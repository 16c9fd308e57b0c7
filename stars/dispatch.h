// SPDX-License-Identifier: BSD-3-Clause

// Says which reading draws, the plain one or the fast kernels: the one place that knows both.
//
// Threads:   pure functions, and what they draw with has no state of its own.
#pragma once

#include "stars/engine.h"
#include "stars/kernels.h"
#include "stars/star_call.h"

#include <memory>

namespace velmora {

// The widest level that this machine and this build have.
KernelLevel widest_available_level();

// Draws one call of op_star_streak, by the plain reading where the kernels do not take it. A level
// that is not available counts as the widest one that is.
Drawn draw_star_streak(const StarCall& call, KernelLevel level = kernel_level());

// The engine that draws a frame; the plain one where the kernels do not take it. `frame` must
// outlive it.
std::unique_ptr<Engine> engine_for(const Frame& frame, KernelLevel level);

} // namespace velmora
