// SPDX-License-Identifier: BSD-3-Clause

// The knob that picks an image's format; the project's until one is picked.
//
// Errors:    ScriptError for texts that are not a format.
// Ownership: borrows the project, which must outlive the knob.
#pragma once

#include "host/knobs/host_knob.h"
#include "host/runtime/project.h"

namespace velmora::host {

class FormatKnob : public HostKnob {
public:
    FormatKnob(const DD::Image::KnobSpec& spec, const Project& project);

    // Lives as long as the process: ops keep pointers to it.
    const DD::Image::Format& format() const { return picked ? *picked : project.format(); }
    void set_format(const DD::Image::Format& format);

    void read(const ScriptValue& value, const std::string& script) override;
    ScriptValue script_value() const override;
    bool not_default() const override { return picked != nullptr; }
    void store(DD::Image::StoreType type, void* data, DD::Image::Hash& hash,
               const DD::Image::OutputContext& context) override;

protected:
    bool fits(DD::Image::StoreType type) const override { return type == DD::Image::FormatPairPtr; }

private:
    const Project& project;
    const DD::Image::Format* picked = nullptr; // null for the project's
};

} // namespace velmora::host
