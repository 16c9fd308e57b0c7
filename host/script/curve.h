// One number of a knob over time, as a saved script has it: a number, or {curve ...} with its keys.
//
//     {curve i L l x1 35 x10 50 s2 t0 u1.5 v0.5}
//            | | | |  |         |  |  |    right handle, in thirds of the way to the next key
//            | | | |  |         |  |  left handle; 0 to 3, and 1 when left out
//            | | | |  |         |  right slope; the left one when left out
//            | | | |  |         left slope; without it the interpolation decides
//            | | | |  value
//            | | | frame; left out: 0, then 1 more, then as far again as before
//            | | k constant, l linear: how to go on outside
//            | K constant, L linear, S smooth (at first), R Catmull-Rom, C cubic:
//            |   how to go on from this key and from those after it
//            i or I: how the curve editor shows it
//
// Between two keys runs a Bézier curve whose handles lie along the slopes; with both handles 1 it
// is a cubic function of time. The slopes, unless given:
//
//     L   point at the key on their side
//     R   run parallel to the line through the neighbours
//     S   as R, but no steeper than keeps both curves within their keys' values: 0 at a summit
//     C   make the first and second derivative continuous; the second is 0 at both ends
//
// At the first and last key, S and R have the slope with which the second derivative is 0 there,
// and S keeps it within the keys' values. From a K on the value stays, up to the next key. Outside
// the keys the curve goes on straight: flat, or with l along the first or last slope; slopes that
// are given hold outside too.
//
// Units:     frames, at most a thousand million away from 0.
// Errors:    ScriptError. Whatever the host's documentation leaves open so that the value would not
//            be certain is refused, by parse, or by `at` where the rest of the curve is certain.
// Accuracy:  a key's own value comes back exactly.
// Threads:   a curve that is made never changes.
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
    std::optional<char> extrapolation; // k l, where one stands before the key
    std::optional<double> left_slope;  // given slopes
    std::optional<double> right_slope; // never without the left one
    double left_handle = 1.0;
    double right_handle = 1.0;
};

bool operator==(const CurveKey& a, const CurveKey& b);

class AnimationCurve {
public:
    // The same number at all times. It must be finite.
    static AnimationCurve constant(double number);

    // `name` is the script's name in messages. Everything but a number and {curve ...} is an
    // expression, which is refused.
    static AnimationCurve parse(const ScriptValue& value, const std::string& name);
    static AnimationCurve parse(const ScriptTree& value);

    bool is_animated() const { return !all_keys.empty(); }

    // By growing frame; none when the curve is not animated.
    const std::vector<CurveKey>& keys() const { return all_keys; }

    // `frame` must be a number, at most a thousand million away from 0.
    double at(double frame) const;

    // As a script has it, for a list with the knob's other components.
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
    std::string where;
    bool end_is_open = false; // what follows the last key is not certain

    AnimationCurve() {}
    friend class CurveReader;

    double between(std::size_t key, double frame) const;
};

} // namespace velmora::host
