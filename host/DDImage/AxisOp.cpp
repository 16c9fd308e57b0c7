// SPDX-License-Identifier: BSD-3-Clause
#include <DDImage/AxisOp.h>

namespace DD::Image {

AxisOp::AxisOp(Node* node)
    : Op(node), matrix_(Matrix4::identity()), imatrix_(Matrix4::identity()),
      local_(Matrix4::identity()), localtransform_(Matrix4::identity()) {
    Op::inputs(1);
}

AxisOp::~AxisOp() {}

const char* AxisOp::node_help() const {
    return "Moves, turns and scales what is connected to it.";
}

bool AxisOp::test_input(int, Op* op) const {
    return !op || dynamic_cast<AxisOp*>(op);
}

const char* AxisOp::input_label(int, char*) const {
    return "axis";
}

void AxisOp::knobs(Knob_Callback f) {
    Axis_knob(f, &localtransform_, "transform");
}

void AxisOp::_validate(bool for_real) {
    // Without a parent, local is world.
    local_ = localtransform_;
    inversion_updated = false;
    AxisOp* const axis = parent();
    if (!axis) {
        matrix_ = local_;
        return;
    }
    axis->validate(for_real);
    matrix_ = axis->matrix() * local_;
}

void AxisOp::matrix(const Matrix4& value) {
    matrix_ = value;
    inversion_updated = false;
}

const Matrix4& AxisOp::imatrix() {
    if (!inversion_updated)
        imatrix_ = matrix_.inverse();
    inversion_updated = true;
    return imatrix_;
}

void AxisOp::matrixAt(const OutputContext& context, Matrix4& matrix) const {
    // The knob's value at that time, if there is a knob, then the parent's.
    Matrix4 local = localtransform_;
    Hash ignored;
    if (Knob* const transform = knob("transform"))
        transform->store(MatrixPtr, &local, ignored, context);
    matrix = local;
    if (const AxisOp* const axis = parent()) {
        Matrix4 above;
        axis->matrixAt(context, above);
        matrix = above * local;
    }
}

} // namespace DD::Image
