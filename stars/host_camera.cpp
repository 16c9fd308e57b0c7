// SPDX-License-Identifier: BSD-3-Clause
#include "stars/host_camera.h"

namespace velmora {

// The stars' own near plane, and none far away.
static const double near_plane = 0.1f;
static const double no_far_plane = -1.0;

camera camera_of_host(const float columns[16], double focal) {
    // Read in memory order the column-vector matrix is its own row-vector transpose.
    DblMatrix4 to_world;
    for (int i = 0; i < 16; i++)
        to_world.e[i] = columns[i];

    // Reverse z on both sides; where both meet, the element stays.
    for (int i = 0; i < 4; i++) {
        if (i == 2)
            continue;
        to_world(i, 2) = -to_world(i, 2);
        to_world(2, i) = -to_world(2, i);
    }

    camera cam;
    cam.matrix = to_world.inverse();
    cam.focal = focal;
    cam.near = near_plane;
    cam.far = no_far_plane;
    return cam;
}

} // namespace velmora
