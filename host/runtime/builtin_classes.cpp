// SPDX-License-Identifier: BSD-3-Clause

// The host's own node classes: cameras and axes, under the names of all versions of the host.
#include "host/runtime/node.h"

#include <DDImage/CameraOp.h>

namespace velmora::host {

using DD::Image::Op;

namespace {

// Named for the class that its node was made from.
template <class Base>
class Named : public Base {
public:
    explicit Named(Node* node) : Base(node) {}
    const char* Class() const override {
        return this->node() ? this->node()->class_name() : Base::Class();
    }
};

} // namespace

template <class Base>
static Op* make(Node* node) {
    return new Named<Base>(node);
}

static const Op::Description axis("Axis", &make<DD::Image::AxisOp>);
static const Op::Description axis2("Axis2", &make<DD::Image::AxisOp>);
static const Op::Description axis3("Axis3", &make<DD::Image::AxisOp>);
static const Op::Description camera("Camera", &make<DD::Image::CameraOp>);
static const Op::Description camera2("Camera2", &make<DD::Image::CameraOp>);
static const Op::Description camera3("Camera3", &make<DD::Image::CameraOp>);

} // namespace velmora::host
