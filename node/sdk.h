// What differs between versions of the host's interface, told by its version number.
//
// Units:     focal length and apertures in millimetres, matrices from the camera's space to the
//            world.
#pragma once

#include <DDImage/CameraOp.h>
#include <DDImage/ddImageVersionNumbers.h>
#include <DDImage/Matrix4.h>

namespace velmora {

inline DD::Image::Matrix4 camera_to_world(const DD::Image::CameraOp& camera) {
#if kDDImageVersionMajorNum > 16 || (kDDImageVersionMajorNum == 16 && kDDImageVersionMinorNum >= 1)
    const auto& world = camera.worldTransform(); // of doubles, column by column, too
    DD::Image::Matrix4 matrix;
    for (int column = 0; column < 4; column++)
        for (int row = 0; row < 4; row++)
            matrix[column][row] = float(world[column][row]);
    return matrix;
#else
    return camera.matrix();
#endif
}

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
