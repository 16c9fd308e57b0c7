// SPDX-License-Identifier: BSD-3-Clause

// What drawing one star starts from, as the plain reading has it: for those who explain a picture.
//
// Units:     positions and sizes in pixels, x right, y down from the top row; linear light.
#pragma once

#include "core/newmatrix.h"

#include <vector>

namespace velmora {

struct StarTrace {
    struct Sample {
        Vector2 position;
        bool visible; // a segment is drawn whole when either of its ends is visible
    };
    std::vector<Sample> samples; // one per camera
    float amplitude;             // of the spot, or of each segment
    Color3 color;
    float size_x, size_y; // of the spot
};

} // namespace velmora
