// SPDX-License-Identifier: BSD-3-Clause

// The table of the node's knobs that docs/node.md shows, from the plug-in itself.
#pragma once

#include <string>

namespace velmora {

// Lines of Markdown, each with its end. Throws WorkFailure when the plug-in cannot be loaded.
std::string knob_table();

} // namespace velmora
