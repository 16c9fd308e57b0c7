// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/number_knob.h"

#include "host/script/script_writer.h"

#include <cmath>

namespace velmora::host {

using DD::Image::KnobSpec;
using DD::Image::StoreType;

static const std::size_t matrix_side = 4;

// The op's own value of number `i`; infinity and NaN, which a curve cannot hold, become 0.
static double initial_number(const KnobSpec& spec, int i) {
    double number = 0;
    if (spec.data && spec.store == DD::Image::DoublePtr)
        number = static_cast<const double*>(spec.data)[i];
    if (spec.data && spec.store == DD::Image::FloatPtr)
        number = double(static_cast<const float*>(spec.data)[i]);
    if (spec.data && spec.store == DD::Image::IntPtr)
        number = static_cast<const int*>(spec.data)[i];
    if (spec.data && spec.store == DD::Image::BoolPtr)
        number = static_cast<const bool*>(spec.data)[i];
    return std::isfinite(number) ? number : 0;
}

NumberKnob::NumberKnob(const KnobSpec& spec) : HostKnob(spec) {
    for (int i = 0; i < spec.count; i++)
        curves.push_back(AnimationCurve::constant(initial_number(spec, i)));
    sources.resize(curves.size());
    remember_default();
}

NumberKnob::NumberKnob(const KnobSpec& spec, const std::vector<double>& values) : HostKnob(spec) {
    set_declared(false);
    for (const double value : values)
        curves.push_back(AnimationCurve::constant(value));
    sources.resize(curves.size());
    remember_default();
}

double NumberKnob::get_value_at(double time, int i) const {
    if (i < 0 || i >= size())
        return 0;
    const std::size_t place = std::size_t(i);
    return sources[place] ? sources[place](time) : curves[place].at(time);
}

bool NumberKnob::set_value(double value, int i) {
    // All of them.
    if (i == -1) {
        for (int k = 0; k < size(); k++)
            if (!set_value(value, k))
                return false;
        return true;
    }
    if (i < 0 || i >= size() || !std::isfinite(value))
        return false;
    curves[std::size_t(i)] = AnimationCurve::constant(value);
    sources[std::size_t(i)] = nullptr;
    return true;
}

void NumberKnob::follow(int i, std::function<double(double)> source) {
    sources[std::size_t(i)] = std::move(source);
}

bool NumberKnob::is_animated() const {
    for (std::size_t i = 0; i < curves.size(); i++)
        if (curves[i].is_animated() || sources[i])
            return true;
    return false;
}

// ---- saved scripts -----------------------------------------------------------------------------

AnimationCurve NumberKnob::read_one(const ScriptTree& value) const {
    // A switch knows two words more.
    if (is_switch() && !value.is_list()) {
        if (value.value().text == "true")
            return AnimationCurve::constant(1);
        if (value.value().text == "false")
            return AnimationCurve::constant(0);
    }
    return AnimationCurve::parse(value);
}

// The numbers and curves in the value, those of a matrix row by row.
std::vector<const ScriptTree*> NumberKnob::parts_of(const ScriptTree& value) const {
    if (value.is_curve())
        return {&value};
    const std::vector<ScriptTree>& items = value.items();
    const bool has_rows = ClassID() == DD::Image::MATRIX_KNOB && items.size() == matrix_side;
    std::vector<const ScriptTree*> parts;
    for (const ScriptTree& item : items) {
        if (!has_rows || item.is_curve()) {
            parts.push_back(&item);
            continue;
        }
        for (const ScriptTree& element : item.items())
            parts.push_back(&element);
    }
    return parts;
}

void NumberKnob::read(const ScriptValue& value, const std::string& script) {
    // As many numbers as the knob has, or one for all.
    const ScriptTree tree(value, script);
    const std::vector<const ScriptTree*> parts = parts_of(tree);
    const bool one_for_all = parts.size() == 1;
    if (!one_for_all && parts.size() != curves.size())
        tree.fail("knob '" + name() + "' takes " + std::to_string(curves.size()) +
                  (curves.size() == 1 ? " number" : " numbers") + ", not " +
                  std::to_string(parts.size()));
    // Read all of them before any is replaced.
    std::vector<AnimationCurve> read;
    for (std::size_t i = 0; i < curves.size(); i++)
        read.push_back(read_one(*parts[one_for_all ? 0 : i]));
    curves = read;
    sources.assign(curves.size(), nullptr);
}

ScriptValue NumberKnob::script_value() const {
    // One number alone, but a curve in a list of its own; several as a list; a matrix by rows.
    if (curves.size() == 1) {
        ScriptValue value = curves[0].value();
        if (curves[0].is_animated())
            return list_value({value});
        if (is_switch())
            value.text = curves[0].at(0) != 0 ? "true" : "false";
        return value;
    }
    std::vector<ScriptValue> values, rows;
    for (const AnimationCurve& curve : curves)
        values.push_back(curve.value());
    if (ClassID() != DD::Image::MATRIX_KNOB)
        return list_value(values);
    for (auto row = values.begin(); row != values.end(); row += matrix_side)
        rows.push_back(list_value({row, row + matrix_side}));
    return list_value(rows);
}

// ---- into ops ----------------------------------------------------------------------------------

bool NumberKnob::fits(StoreType type) const {
    return type == DD::Image::DoublePtr || type == DD::Image::FloatPtr ||
           type == DD::Image::IntPtr || type == DD::Image::BoolPtr;
}

// Rounded, halves up, and clamped to what an int holds.
static int whole(double number) {
    const double largest = 2147483647.0;
    return int(std::fmin(std::fmax(std::floor(number + 0.5), -largest - 1), largest));
}

void NumberKnob::store(StoreType type, void* data, DD::Image::Hash& hash,
                       const DD::Image::OutputContext& context) {
    for (int i = 0; i < size(); i++) {
        // The hash gets the number before it is rounded.
        const double number = get_value_at(context.frame(), i);
        hash.append(number);
        switch (type) {
        case DD::Image::DoublePtr:
            static_cast<double*>(data)[i] = number;
            break;
        case DD::Image::FloatPtr:
            static_cast<float*>(data)[i] = float(number);
            break;
        case DD::Image::IntPtr:
            static_cast<int*>(data)[i] = whole(number);
            break;
        case DD::Image::BoolPtr:
            static_cast<bool*>(data)[i] = number != 0;
            break;
        default:
            break;
        }
    }
}

} // namespace velmora::host
