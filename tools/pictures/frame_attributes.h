// SPDX-License-Identifier: BSD-3-Clause

// What a picture file says about how it was made: the camera's matrices and the knobs.
//
// Shapes:    matrices are for row vectors, from the host's world.
#pragma once

#include "tools/frames/render_frame.h"
#include "tools/pictures/exr_file.h"

namespace velmora {

// worldToCamera leads to a camera that looks along
// +z, worldToNDC (perspective only) to x and y from -1 at the left and bottom edge to 1 at the
// right and top one. Both are those of the moment the shutter opens. Nothing depends on when or
// where the picture was made: of the star database only the file's name is kept.
ExrMetadata frame_attributes(const RenderedFrame& frame, double fps);

} // namespace velmora
