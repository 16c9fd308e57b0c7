// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/curve.h"

#include <algorithm>
#include <cmath>

namespace velmora::host {

// Larger frame numbers are typing errors, and closer keys would divide by almost nothing.
static const double farthest_frame = 1e9;
static const double closest_frames = 1e-6;
// Larger values are typing errors, too; their products with frames might overflow.
static const double largest_value = 1e100;

bool operator==(const CurveKey& a, const CurveKey& b) {
    return a.frame == b.frame && a.value == b.value && a.interpolation == b.interpolation &&
           a.extrapolation == b.extrapolation && a.left_slope == b.left_slope &&
           a.right_slope == b.right_slope && a.left_handle == b.left_handle &&
           a.right_handle == b.right_handle;
}

// The slope from one key to another.
static double slope(const CurveKey& a, const CurveKey& b) {
    return (b.value - a.value) / (b.frame - a.frame);
}

// The slope nearest to `wanted` whose handle (of length 1, a third of the span) stays between the
// values at the ends of the span; `straight` is the slope from end to end.
static double within_span(double wanted, double straight) {
    return straight < 0 ? std::clamp(wanted, 3 * straight, 0.0)
                        : std::clamp(wanted, 0.0, 3 * straight);
}

static bool is_one_of(char ch, std::string_view letters) {
    return letters.find(ch) != std::string_view::npos;
}

static bool starts_number(std::string_view text) {
    return !text.empty() && is_one_of(text[0], "+-.0123456789");
}

// The frame of a key that gives none.
static double next_frame(const std::vector<CurveKey>& keys) {
    if (keys.empty())
        return 0.0;
    const double last = keys.back().frame;
    return keys.size() == 1 ? last + 1.0 : last + (last - keys[keys.size() - 2].frame);
}

// Reads the items of a curve one after the other, then computes the slopes.
class CurveReader {
public:
    CurveReader(const std::string& name, AnimationCurve& curve)
        : name(name), curve(curve), keys(curve.all_keys), slopes(curve.slopes) {}

    void read(const std::vector<ScriptTree>& items);

private:
    typedef AnimationCurve::Slopes Slopes;

    const std::string& name;
    AnimationCurve& curve;
    std::vector<CurveKey>& keys;
    std::vector<Slopes>& slopes;
    std::vector<ScriptPlace> places; // of the keys' values
    CurveKey next;                   // what the items before the next value say of its key
    std::optional<double> next_x;
    const ScriptValue* prefix = nullptr; // the last item that needs a value after it; or null

    void read_item(const ScriptValue& item);
    void read_value(const ScriptValue& item);
    void read_frame(const ScriptValue& item);
    void read_tangent(const ScriptValue& item);
    double part_of(const ScriptValue& item, double largest) const;

    void find_slopes();
    void find_inner_slopes(std::size_t k);
    void find_end_slopes();
    double end_slope(std::size_t end, std::size_t inner) const;
    void find_cubic_slopes();
    void find_outer_slopes();
    void check_handles(std::size_t k) const;
    bool is_free(std::size_t k) const { return !keys[k].left_slope; }
    bool is_curved(std::size_t k) const {
        return is_free(k) && (keys[k].interpolation == 'S' || keys[k].interpolation == 'R');
    }
    std::string key(std::size_t k) const { return "the key at " + number_text(keys[k].frame); }
    [[noreturn]] void fail(const ScriptValue& item, const std::string& why) const {
        throw ScriptError(name, item.place, why);
    }
    [[noreturn]] void fail_at_key(std::size_t k, const std::string& why) const {
        throw ScriptError(name, places[k], key(k) + " " + why);
    }
};

void CurveReader::read(const std::vector<ScriptTree>& items) {
    std::size_t k = 1; // after "curve"
    const std::string shown_as = k < items.size() ? items[k].value().text : "";
    if ((shown_as == "i" || shown_as == "I") && items[k].value().kind == ScriptValue::Kind::word) {
        curve.shown_as = shown_as[0];
        k++;
    }
    for (; k < items.size(); k++)
        read_item(items[k].value());
    if (prefix)
        fail(*prefix, in_quotes(*prefix) + " has no value after it");
    if (keys.empty())
        fail(items[0].value(), "the curve has no key");
    find_slopes();
}

void CurveReader::read_item(const ScriptValue& item) {
    const std::string& text = item.text;
    const char first = item.kind == ScriptValue::Kind::word && !text.empty() ? text[0] : '?';
    if (text.size() == 1 && is_one_of(first, "KLSRC")) {
        next.interpolation = first;
        prefix = &item;
    } else if (text.size() == 1 && is_one_of(first, "kl")) {
        next.extrapolation = first;
        prefix = &item;
    } else if (first == 'x' && starts_number(text.substr(1))) {
        read_frame(item);
    } else if (is_one_of(first, "stuv") && starts_number(text.substr(1))) {
        read_tangent(item);
    } else if (starts_number(text) && first != '?') {
        read_value(item);
    } else {
        fail(item, in_quotes(item) + " cannot be part of a curve");
    }
}

// The number after the letter of an item.
double CurveReader::part_of(const ScriptValue& item, double largest) const {
    const ScriptValue number = {
        item.kind, item.text.substr(1), {item.place.line, item.place.column + 1}};
    const double part = number_of(number, name);
    if (std::fabs(part) > largest)
        fail(item, in_quotes(item) + " is out of range");
    return part;
}

void CurveReader::read_frame(const ScriptValue& item) {
    if (next_x)
        fail(item, in_quotes(item) + " follows another frame that has no value");
    next_x = part_of(item, farthest_frame);
    prefix = &item;
}

void CurveReader::read_value(const ScriptValue& item) {
    // Place the key, after the one before it.
    next.frame = next_x.value_or(next_frame(keys));
    next.value = number_of(item, name);
    if (std::fabs(next.value) > largest_value)
        fail(item, in_quotes(item) + " is out of range");
    if (std::fabs(next.frame) > farthest_frame)
        fail(item, "the frame " + number_text(next.frame) + " is out of range");
    if (!keys.empty() && next.frame - keys.back().frame < closest_frames)
        fail(item, "the key at " + number_text(next.frame) +
                       " does not come a millionth of a frame or more after " +
                       key(keys.size() - 1));
    keys.push_back(next);
    places.push_back(item.place);

    // The next key inherits the interpolation and nothing else.
    const char interpolation = next.interpolation;
    next = CurveKey();
    next.interpolation = interpolation;
    next_x.reset();
    prefix = nullptr;
}

void CurveReader::read_tangent(const ScriptValue& item) {
    if (prefix || keys.empty())
        fail(item, in_quotes(item) + " does not follow a value");
    // They belong to the key before them.
    const char letter = item.text[0];
    CurveKey& last = keys.back();
    if (letter == 's' || letter == 't') {
        std::optional<double>& given = letter == 's' ? last.left_slope : last.right_slope;
        if (given)
            fail(item, in_quotes(item) + " is the second of its kind");
        if (letter == 't' && !last.left_slope)
            fail(item, in_quotes(item) + " without 's' before it leaves the left slope open");
        given = part_of(item, largest_value);
    } else {
        double& handle = letter == 'u' ? last.left_handle : last.right_handle;
        handle = part_of(item, largest_value);
        if (handle < 0 || handle > 3)
            fail(item, in_quotes(item) + " is not between 0 and 3");
    }
}

// In order of dependence: slopes that are given or follow from values alone, then those at the
// ends, which depend on the slope at the neighbouring key.
void CurveReader::find_slopes() {
    slopes.resize(keys.size());
    if (std::any_of(keys.begin(), keys.end(),
                    [](const CurveKey& key) { return key.interpolation == 'C'; })) {
        find_cubic_slopes();
    } else {
        for (std::size_t k = 0; k < keys.size(); k++)
            find_inner_slopes(k);
        find_end_slopes();
    }
    find_outer_slopes();
}

void CurveReader::check_handles(std::size_t k) const {
    if (keys[k].left_handle != 1 || keys[k].right_handle != 1)
        fail_at_key(k, "has handles ('u', 'v') and no slopes: where they point is not documented");
}

void CurveReader::find_inner_slopes(std::size_t k) {
    // The neighbours decide a slope that is not given.
    const CurveKey* const before = k > 0 ? &keys[k - 1] : nullptr;
    const CurveKey* const after = k + 1 < keys.size() ? &keys[k + 1] : nullptr;
    const CurveKey& key = keys[k];
    if (key.interpolation == 'K') {
        if (!is_free(k))
            fail_at_key(k, "is constant ('K') and has slopes: which counts is not documented");
        if (before && before->interpolation != 'K')
            fail_at_key(k, "is constant ('K') and the one before is not: the slope between them is "
                           "not documented");
    } else if (!is_free(k)) {
        slopes[k] = {*key.left_slope, key.right_slope.value_or(*key.left_slope)};
    } else if (key.interpolation == 'L') { // towards each neighbour; at an end the one there is
        slopes[k] = {before ? slope(*before, key) : 0.0, after ? slope(key, *after) : 0.0};
        if (!before)
            slopes[k].left = slopes[k].right;
        if (!after)
            slopes[k].right = slopes[k].left;
    } else { // S and R; find_end_slopes() does the ends
        check_handles(k);
        if (!before || !after)
            return;
        double both = slope(*before, *after);
        if (key.interpolation == 'S')
            both = within_span(within_span(both, slope(*before, key)), slope(key, *after));
        slopes[k] = {both, both};
    }
}

// The slope that makes the second derivative 0 at an end: key, handle and the neighbour's handle
// are collinear.
double CurveReader::end_slope(std::size_t end, std::size_t inner) const {
    const double straight = slope(keys[end], keys[inner]);
    if (is_curved(inner) && keys.size() == 2)
        return straight; // the second derivative is 0 at both ends
    const bool at_first = end < inner;
    if ((at_first ? keys[inner].left_handle : keys[inner].right_handle) != 1)
        fail_at_key(inner, "has a handle ('u', 'v') towards an end without slope, which is not "
                           "documented");
    const double other = at_first ? slopes[inner].left : slopes[inner].right;
    const double natural = (3 * straight - other) / 2;
    return keys[end].interpolation == 'S' ? within_span(natural, straight) : natural;
}

void CurveReader::find_end_slopes() {
    const std::size_t last = keys.size() - 1;
    if (last == 0)
        return;
    if (is_curved(0))
        slopes[0].left = slopes[0].right = end_slope(0, 1);
    if (is_curved(last) && keys[last - 1].interpolation != 'K')
        slopes[last].left = slopes[last].right = end_slope(last, last - 1);
}

// A natural cubic spline: for the slopes m at the keys, with spans h and straight slopes d,
//
//     2 m0   +    m1                                  =  3 d0
//     m(k-1)/h(k-1) + 2 (1/h(k-1) + 1/h(k)) m(k) + m(k+1)/h(k)  =  3 (d(k-1)/h(k-1) + d(k)/h(k))
//                    m(n-1)    +    2 m(n)            =  3 d(n-1)
//
// solved by elimination from the first row to the last and back.
void CurveReader::find_cubic_slopes() {
    for (std::size_t k = 0; k < keys.size(); k++) {
        if (keys[k].interpolation != 'C' || !is_free(k))
            fail_at_key(k, keys[k].interpolation == 'C'
                               ? "is cubic ('C') and has slopes, which is not documented"
                               : "is not cubic among cubic keys ('C'): how they join is not "
                                 "documented");
        check_handles(k);
    }
    const std::size_t count = keys.size();
    if (count == 1)
        return;
    // Eliminate downwards: m(k) = rest(k) - factor(k) m(k+1).
    std::vector<double> factor(count), rest(count);
    for (std::size_t k = 0; k < count; k++) {
        const double before = k > 0 ? 1 / (keys[k].frame - keys[k - 1].frame) : 0.0;
        const double after = k + 1 < count ? 1 / (keys[k + 1].frame - keys[k].frame) : 0.0;
        const double right_side = 3 * ((k > 0 ? slope(keys[k - 1], keys[k]) * before : 0.0) +
                                       (k + 1 < count ? slope(keys[k], keys[k + 1]) * after : 0.0));
        const double pivot = 2 * (before + after) - (k > 0 ? before * factor[k - 1] : 0.0);
        factor[k] = after / pivot;
        rest[k] = (right_side - (k > 0 ? before * rest[k - 1] : 0.0)) / pivot;
    }
    // Substitute upwards.
    for (std::size_t k = count; k-- > 0;) {
        const double next_slope = k + 1 < count ? slopes[k + 1].left : 0.0;
        slopes[k].left = slopes[k].right = rest[k] - factor[k] * next_slope;
    }
}

// The left slope of the first key and the right one of the last are those of the extrapolation.
void CurveReader::find_outer_slopes() {
    const std::size_t last = keys.size() - 1;
    char extrapolation = 'k';
    for (std::size_t k = 0; k <= last; k++) {
        extrapolation = keys[k].extrapolation.value_or(extrapolation);
        if (!is_free(k) || (k != 0 && k != last))
            continue;
        const bool flat_span = keys[k == 0 ? 0 : last - 1].interpolation == 'K';
        if (extrapolation == 'l' && flat_span && last > 0)
            fail_at_key(k, "ends a constant span ('K') and goes on linearly ('l'), which is not "
                           "documented");
        if (k == 0 && extrapolation == 'k')
            slopes[k].left = 0.0;
        if (k == last && extrapolation == 'k')
            slopes[k].right = 0.0;
    }
    // Whether an extrapolation letter holds for later keys, too, is not documented.
    curve.end_is_open = is_free(last) && extrapolation == 'l' && !keys[last].extrapolation &&
                        slopes[last].right != 0;
}

AnimationCurve AnimationCurve::constant(double number) {
    AnimationCurve curve;
    curve.number = number;
    return curve;
}

AnimationCurve AnimationCurve::parse(const ScriptValue& value, const std::string& name) {
    return parse(ScriptTree(value, name));
}

AnimationCurve AnimationCurve::parse(const ScriptTree& tree) {
    AnimationCurve curve;
    if (tree.is_curve() && !tree.items()[0].is_list()) {
        curve.where = ScriptError(tree.script(), tree.value().place, "").where;
        CurveReader(tree.script(), curve).read(tree.items());
        return curve;
    }
    const std::string& text = tree.value().text;
    const NumberFault fault =
        tree.is_list() ? NumberFault::not_a_number : parse_finite(text, curve.number);
    if (fault == NumberFault::not_a_number)
        tree.fail("the expression " + in_quotes(text) + " is not supported");
    if (fault != NumberFault::none)
        tree.fail(in_quotes(text) + " " + reason_of(fault));
    return curve;
}

static double mix(double a, double b, double part) {
    return a == b ? a : (1.0 - part) * a + part * b;
}

// A cubic Bézier curve at the parameter `part`, by de Casteljau's algorithm.
static double bezier(double a, double b, double c, double d, double part) {
    const double ab = mix(a, b, part), bc = mix(b, c, part), cd = mix(c, d, part);
    return mix(mix(ab, bc, part), mix(bc, cd, part), part);
}

// The parameter at which a Bézier curve from 0 to 1 with handles at `a` and `b` reaches `part`. By
// bisection: 64 steps exhaust a double.
static double parameter_at(double a, double b, double part) {
    double low = 0.0, high = 1.0;
    for (int halving = 0; halving < 64; halving++) {
        const double middle = 0.5 * (low + high);
        (bezier(0.0, a, b, 1.0, middle) < part ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

double AnimationCurve::between(std::size_t key, double frame) const {
    const CurveKey &a = all_keys[key], &b = all_keys[key + 1];
    if (a.interpolation == 'K')
        return a.value;
    // A straight line, exactly.
    const double span = b.frame - a.frame;
    const double part = (frame - a.frame) / span;
    const double right = slopes[key].right, left = slopes[key + 1].left;
    if (right == left && right == slope(a, b))
        return mix(a.value, b.value, part);

    // Handles along the slopes; of length 1, time is the parameter.
    const double near = a.right_handle / 3, far = b.left_handle / 3;
    const double a_handle = a.value + right * near * span;
    const double b_handle = b.value - left * far * span;
    const bool steady = a.right_handle == 1 && b.left_handle == 1;
    return bezier(a.value, a_handle, b_handle, b.value,
                  steady ? part : parameter_at(near, 1 - far, part));
}

double AnimationCurve::at(double frame) const {
    if (all_keys.empty())
        return number;
    // The first key at or after `frame`.
    const auto after =
        std::lower_bound(all_keys.begin(), all_keys.end(), frame,
                         [](const CurveKey& key, double time) { return key.frame < time; });
    if (after != all_keys.end() && after->frame == frame)
        return after->value;
    if (after == all_keys.begin())
        return after->value + slopes.front().left * (frame - after->frame);
    if (after != all_keys.end())
        return between(static_cast<std::size_t>(after - all_keys.begin()) - 1, frame);

    // After the last key.
    const CurveKey& last = all_keys.back();
    if (end_is_open)
        throw ScriptError(where, "whether the curve goes on linearly ('l') after the key at " +
                                     number_text(last.frame) +
                                     " is not documented: no letter comes before that key");
    return last.value + slopes.back().right * (frame - last.frame);
}

ScriptValue AnimationCurve::value() const {
    if (!is_animated())
        return {ScriptValue::Kind::word, number_text(number), {}};
    std::string text = "curve";
    if (shown_as)
        text += {' ', shown_as};
    char interpolation = 'S';
    std::vector<CurveKey> before;
    // Write what differs from the defaults: the letters, the frame, the value, slopes and handles.
    for (const CurveKey& key : all_keys) {
        if (key.interpolation != interpolation)
            text += {' ', key.interpolation};
        interpolation = key.interpolation;
        if (key.extrapolation)
            text += {' ', *key.extrapolation};
        if (key.frame != next_frame(before))
            text += " x" + number_text(key.frame);
        text += " " + number_text(key.value);
        if (key.left_slope)
            text += " s" + number_text(*key.left_slope);
        if (key.right_slope)
            text += " t" + number_text(*key.right_slope);
        if (key.left_handle != 1)
            text += " u" + number_text(key.left_handle);
        if (key.right_handle != 1)
            text += " v" + number_text(key.right_handle);
        before.push_back(key);
    }
    return {ScriptValue::Kind::braced, text, {}};
}

std::string AnimationCurve::text() const {
    const ScriptValue whole = value();
    return is_animated() ? "{" + whole.text + "}" : whole.text;
}

} // namespace velmora::host
