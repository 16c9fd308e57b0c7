// The knob that picks an image's format; until one is picked it is the script's own.
#pragma once

#include "host/host_knob.h"

#include <optional>

namespace velmora {

class FormatKnob : public HostKnob {
public:
    // `script_format` must outlive the knob.
    FormatKnob(const DD::Image::KnobSpec& spec, const DD::Image::Format& script_format);

    const DD::Image::Format& format() const { return picked ? *picked : script_format; }
    void set_format(const DD::Image::Format& format) { picked = format; }

    void read(const ScriptValue& value, const std::string& script) override;
    ScriptValue script_value() const override;
    bool not_default() const override { return picked.has_value(); }
    void store(DD::Image::StoreType type, void* data, DD::Image::Hash& hash,
               const DD::Image::OutputContext& context) override;

protected:
    bool fits(DD::Image::StoreType type) const override { return type == DD::Image::FormatPairPtr; }
    void put(DD::Image::Op& op, DD::Image::StoreType type, void* data,
             DD::Image::Hash& hash) override;

private:
    const DD::Image::Format& script_format;
    std::optional<DD::Image::Format> picked;
};

} // namespace velmora
