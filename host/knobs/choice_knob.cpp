// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/choice_knob.h"

#include <algorithm>
#include <cmath>

namespace velmora::host {

using DD::Image::KnobSpec;

ChoiceKnob::ChoiceKnob(const KnobSpec& spec) : HostKnob(spec) {
    for (const char* const* item = spec.items; item && *item; item++)
        texts.push_back(*item);
    choose(spec.data ? *static_cast<const int*>(spec.data) : 0);
    remember_default();
}

ChoiceKnob::ChoiceKnob(const KnobSpec& spec, int index) : ChoiceKnob(spec) {
    set_declared(false);
    choose(index);
    remember_default();
}

void ChoiceKnob::choose(int index) {
    chosen = index;
    // Scripts keep an index out of range as a number.
    const bool is_item = index >= 0 && std::size_t(index) < texts.size();
    text = is_item ? texts[std::size_t(index)] : std::to_string(index);
}

bool ChoiceKnob::set_value(double value, int i) {
    // Whole numbers that an int holds.
    if (i > 0 || value != std::floor(value) || std::fabs(value) > 2147483647.0)
        return false;
    choose(int(value));
    return true;
}

bool ChoiceKnob::set_text(const char* text) {
    // An item's text comes before an index.
    const std::string wanted = text ? text : "";
    const auto item = std::find(texts.begin(), texts.end(), wanted);
    int index = int(item - texts.begin());
    if (item == texts.end() && !parse_number(wanted, index))
        return false;
    choose(index);
    return true;
}

void ChoiceKnob::read(const ScriptValue& value, const std::string& script) {
    // A list of one text is what a text is.
    const std::vector<ScriptValue> items = list_items(value, script);
    const bool plain = items.size() == 1 && items[0].kind != ScriptValue::Kind::braced;
    if (!plain)
        throw ScriptError(script, value.place,
                          "knob '" + name() + "': " + in_quotes(value) +
                              " is an animation or an expression, which a menu cannot have here");
    if (!set_text(items[0].text.c_str()))
        throw ScriptError(script, value.place,
                          "knob '" + name() + "' has no item " + in_quotes(items[0]));
}

ScriptValue ChoiceKnob::script_value() const {
    ScriptValue value;
    value.text = text;
    return value;
}

void ChoiceKnob::store(DD::Image::StoreType, void* data, DD::Image::Hash& hash,
                       const DD::Image::OutputContext&) {
    hash.append(chosen);
    *static_cast<int*>(data) = chosen;
}

} // namespace velmora::host
