// SPDX-License-Identifier: BSD-3-Clause

// A camera: an axis with a lens. It looks along its -z, with y up.
//
// Units:     focal length and apertures in millimetres, distances in scene units, roll in degrees,
//            the window's translation in halves of the aperture's width.
#pragma once

#include <DDImage/AxisOp.h>
#include <DDImage/Format.h>
#include <DDImage/Vector2.h>

namespace DD::Image {

class DDImage_API CameraOp : public AxisOp {
public:
    enum {
        LENS_PERSPECTIVE = 0,
        LENS_ORTHOGRAPHIC,
        LENS_UV,
        LENS_SPHERICAL,
        LENS_RENDER_CAMERA,
    };

    explicit CameraOp(Node* node);
    ~CameraOp() override;

    const char* Class() const override { return "Camera2"; }
    const char* node_help() const override;
    void knobs(Knob_Callback f) override;
    void _validate(bool for_real) override;

    // The knobs' values, as stored for the op's frame.
    int projection_mode() const { return projection_mode_; }
    double focal_length() const { return focal_length_; }
    double film_width() const { return haperture_; }  // the haperture knob
    double film_height() const { return vaperture_; } // the vaperture knob
    double Near() const { return near_; }
    double Far() const { return far_; }
    double focal_point() const { return focal_point_; }
    double fstop() const { return fstop_; }
    double win_roll() const { return win_roll_; }
    const Vector2& win_translate() const { return win_translate_; }
    const Vector2& win_scale() const { return win_scale_; }

    void projection_mode(int value) { projection_mode_ = value; }
    void focal_length(double value) { focal_length_ = value; }
    void film_width(double value) { haperture_ = value; }
    void film_height(double value) { vaperture_ = value; }
    void Near(double value) { near_ = value; }
    void Far(double value) { far_ = value; }
    void focal_point(double value) { focal_point_ = value; }
    void fstop(double value) { fstop_ = value; }
    void win_roll(double value) { win_roll_ = value; }
    void win_translate(double x, double y) { win_translate_ = Vector2(float(x), float(y)); }
    void win_scale(double x, double y) { win_scale_ = Vector2(float(x), float(y)); }

    // From camera space to [-1, 1] x [-1, 1], whose width is the horizontal aperture; the vertical
    // aperture has no effect. Valid after validate(); the other two for any mode and time.
    const Matrix4& projection() const { return projection_; }
    virtual Matrix4 projection(int mode) const;
    virtual Matrix4 projectionAt(const OutputContext& context) const;

    // Extends `matrix`, a projection to that square, to the pixels of a format.
    static void to_format(Matrix4& matrix, const Format* format);

    // The camera of ops that have none: with all defaults, owned by the host.
    static CameraOp* default_camera();

private:
    int projection_mode_ = LENS_PERSPECTIVE;
    double focal_length_ = 50;
    double haperture_ = 24.576, vaperture_ = 18.672;
    double near_ = 0.1, far_ = 10000;
    Vector2 win_translate_, win_scale_ = Vector2(1, 1);
    double win_roll_ = 0;
    double focal_point_ = 2;
    double fstop_ = 16;
    Matrix4 projection_;
};

} // namespace DD::Image
