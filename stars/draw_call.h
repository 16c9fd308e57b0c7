// Draws one call of op_star_streak, and reports more than it.
//
// Errors:    as op_star_streak has them.
// Threads:   no state; calls that write disjoint rows may run at once.
#pragma once

#include "stars/star_call.h"

namespace velmora {

// Draws the call by the kernels of the level in use.
Drawn draw_star_streak(const StarCall& call);

} // namespace velmora
