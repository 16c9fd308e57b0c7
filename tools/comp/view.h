// SPDX-License-Identifier: BSD-3-Clause

// What the node of a frame draws: the cameras and the parameters that it hands to the renderer.
//
// Units:     as in stars/stars.h.
// Errors:    WorkFailure for a camera placed where single precision does not reach.
#pragma once

#include "stars/stars.h"
#include "tools/comp/plugin_doors.h"

#include <DDImage/Op.h>

namespace velmora {

struct View {
    Array<camera> cameras; // at least one, in the order of the shutter's samples
    StarRendererData data;
    int width, height; // pixels

    // As the shutter opens.
    const camera& first() const { return cameras[0]; }
};

// Validates the op's cameras and throws where one cannot be computed with.
void check_cameras(DD::Image::Op& stars);

// The view of our node's op, which is validated.
View view_of(DD::Image::Op& stars, const PluginDoors& doors);

} // namespace velmora
