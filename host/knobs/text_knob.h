// Knobs that hold a text: strings and the names of files.
#pragma once

#include "host/knobs/host_knob.h"

namespace velmora::host {

class TextKnob : public HostKnob {
public:
    explicit TextKnob(const DD::Image::KnobSpec& spec);

    const char* get_text() const override { return text.c_str(); }
    bool set_text(const char* value) override;

    // A file's name that has to be computed, with [...], is refused, but for the folder of the
    // script: [file dirname [value root.name]].
    void read(const ScriptValue& value, const std::string& script) override;
    ScriptValue script_value() const override;

    // For std::string; a const char* needs an op that keeps it.
    void store(DD::Image::StoreType type, void* data, DD::Image::Hash& hash,
               const DD::Image::OutputContext& context) override;

protected:
    bool fits(DD::Image::StoreType type) const override;
    void put(DD::Image::Op& op, DD::Image::StoreType type, void* data,
             DD::Image::Hash& hash) override;

private:
    std::string text;
};

} // namespace velmora::host
