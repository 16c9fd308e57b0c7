// The render command's work: from what the user asked for to picture files.
#pragma once

#include "tools/shot.h"

#include <string>
#include <vector>

namespace velmora {

struct RenderOptions {
    std::string frames = "1";
    std::vector<std::string> outputs; // names ending in .exr or .png
    std::string raw;                  // name for the floats as they stand in memory
    std::string format;
    std::string star_file;
    CameraOptions camera;
    std::vector<std::string> knobs; // NAME=VALUE
    int jobs = 1;
    bool half = false;
    std::optional<double> exposure; // stops
    double fps = 24;
};

// Renders every frame into every output. Checks all that can be checked before the first frame;
// afterwards a frame that fails is said and takes no other with it.
void render(const RenderOptions& options);

} // namespace velmora
