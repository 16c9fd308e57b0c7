// A shot as a saved comp script that the host opens: the node, its camera and the project's settings.
#pragma once

#include "host/script.h"
#include "tools/comp.h"

#include <vector>

namespace velmora {

// Shapes: a .chan file becomes a key on each of its frames, with straight lines between. The range is
// that of `frames`, the whole file's when there is none, or 1.
// Errors: as make_comp.
Script script_of(const CompOptions& options, const std::vector<int>& frames);

} // namespace velmora
