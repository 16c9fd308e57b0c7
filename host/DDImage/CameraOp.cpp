// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/angles.h"

#include <DDImage/CameraOp.h>

namespace DD::Image {

CameraOp::CameraOp(Node* node) : AxisOp(node), projection_(Matrix4::identity()) {}

CameraOp::~CameraOp() {}

const char* CameraOp::node_help() const {
    return "A camera for ops that look at a scene.";
}

void CameraOp::knobs(Knob_Callback f) {
    static const char* const modes[] = {"perspective", "orthographic",  "uv",
                                        "spherical",   "render camera", nullptr};
    Enumeration_knob(f, &projection_mode_, modes, "projection_mode", "projection");
    Double_knob(f, &focal_length_, IRange(5, 100), "focal", "focal length");
    Double_knob(f, &haperture_, IRange(0.1, 50), "haperture", "horiz aperture");
    Double_knob(f, &vaperture_, IRange(0.1, 50), "vaperture", "vert aperture");
    Double_knob(f, &near_, IRange(0.1, 10), "near");
    Double_knob(f, &far_, IRange(1, 10000), "far");
    XY_knob(f, &win_translate_.x, "win_translate", "window translate");
    XY_knob(f, &win_scale_.x, "win_scale", "window scale");
    Double_knob(f, &win_roll_, IRange(-45, 45), "winroll", "window roll");
    Double_knob(f, &focal_point_, IRange(0, 100), "focal_point", "focus distance");
    Double_knob(f, &fstop_, IRange(1, 32), "fstop", "f-stop");
    AxisOp::knobs(f);
}

void CameraOp::_validate(bool for_real) {
    AxisOp::_validate(for_real);
    projection_ = projection(projection_mode_);
}

Matrix4 CameraOp::projection(int mode) const {
    // The window moves, scales and turns what the lens projects.
    Matrix4 matrix;
    matrix.makeIdentity();
    matrix.rotateZ(float(win_roll_ * velmora::host::radians_per_degree));
    matrix.scale(1 / win_scale_.x, 1 / win_scale_.y, 1);
    matrix.translate(-win_translate_.x, -win_translate_.y);
    // These two have no lens.
    if (mode == LENS_UV || mode == LENS_SPHERICAL)
        return matrix;
    Matrix4 lens;
    lens.projection(float(focal_length_ / haperture_), float(near_), float(far_),
                    mode != LENS_ORTHOGRAPHIC);
    return matrix * lens;
}

Matrix4 CameraOp::projectionAt(const OutputContext& context) const {
    // A knob's value at that time, or the op's own where there are no knobs.
    const auto at = [&](const char* name, double now, int i = 0) {
        const Knob* const value = knob(name);
        return value ? value->get_value_at(context, i) : now;
    };
    CameraOp then(nullptr);
    then.focal_length(at("focal", focal_length_));
    then.film_width(at("haperture", haperture_));
    then.Near(at("near", near_));
    then.Far(at("far", far_));
    then.win_roll(at("winroll", win_roll_));
    then.win_translate(at("win_translate", win_translate_.x),
                       at("win_translate", win_translate_.y, 1));
    then.win_scale(at("win_scale", win_scale_.x), at("win_scale", win_scale_.y, 1));
    return then.projection(int(at("projection_mode", projection_mode_)));
}

void CameraOp::to_format(Matrix4& matrix, const Format* format) {
    // The square's centre and width are the format's; its height follows from the shape of a pixel.
    Matrix4 pixels;
    pixels.translation(format->center_x(), format->center_y());
    const float half_width = float(format->w()) / 2;
    pixels.scale(half_width, half_width * float(format->pixel_aspect()), 1);
    matrix = pixels * matrix;
}

CameraOp* CameraOp::default_camera() {
    static CameraOp camera(nullptr);
    camera.validate(true);
    return &camera;
}

} // namespace DD::Image
