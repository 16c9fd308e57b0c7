// SPDX-License-Identifier: BSD-3-Clause

// Knobs of one or more numbers, each of which may be animated: integers, switches, sliders,
// colours, points, matrices.
//
// Shapes:    in scripts one number is a word, several are a list, a matrix is a list of rows; a
//            single number sets all of several.
// Errors:    ScriptError for expressions, and for another count of numbers.
#pragma once

#include "host/knobs/host_knob.h"
#include "host/script/curve.h"
#include "host/script/script_tree.h"

#include <functional>
#include <vector>

namespace velmora::host {

class NumberKnob : public HostKnob {
public:
    explicit NumberKnob(const DD::Image::KnobSpec& spec);

    // A part of another knob, with its number of values and their defaults.
    NumberKnob(const DD::Image::KnobSpec& spec, const std::vector<double>& values);

    int size() const override { return int(curves.size()); }
    using Knob::get_value_at;
    double get_value_at(double time, int i) const override;
    bool set_value(double value, int i) override;
    bool is_animated() const override;

    // Number `i` is `source(time)`, until it is set or read again.
    void follow(int i, std::function<double(double time)> source);

    void read(const ScriptValue& value, const std::string& script) override;
    ScriptValue script_value() const override;
    void store(DD::Image::StoreType type, void* data, DD::Image::Hash& hash,
               const DD::Image::OutputContext& context) override;

protected:
    bool fits(DD::Image::StoreType type) const override;

private:
    std::vector<AnimationCurve> curves;
    std::vector<std::function<double(double)>> sources; // empty for numbers that have a curve

    bool is_switch() const { return ClassID() == DD::Image::BOOL_KNOB; }
    AnimationCurve read_one(const ScriptTree& value) const;
    std::vector<const ScriptTree*> parts_of(const ScriptTree& value) const;
};

} // namespace velmora::host
