// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/host_knob.h"

#include "host/runtime/checks.h"
#include "host/script/script_writer.h"

namespace velmora::host {

using DD::Image::StoreType;

HostKnob::HostKnob(const DD::Image::KnobSpec& spec)
    : Knob(spec.name, spec.label, spec.type), store_type(spec.store), count(spec.count) {
    if (spec.range)
        set_range(spec.range->minimum, spec.range->maximum);
}

void HostKnob::read(const ScriptValue& value, const std::string& script) {
    throw ScriptError(script, value.place, "knob '" + name() + "' has no value");
}

ScriptValue HostKnob::script_value() const {
    return {};
}

bool HostKnob::from_script(const char* text) {
    try {
        // The text may be one value or the items of a list.
        ScriptValue value;
        value.kind = ScriptValue::Kind::braced;
        value.text = text ? text : "";
        const std::vector<ScriptValue> items = list_items(value, name());
        read(items.size() == 1 ? items[0] : value, name());
        return true;
    } catch (const ScriptError&) {
        return false;
    }
}

std::string HostKnob::to_script() const {
    return list_value({script_value()}).text; // quoted as an item
}

void HostKnob::remember_default() {
    made_with = script_value();
    remembered = true;
}

bool HostKnob::not_default() const {
    // By the saved text: that decides whether a script needs the knob.
    return remembered && !(script_value() == made_with);
}

bool HostKnob::is_declared_as(const DD::Image::KnobSpec& spec) const {
    return spec.type == ClassID() && spec.store == store_type && spec.count == count;
}

bool HostKnob::fits(StoreType) const {
    return false;
}

void HostKnob::put(DD::Image::Op& op, StoreType type, void* data, DD::Image::Hash& hash) {
    store(type, data, hash, op.outputContext());
}

// For messages.
static const char* store_type_name(StoreType type) {
    switch (type) {
    case DD::Image::DoublePtr:
        return "DoublePtr";
    case DD::Image::FloatPtr:
        return "FloatPtr";
    case DD::Image::StringPtr:
        return "StringPtr";
    case DD::Image::IntPtr:
        return "IntPtr";
    case DD::Image::NoPtr:
        return "NoPtr";
    case DD::Image::BoolPtr:
        return "BoolPtr";
    case DD::Image::ChannelSetPtr:
        return "ChannelSetPtr";
    case DD::Image::StdStringPtr:
        return "StdStringPtr";
    case DD::Image::FormatPairPtr:
        return "FormatPairPtr";
    case DD::Image::MatrixPtr:
        return "MatrixPtr";
    }
    return "an unknown type";
}

void HostKnob::store_into(DD::Image::Op& op, StoreType type, void* data, DD::Image::Hash& hash) {
    // Knobs that store nothing; then a type that the value cannot have.
    if (type == DD::Image::NoPtr || !data)
        return;
    if (!fits(type))
        throw PluginMisuse(op, "knob '" + name() + "' is stored as " + store_type_name(type) +
                                   ", which it cannot be");
    put(op, type, data, hash);
}

} // namespace velmora::host
