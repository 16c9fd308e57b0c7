// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/format_knob.h"

#include "host/knobs/format_text.h"

namespace velmora::host {

FormatKnob::FormatKnob(const DD::Image::KnobSpec& spec, const Project& project)
    : HostKnob(spec), project(project) {
    const auto* const pair = static_cast<const DD::Image::FormatPair*>(spec.data);
    // The op's own format counts as picked.
    if (pair->format() && !pair->format()->is_none())
        set_format(*pair->format());
}

void FormatKnob::set_format(const DD::Image::Format& format) {
    picked = &DD::Image::Format::kept(format);
}

void FormatKnob::read(const ScriptValue& value, const std::string& script) {
    set_format(parse_format_text(value, script));
}

ScriptValue FormatKnob::script_value() const {
    ScriptValue value;
    value.kind = ScriptValue::Kind::quoted;
    value.text = format_text(format());
    return value;
}

// There is no proxy scale here: both formats are the same.
void FormatKnob::store(DD::Image::StoreType, void* data, DD::Image::Hash& hash,
                       const DD::Image::OutputContext&) {
    auto* const pair = static_cast<DD::Image::FormatPair*>(data);
    pair->format(&format());
    pair->fullSizeFormat(&format());
    format().append(hash);
}

} // namespace velmora::host
