// The render command's work: from what the user asked for to picture files.
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
    bool stats = false;     // say what every frame took
    bool reference = false; // draw with the plain reading
};

// Renders every frame of every node into every output. Checks all that can be checked before the
// first frame; afterwards a frame that fails is said and takes no other with it.
void render(const RenderOptions& options);

} // namespace velmora
