// SPDX-License-Identifier: BSD-3-Clause

// The projections: how directions become positions on the image. Values are the node's menu indices.
#pragma once

#include "core/types.h"

enum op_stars_projection : s32 {
    OP_STARS_PERSPECTIVE = 0,           // pinhole, through the camera's focal length
    OP_STARS_HEMISPHERICAL = 1,         // the unit direction sphere seen orthographically
    OP_STARS_AZIMUTHAL_EQUIDISTANT = 2, // radius proportional to the angle off the view axis
};
