// SPDX-License-Identifier: BSD-3-Clause

// The knob that picks channels: all, none, rgb, rgba, alpha, depth, or a list of channel names.
//
// Shapes:    scripts hold one of these words or a list; a word with a minus is left out.
// Errors:    ScriptError for a name that no channel has.
#pragma once

#include "host/knobs/host_knob.h"

namespace velmora::host {

class ChannelsKnob : public HostKnob {
public:
    explicit ChannelsKnob(const DD::Image::KnobSpec& spec);

    void read(const ScriptValue& value, const std::string& script) override;
    ScriptValue script_value() const override;
    void store(DD::Image::StoreType type, void* data, DD::Image::Hash& hash,
               const DD::Image::OutputContext& context) override;

protected:
    bool fits(DD::Image::StoreType type) const override { return type == DD::Image::ChannelSetPtr; }

private:
    DD::Image::ChannelSet chosen;
};

} // namespace velmora::host
