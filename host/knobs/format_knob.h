// The knob that picks an image's format; until one is picked it is the project's own.
#pragma once

#include "host/knobs/host_knob.h"
#include "host/runtime/project.h"

namespace velmora::host {

class FormatKnob : public HostKnob {
public:
    // The project must outlive the knob.
    FormatKnob(const DD::Image::KnobSpec& spec, const Project& project);

    // One that ops may point to for as long as they like.
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
    const DD::Image::Format* picked = nullptr;
};

} // namespace velmora::host
