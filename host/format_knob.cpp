#include "host/format_knob.h"

#include "host/format_text.h"

namespace velmora {

FormatKnob::FormatKnob(const DD::Image::KnobSpec& spec, const DD::Image::Format& script_format)
    : HostKnob(spec), script_format(script_format) {
    const auto* const pair = static_cast<const DD::Image::FormatPair*>(spec.data);
    if (pair->format() && !pair->format()->is_none())
        picked = *pair->format();
}

void FormatKnob::read(const ScriptValue& value, const std::string& script) {
    picked = parse_format_text(value, script);
}

ScriptValue FormatKnob::script_value() const {
    ScriptValue value;
    value.kind = ScriptValue::Kind::quoted;
    value.text = format_text(format());
    return value;
}

void FormatKnob::put(DD::Image::Op& op, DD::Image::StoreType type, void* data,
                     DD::Image::Hash& hash) {
    store(type, data, hash, op.outputContext());
}

// There is no proxy scale here: both formats are the same.
void FormatKnob::store(DD::Image::StoreType, void* data, DD::Image::Hash& hash,
                       const DD::Image::OutputContext&) {
    auto* const pair = static_cast<DD::Image::FormatPair*>(data);
    pair->format(&format());
    pair->fullSizeFormat(&format());
    format().append(hash);
}

} // namespace velmora
