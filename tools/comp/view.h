// What the camera of a frame sees, as the renderer is told: for notes and for what pictures say.
//
// Units:     the film window and the focal length share the renderer's film unit.
// Errors:    WorkFailure for a camera that stands where single precision does not reach.
#pragma once

#include "stars/film.h"
#include "stars/host_camera.h"

#include <DDImage/Op.h>

namespace velmora {

struct View {
    camera first;          // as the shutter opens
    StarRendererData film; // the film window and the projection alone
    int width, height;     // pixels
};

// Validates the op's cameras and throws where one cannot be computed with.
void check_cameras(DD::Image::Op& stars);

// The view of our node's op, which is validated.
View view_of(DD::Image::Op& stars);

} // namespace velmora
