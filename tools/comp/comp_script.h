// SPDX-License-Identifier: BSD-3-Clause

// A comp as a script that the host opens: the node, its camera and the project's settings.
//
// Errors:    UsageFailure for a star database whose path cannot be written to a script.
#pragma once

#include "host/script/script.h"
#include "tools/comp/comp.h"

#include <vector>

namespace velmora {

// `comp` is what `options` make. A .chan file becomes a key on each of its frames, with straight
// lines between; its fields of view become focal lengths, so that between frames a zoom differs by
// a trifle from one that follows the file. The range is that of `frames`, the whole file's when
// there is none, or 1.
host::Script script_of(const Comp& comp, const CompOptions& options,
                       const std::vector<int>& frames);

} // namespace velmora
