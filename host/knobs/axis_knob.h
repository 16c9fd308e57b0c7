// The knob for an affine transformation, whose parts are knobs of their own: translate, rotate,
// scaling, uniform_scale, skew, pivot, xform_order, rot_order, and useMatrix with matrix in place
// of all of them.
//
// Skew is refused: the host's documentation does not say how it takes effect.
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

    // The parts, to be given to the node. The axis keeps looking at them.
    std::vector<std::unique_ptr<HostKnob>> make_parts();

    // What the parts come to.
    HostMatrix matrix_at(double time) const;

    // Column by column, and no longer by the other parts.
    void set_matrix(const HostMatrix& matrix);

    bool is_animated() const override;
    int size() const override { return 16; }
    using Knob::get_value_at;
    double get_value_at(double time, int i) const override; // in memory order

    void store(DD::Image::StoreType type, void* data, DD::Image::Hash& hash,
               const DD::Image::OutputContext& context) override;

protected:
    bool fits(DD::Image::StoreType type) const override { return type == DD::Image::MatrixPtr; }

private:
    HostMatrix made_with; // what the op had behind its pointer
    NumberKnob *translate = nullptr, *rotate = nullptr, *scaling = nullptr,
               *uniform_scale = nullptr, *pivot = nullptr, *use_matrix = nullptr, *matrix = nullptr;
    ChoiceKnob *transform_order = nullptr, *rotation_order = nullptr;
};

} // namespace velmora::host
