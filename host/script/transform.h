// SPDX-License-Identifier: BSD-3-Clause

// The host's axis: position, rotation and scale of something in space.
//
// Units:     angles in degrees, lengths in scene units.
// Shapes:    a matrix is 16 floats, column by column, for column vectors, local to world:
//
//                | m[0] m[4] m[ 8] m[12] |    p' = M · p; a camera looks along its -z with y up
//            M = | m[1] m[5] m[ 9] m[13] |    and x to the right.
//                | m[2] m[6] m[10] m[14] |
//                |   0    0     0     1  |
//
// Accuracy:  computed in double, then rounded to float.
// Threads:   pure functions.
#pragma once

#include <array>

namespace velmora::host {

typedef std::array<float, 16> HostMatrix;

// Named in order of application: SRT scales first and translates last, ZXY rotates about z first
// and about y last.
enum class TransformOrder { SRT, STR, RST, RTS, TSR, TRS };
enum class RotationOrder { XYZ, XZY, YXZ, YZX, ZXY, ZYX };

struct Transform {
    std::array<double, 3> translate = {0.0, 0.0, 0.0};
    std::array<double, 3> rotate = {0.0, 0.0, 0.0}; // about x, y and z
    std::array<double, 3> scaling = {1.0, 1.0, 1.0};
    double uniform_scale = 1.0;
    std::array<double, 3> pivot = {0.0, 0.0, 0.0}; // the fixed point of scale and rotation
    TransformOrder order = TransformOrder::SRT;
    RotationOrder rotation_order = RotationOrder::ZXY;

    // Local to world.
    HostMatrix matrix() const;
};

} // namespace velmora::host
