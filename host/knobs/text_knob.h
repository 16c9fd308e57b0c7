// SPDX-License-Identifier: BSD-3-Clause

// Knobs that hold a text: strings and file names.
//
// Errors:    ScriptError for a file name that has to be computed, see read().
#pragma once

#include "host/knobs/host_knob.h"

namespace velmora::host {

class TextKnob : public HostKnob {
public:
    explicit TextKnob(const DD::Image::KnobSpec& spec);

    const char* get_text() const override { return text.c_str(); }
    bool set_text(const char* value) override;

    // File names with [...] have to be computed and are refused. One is supported, for the script's
    // folder: [file dirname [value root.name]].
    void read(const ScriptValue& value, const std::string& script) override;
    ScriptValue script_value() const override;

    // Into std::string. A const char* is valid until the knob changes; put() has the op keep it.
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
