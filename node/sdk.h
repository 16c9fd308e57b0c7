// SPDX-License-Identifier: BSD-3-Clause

// The camera operator's values, under the names that the host's version has for them.
//
// Units:     focal length and apertures in millimetres; matrices camera to world, column by column.
// Errors:    none.
// Threads:   as the host allows for the operator: after its validation, any.
#pragma once

#include <DDImage/CameraOp.h>
#include <DDImage/ddImageVersionNumbers.h>
#include <DDImage/Matrix4.h>

namespace velmora {

// The camera's world transformation, which versions from 16.1 on hold in doubles.
inline DD::Image::Matrix4 camera_to_world(const DD::Image::CameraOp& camera) {
#if kDDImageVersionMajorNum > 16 || (kDDImageVersionMajorNum == 16 && kDDImageVersionMinorNum >= 1)
    const auto& world = camera.worldTransform(); // column by column, too
    DD::Image::Matrix4 matrix;
    for (int column = 0; column < 4; column++)
        for (int row = 0; row < 4; row++)
            matrix[column][row] = float(world[column][row]);
    return matrix;
#else
    return camera.matrix();
#endif
}

// Renamed in version 14.
#if kDDImageVersionMajorNum >= 14
inline double focal_length(const DD::Image::CameraOp& camera) {
    return camera.focalLength();
}
inline double horizontal_aperture(const DD::Image::CameraOp& camera) {
    return camera.horizontalAperture();
}
inline double vertical_aperture(const DD::Image::CameraOp& camera) {
    return camera.verticalAperture();
}
#else
inline double focal_length(const DD::Image::CameraOp& camera) {
    return camera.focal_length();
}
inline double horizontal_aperture(const DD::Image::CameraOp& camera) {
    return camera.film_width();
}
inline double vertical_aperture(const DD::Image::CameraOp& camera) {
    return camera.film_height();
}
#endif

} // namespace velmora
