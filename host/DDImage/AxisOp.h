// SPDX-License-Identifier: BSD-3-Clause

// An axis: position, rotation and scale in space, relative to a parent axis if there is one.
//
// Inputs:    0, the parent.
// Shapes:    matrices for column vectors, see Matrix4.
#pragma once

#include <DDImage/Matrix4.h>
#include <DDImage/Op.h>

namespace DD::Image {

class DDImage_API AxisOp : public Op {
public:
    explicit AxisOp(Node* node);
    ~AxisOp() override;

    const char* Class() const override { return "Axis2"; }
    const char* node_help() const override;
    bool test_input(int n, Op* op) const override;
    const char* input_label(int n, char* buffer) const override;
    void knobs(Knob_Callback f) override;

    // Local to world: the parent's matrix times local(). Valid after validate().
    const Matrix4& matrix() const { return matrix_; }
    void matrix(const Matrix4& value);
    const Matrix4& local() const { return local_; }

    // World to local, computed on demand.
    const Matrix4& imatrix();

    // matrix() at another time; needs no validate().
    virtual void matrixAt(const OutputContext& context, Matrix4& matrix) const;

    // Null without one.
    AxisOp* parent() const { return dynamic_cast<AxisOp*>(Op::input(0)); }

protected:
    void _validate(bool for_real) override;

    Matrix4 matrix_, imatrix_, local_;
    Matrix4 localtransform_; // where the knob stores
    bool inversion_updated = false;
};

} // namespace DD::Image
