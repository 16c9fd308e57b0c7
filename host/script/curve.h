// SPDX-License-Identifier: BSD-3-Clause

// One number of a knob over time, as saved in a script: a number, or {curve ...} with its keys.
//
//     {curve i L l x1 35 x10 50 s2 t0 u1.5 v0.5}
//            | | | |  |         |  |  |    right handle, in thirds of the distance to the next key
//            | | | |  |         |  |  left handle, 0 to 3; 1 by default
//            | | | |  |         |  right slope; the left slope by default
//            | | | |  |         left slope; without it the interpolation decides
//            | | | |  value
//            | | | frame; by default 0, then 1 more, then as far again as the last step
//            | | k constant, l linear: extrapolation outside the keys
//            | K constant, L linear, S smooth (the default), R Catmull-Rom, C cubic:
//            |   interpolation from this key on, until another letter
//            i or I: how the curve editor shows it
//
// Between two keys the curve is a Bézier curve whose handles lie along the slopes; with both
// handles 1 it is a cubic function of time. The slopes, unless given:
//
//     L   towards the neighbouring key on that side
//     R   parallel to the line through both neighbours
//     S   as R, but limited so that neither curve overshoots its keys' values: 0 at a maximum
//     C   first and second derivative continuous; the second is 0 at both ends
//
// At the first and last key, S and R take the slope that makes the second derivative 0 there; S
// limits it as elsewhere. After a K the value is constant up to the next key. Outside the keys the
// curve is a straight line: constant, or with l along the first or last slope. Given slopes hold
// outside, too.
//
// Units:     frames, at most 1e9 away from 0.
// Errors:    ScriptError. What the host's documentation leaves open is refused, where the value
//            depends on it: by parse(), or by at() where the rest of the curve is certain.
// Accuracy:  at a key the result is exactly the key's value.
// Threads:   a curve is immutable.
#pragma once

#include "host/script/script_tree.h"

#include <optional>
#include <string>
#include <vector>

namespace velmora::host {

struct CurveKey {
    double frame = 0.0;
    double value = 0.0;
    char interpolation = 'S';          // K L S R C
    std::optional<char> extrapolation; // k l, if given before the key
    std::optional<double> left_slope;  // if given
    std::optional<double> right_slope; // if given; never without the left one
    double left_handle = 1.0;
    double right_handle = 1.0;
};

bool operator==(const CurveKey& a, const CurveKey& b);

class AnimationCurve {
public:
    // The same finite number at all times.
    static AnimationCurve constant(double number);

    // `name` is the script's name in messages. Everything but a number and {curve ...} is an
    // expression, which is refused.
    static AnimationCurve parse(const ScriptValue& value, const std::string& name);
    static AnimationCurve parse(const ScriptTree& value);

    bool is_animated() const { return !all_keys.empty(); }

    // By ascending frame; empty when the curve is not animated.
    const std::vector<CurveKey>& keys() const { return all_keys; }

    // |frame| <= 1e9.
    double at(double frame) const;

    // As written in a script, as an item of the list of the knob's components.
    ScriptValue value() const;
    std::string text() const;

private:
    struct Slopes {
        double left = 0.0;
        double right = 0.0;
    };

    double number = 0.0; // of a curve without keys
    char shown_as = 0;   // i I
    std::vector<CurveKey> all_keys;
    std::vector<Slopes> slopes; // of each key
    std::string where;          // the curve's place in its script, for messages
    bool end_is_open = false;   // whether the value after the last key is undocumented

    AnimationCurve() {}
    friend class CurveReader;

    double between(std::size_t key, double frame) const;
};

} // namespace velmora::host
