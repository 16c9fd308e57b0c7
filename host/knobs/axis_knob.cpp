// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/axis_knob.h"

#include <algorithm>

namespace velmora::host {

using DD::Image::KnobSpec;

static const char* const transform_orders[] = {"SRT", "STR", "RST", "RTS", "TSR", "TRS", nullptr};
static const char* const rotation_orders[] = {"XYZ", "XZY", "YXZ", "YZX", "ZXY", "ZYX", nullptr};
static const HostMatrix identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

namespace {

// Accepted in scripts, as long as it is 0.
class SkewKnob : public NumberKnob {
public:
    explicit SkewKnob(const KnobSpec& spec) : NumberKnob(spec, {0, 0, 0}) {}

    bool set_value(double value, int i) override {
        return value == 0 && NumberKnob::set_value(value, i);
    }

    void read(const ScriptValue& value, const std::string& script) override {
        // Read it into a knob without that restriction, and look at the result.
        NumberKnob read_knob({DD::Image::XYZ_KNOB, DD::Image::NoPtr, nullptr, name().c_str()},
                             {0, 0, 0});
        read_knob.read(value, script);
        const bool still = !read_knob.is_animated() && read_knob.get_value_at(0, 0) == 0 &&
                           read_knob.get_value_at(0, 1) == 0 && read_knob.get_value_at(0, 2) == 0;
        if (!still)
            throw ScriptError(script, value.place,
                              "knob '" + name() + "': a skew is not supported");
    }
};

} // namespace

AxisKnob::AxisKnob(const KnobSpec& spec) : HostKnob(spec) {
    const auto* const initial = static_cast<const DD::Image::Matrix4*>(spec.data);
    std::copy(initial->array(), initial->array() + 16, made_with.begin());
}

std::vector<std::unique_ptr<HostKnob>> AxisKnob::make_parts() {
    std::vector<std::unique_ptr<HostKnob>> parts;
    // Makers of parts, which add them in the order of the panel.
    const std::string prefix = is("transform") ? "" : name() + "_";
    const auto spec = [](DD::Image::KnobType type, const std::string& full) {
        return KnobSpec{type, DD::Image::NoPtr, nullptr, full.c_str()};
    };
    const auto add = [&](auto* knob) {
        parts.emplace_back(knob);
        return knob;
    };
    const auto numbers = [&](DD::Image::KnobType type, const char* part,
                             const std::vector<double>& values) {
        const std::string full = prefix + part;
        return add(new NumberKnob(spec(type, full), values));
    };
    const auto choice = [&](const char* part, const char* const* items, int index) {
        const std::string full = prefix + part;
        KnobSpec menu = spec(DD::Image::ENUMERATION_KNOB, full);
        menu.items = items;
        return add(new ChoiceKnob(menu, index));
    };

    // The parts. The op's own value, which need not come from them, is in `matrix`.
    transform_order = choice("xform_order", transform_orders, int(TransformOrder::SRT));
    rotation_order = choice("rot_order", rotation_orders, int(RotationOrder::ZXY));
    translate = numbers(DD::Image::XYZ_KNOB, "translate", {0, 0, 0});
    rotate = numbers(DD::Image::XYZ_KNOB, "rotate", {0, 0, 0});
    scaling = numbers(DD::Image::XYZ_KNOB, "scaling", {1, 1, 1});
    uniform_scale = numbers(DD::Image::DOUBLE_KNOB, "uniform_scale", {1});
    const std::string skew = prefix + "skew";
    add(new SkewKnob(spec(DD::Image::XYZ_KNOB, skew)));
    pivot = numbers(DD::Image::XYZ_KNOB, "pivot", {0, 0, 0});
    use_matrix = numbers(DD::Image::BOOL_KNOB, "useMatrix", {made_with == identity ? 0.0 : 1.0});
    std::vector<double> rows;
    for (std::size_t row = 0; row < 4; row++)
        for (std::size_t column = 0; column < 4; column++)
            rows.push_back(double(made_with[4 * column + row]));
    matrix = numbers(DD::Image::MATRIX_KNOB, "matrix", rows);
    return parts;
}

static std::array<double, 3> three(const NumberKnob& knob, double time) {
    return {knob.get_value_at(time, 0), knob.get_value_at(time, 1), knob.get_value_at(time, 2)};
}

HostMatrix AxisKnob::matrix_at(double time) const {
    // From rows to columns.
    if (use_matrix->get_value_at(time, 0) != 0) {
        HostMatrix columns;
        for (std::size_t row = 0; row < 4; row++)
            for (std::size_t column = 0; column < 4; column++)
                columns[4 * column + row] =
                    float(matrix->get_value_at(time, int(4 * row + column)));
        return columns;
    }
    // By the parts. Menus may hold indices that no item has.
    Transform transform;
    transform.translate = three(*translate, time);
    transform.rotate = three(*rotate, time);
    transform.scaling = three(*scaling, time);
    transform.uniform_scale = uniform_scale->get_value_at(time, 0);
    transform.pivot = three(*pivot, time);
    transform.order = TransformOrder(std::clamp(transform_order->index(), 0, 5));
    transform.rotation_order = RotationOrder(std::clamp(rotation_order->index(), 0, 5));
    return transform.matrix();
}

void AxisKnob::set_matrix(const HostMatrix& value) {
    use_matrix->set_value(1, 0);
    for (std::size_t row = 0; row < 4; row++)
        for (std::size_t column = 0; column < 4; column++)
            matrix->set_value(double(value[4 * column + row]), int(4 * row + column));
}

bool AxisKnob::is_animated() const {
    const NumberKnob* const parts[] = {translate, rotate,     scaling, uniform_scale,
                                       pivot,     use_matrix, matrix};
    return std::any_of(std::begin(parts), std::end(parts),
                       [](const NumberKnob* part) { return part->is_animated(); });
}

double AxisKnob::get_value_at(double time, int i) const {
    return i >= 0 && i < 16 ? double(matrix_at(time)[std::size_t(i)]) : 0;
}

void AxisKnob::store(DD::Image::StoreType, void* data, DD::Image::Hash& hash,
                     const DD::Image::OutputContext& context) {
    // The op and its hash get the matrix; the parts are the host's.
    const HostMatrix columns = matrix_at(context.frame());
    *static_cast<DD::Image::Matrix4*>(data) = DD::Image::Matrix4(columns.data());
    hash.append(columns.data(), sizeof columns);
}

} // namespace velmora::host
