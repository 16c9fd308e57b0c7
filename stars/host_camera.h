// SPDX-License-Identifier: BSD-3-Clause

// From the host's camera to the renderer's.
//
// Units:     the host's matrices are 16 floats, column by column, for column vectors, camera to
//            world, looking along -z; its focal length is in millimetres.
// Errors:    a singular matrix warns and gives the values that it comes to.
// Threads:   pure functions.
#pragma once

#include "stars/render_data.h"

namespace velmora {

// Focal length of a view without a camera, in units of the default film window.
const double focal_without_camera = 3.2f;

// The renderer's camera for a host camera-to-world matrix: widened, z reversed on both sides, so
// that it looks along +z, and inverted.
camera camera_of_host(const float columns[16], double focal);

} // namespace velmora
