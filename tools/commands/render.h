// SPDX-License-Identifier: BSD-3-Clause

// The render command's work: from options to picture files.
//
// Errors:    UsageFailure and WorkFailure for what can be checked before the first frame. After that
//            a frame that fails is reported and the others go on; WorkFailure at the end says how
//            many failed.
#pragma once

#include "tools/comp/comp.h"
#include "tools/pictures/outputs.h"

#include <string>

namespace velmora {

struct RenderOptions {
    std::string frames; // empty for frame 1, or for the script's own range
    OutputOptions outputs;
    CompOptions comp;
    int jobs = 1;
    bool stats = false;     // report what every frame took
    bool reference = false; // draw with the plain reading
};

// Renders every frame of every node into every output.
void render(const RenderOptions& options);

} // namespace velmora
