// SPDX-License-Identifier: BSD-3-Clause

// The plain reading of op_star_streak: scalar, one pixel after the other, through the C library. It
// defines what a pixel should be.
//
// Errors:    AssertXception, for an image without columns or rows.
// Threads:   no state; calls that write disjoint rows may run at once.
#pragma once

#include "stars/star_call.h"

namespace velmora {

Drawn plain_star_streak(const StarCall& call);

} // namespace velmora
