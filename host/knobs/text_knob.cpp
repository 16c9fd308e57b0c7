// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/text_knob.h"

#include <filesystem>

namespace velmora::host {

using DD::Image::StoreType;

// The op's own value.
static std::string initial_text(const DD::Image::KnobSpec& spec) {
    if (spec.store == DD::Image::StdStringPtr)
        return *static_cast<const std::string*>(spec.data);
    const char* const text = *static_cast<const char* const*>(spec.data);
    return text ? text : "";
}

TextKnob::TextKnob(const DD::Image::KnobSpec& spec) : HostKnob(spec), text(initial_text(spec)) {
    remember_default();
}

bool TextKnob::set_text(const char* value) {
    text = value ? value : "";
    return true;
}

// The text with the expression for the script's folder replaced by `folder`.
static std::string with_folder(std::string text, const std::string& folder) {
    static const std::string expression = "[file dirname [value root.name]]";
    for (std::size_t at = text.find(expression); at != std::string::npos;
         at = text.find(expression, at + folder.size()))
        text.replace(at, expression.size(), folder);
    return text;
}

void TextKnob::read(const ScriptValue& value, const std::string& script) {
    if (ClassID() != DD::Image::FILE_KNOB) {
        text = value.text;
        return;
    }
    // Without the supported expression, any [ is another one.
    if (with_folder(value.text, ".").find('[') != std::string::npos)
        throw ScriptError(script, value.place,
                          "knob '" + name() + "': the expression in " + in_quotes(value) +
                              " is not supported");
    const std::string parent = std::filesystem::path(script).parent_path().string();
    text = with_folder(value.text, parent.empty() ? "." : parent);
}

ScriptValue TextKnob::script_value() const {
    ScriptValue value;
    value.kind = ScriptValue::Kind::quoted;
    value.text = text;
    return value;
}

bool TextKnob::fits(StoreType type) const {
    return type == DD::Image::StringPtr || type == DD::Image::StdStringPtr;
}

void TextKnob::put(DD::Image::Op& op, StoreType type, void* data, DD::Image::Hash& hash) {
    // The op keeps a copy, as this knob may change while the op works.
    if (type == DD::Image::StringPtr) {
        hash.append(text);
        *static_cast<const char**>(data) = op.keep_text(data, text);
        return;
    }
    store(type, data, hash, op.outputContext());
}

void TextKnob::store(StoreType type, void* data, DD::Image::Hash& hash,
                     const DD::Image::OutputContext&) {
    hash.append(text);
    if (type == DD::Image::StdStringPtr)
        *static_cast<std::string*>(data) = text;
    else
        *static_cast<const char**>(data) = text.c_str(); // valid until the knob changes
}

} // namespace velmora::host
