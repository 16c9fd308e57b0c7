// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/channels_knob.h"

namespace velmora::host {

using DD::Image::Channel;
using DD::Image::ChannelSet;

static const struct {
    const char* name;
    DD::Image::ChannelSetInit set;
} named_sets[] = {
    {"all", DD::Image::Mask_All},   {"none", DD::Image::Mask_None},   {"rgb", DD::Image::Mask_RGB},
    {"rgba", DD::Image::Mask_RGBA}, {"alpha", DD::Image::Mask_Alpha}, {"depth", DD::Image::Mask_Z},
};

ChannelsKnob::ChannelsKnob(const DD::Image::KnobSpec& spec)
    : HostKnob(spec), chosen(*static_cast<const ChannelSet*>(spec.data)) {
    remember_default();
}

// One word of a list: a set, a channel, or, after a minus, a channel that is left out.
static ChannelSet set_of(const ScriptValue& word, const std::string& script) {
    for (const auto& named : named_sets)
        if (word.text == named.name)
            return named.set;
    if (!word.text.empty() && word.text[0] == '-')
        return DD::Image::Mask_None;
    const Channel channel = DD::Image::findChannel(word.text.c_str());
    if (!channel)
        throw ScriptError(script, word.place, "there is no channel " + in_quotes(word));
    return channel;
}

void ChannelsKnob::read(const ScriptValue& value, const std::string& script) {
    // The union of its words; nothing changes if one is unknown.
    ChannelSet read;
    for (const ScriptValue& word : list_items(value, script))
        read += set_of(word, script);
    chosen = read;
}

ScriptValue ChannelsKnob::script_value() const {
    // A set's name if there is one, else the list.
    ScriptValue value;
    for (const auto& named : named_sets) {
        value.text = named.name;
        if (chosen == ChannelSet(named.set))
            return value;
    }
    value.kind = ScriptValue::Kind::braced;
    value.text.clear();
    foreach (channel, chosen)
        if (const char* const name = DD::Image::getName(channel))
            value.text += (value.text.empty() ? "" : " ") + std::string(name);
    return value;
}

void ChannelsKnob::store(DD::Image::StoreType, void* data, DD::Image::Hash& hash,
                         const DD::Image::OutputContext&) {
    *static_cast<ChannelSet*>(data) = chosen;
    chosen.append(hash);
}

} // namespace velmora::host
