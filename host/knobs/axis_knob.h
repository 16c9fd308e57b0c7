// SPDX-License-Identifier: BSD-3-Clause

// The knob for an affine transformation, whose parts are knobs of their own: translate, rotate,
// scaling, uniform_scale, skew, pivot, xform_order, rot_order, and useMatrix, with which `matrix`
// replaces all of them.
//
// Units:     degrees; distances in scene units.
// Shapes:    matrices as in Transform; the knob `matrix` is a list of rows.
// Errors:    ScriptError for a skew, whose effect the host does not document.
// Ownership: the node owns the parts; the axis borrows them.
#pragma once

#include "host/knobs/choice_knob.h"
#include "host/knobs/number_knob.h"
#include "host/script/transform.h"

#include <memory>
#include <vector>

namespace velmora::host {

class AxisKnob : public HostKnob {
public:
    explicit AxisKnob(const DD::Image::KnobSpec& spec);

    // The parts, for the node to own. Call once.
    std::vector<std::unique_ptr<HostKnob>> make_parts();

    // The transformation by the parts at a time.
    HostMatrix matrix_at(double time) const;

    // Turns useMatrix on, so that the other parts have no effect.
    void set_matrix(const HostMatrix& matrix);

    bool is_animated() const override;
    int size() const override { return 16; }
    using Knob::get_value_at;
    double get_value_at(double time, int i) const override; // column by column

    void store(DD::Image::StoreType type, void* data, DD::Image::Hash& hash,
               const DD::Image::OutputContext& context) override;

protected:
    bool fits(DD::Image::StoreType type) const override { return type == DD::Image::MatrixPtr; }

private:
    HostMatrix made_with; // the op's own value when the knob was made
    NumberKnob *translate = nullptr, *rotate = nullptr, *scaling = nullptr,
               *uniform_scale = nullptr, *pivot = nullptr, *use_matrix = nullptr, *matrix = nullptr;
    ChoiceKnob *transform_order = nullptr, *rotation_order = nullptr;
};

} // namespace velmora::host
