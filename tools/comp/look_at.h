// SPDX-License-Identifier: BSD-3-Clause

// Turns a camera of the host to a place in the sky.
//
// Units:     degrees.
// Shapes:    the sky lies in the host's world with the north pole along y; the star at (ra, dec) is
//            in the direction (cos dec cos ra, sin dec, -cos dec sin ra).
// Threads:   pure function.
#pragma once

#include <array>

namespace velmora {

// The `rotate` of a camera that looks at right ascension `ra` and declination `dec` with north up
// and east to the left. A positive `roll` turns the camera counterclockwise, the picture clockwise.
inline std::array<double, 3> look_at_rotation(double ra, double dec, double roll) {
    return {dec, ra - 90.0, roll};
}

} // namespace velmora
