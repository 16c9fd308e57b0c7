// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/view.h"

#include "host/runtime/node.h"
#include "tools/comp/star_node.h"
#include "tools/failure.h"
#include "tools/numbers.h"

#include <cmath>
#include <DDImage/CameraOp.h>
#include <DDImage/Iop.h>

namespace velmora {

using DD::Image::CameraOp;
using DD::Image::Matrix4;
using DD::Image::Op;

// The matrix of the node's own axis knob at its frame.
static Matrix4 transform_of(Op& stars) {
    Matrix4 transform;
    DD::Image::Hash ignored;
    stars.knob("transform")
        ->store(DD::Image::MatrixPtr, &transform, ignored, stars.outputContext());
    return transform;
}

// The host's matrices hold floats, whose largest is 3.4e38; an infinity would make every star NaN.
static void check_finite(const Matrix4& matrix, double time) {
    for (int i = 0; i < 16; i++)
        if (!std::isfinite(matrix.array()[i]))
            throw WorkFailure("camera at frame " + shortest_text(time),
                              "is placed too far away to be computed");
}

// The camera of sample `n`, null when the input is open.
static CameraOp* camera_of(Op& stars, int n) {
    return dynamic_cast<CameraOp*>(stars.Op::input(star_camera_input, n));
}

void check_cameras(Op& stars) {
    const Matrix4 transform = transform_of(stars);
    for (int n = 0; n < stars.split_input(star_camera_input); n++) {
        CameraOp* const sample = camera_of(stars, n);
        if (!sample)
            continue;
        sample->validate(true);
        // As the node multiplies them.
        check_finite(sample->matrix() * transform, sample->outputContext().frame());
    }
}

View view_of(Op& stars, const PluginDoors& doors) {
    const DD::Image::Format& format = stars.iop()->format();
    return {doors.cameras(stars), doors.render_data(stars), format.width(), format.height()};
}

} // namespace velmora
