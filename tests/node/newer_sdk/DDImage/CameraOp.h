// SPDX-License-Identifier: BSD-3-Clause

// A camera with those accessors alone that the version of the interface has.
#pragma once

#include <DDImage/ddImageVersionNumbers.h>
#include <DDImage/Matrix4.h>

namespace DD::Image {

class CameraOp {
public:
#if TEST_HOST_MAJOR > 16 || (TEST_HOST_MAJOR == 16 && TEST_HOST_MINOR >= 1)
    Matrix4Of<double> world;
    const Matrix4Of<double>& worldTransform() const {
        return world;
    }
#else
    Matrix4 world;
    const Matrix4& matrix() const {
        return world;
    }
#endif

#if TEST_HOST_MAJOR >= 14
    double focalLength() const {
        return 35.25;
    }
    double horizontalAperture() const {
        return 36.125;
    }
    double verticalAperture() const {
        return 24.0625;
    }
#else
    double focal_length() const {
        return 35.25;
    }
    double film_width() const {
        return 36.125;
    }
    double film_height() const {
        return 24.0625;
    }
#endif
};

} // namespace DD::Image
