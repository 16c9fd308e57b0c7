// The render command's work: from what the user asked for to picture files.
#pragma once

#include "tools/outputs.h"
#include "tools/shot.h"

#include <string>
#include <vector>

namespace velmora {

struct RenderOptions {
    std::string frames = "1";
    OutputOptions outputs;
    std::string format;
    std::string star_file;
    CameraOptions camera;
    std::vector<std::string> knobs; // NAME=VALUE
    int jobs = 1;
};

// Renders every frame into every output. Checks all that can be checked before the first frame;
// afterwards a frame that fails is said and takes no other with it.
void render(const RenderOptions& options);

} // namespace velmora
