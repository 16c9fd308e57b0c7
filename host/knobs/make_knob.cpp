// SPDX-License-Identifier: BSD-3-Clause
#include "host/knobs/make_knob.h"

#include "host/knobs/axis_knob.h"
#include "host/knobs/channels_knob.h"
#include "host/knobs/format_knob.h"
#include "host/knobs/text_knob.h"

namespace velmora::host {

std::vector<std::unique_ptr<HostKnob>> make_knobs(const DD::Image::KnobSpec& spec,
                                                  const Project& project) {
    std::vector<std::unique_ptr<HostKnob>> knobs;
    switch (spec.type) {
    case DD::Image::STRING_KNOB:
    case DD::Image::FILE_KNOB:
        knobs.push_back(std::make_unique<TextKnob>(spec));
        break;
    case DD::Image::ENUMERATION_KNOB:
        knobs.push_back(std::make_unique<ChoiceKnob>(spec));
        break;
    case DD::Image::FORMAT_KNOB:
        knobs.push_back(std::make_unique<FormatKnob>(spec, project));
        break;
    case DD::Image::CHANNEL_MASK_KNOB:
        knobs.push_back(std::make_unique<ChannelsKnob>(spec));
        break;
    case DD::Image::AXIS_KNOB: { // the axis itself, then its parts
        auto axis = std::make_unique<AxisKnob>(spec);
        std::vector<std::unique_ptr<HostKnob>> parts = axis->make_parts();
        knobs.push_back(std::move(axis));
        for (std::unique_ptr<HostKnob>& part : parts)
            knobs.push_back(std::move(part));
        break;
    }
    // What arranges the panel has no value.
    case DD::Image::TAB_KNOB:
    case DD::Image::TEXT_KNOB:
    case DD::Image::DIVIDER_KNOB:
    case DD::Image::NEWLINE_KNOB:
    case DD::Image::BUTTON_KNOB:
    case DD::Image::BEGIN_GROUP_KNOB:
    case DD::Image::END_GROUP_KNOB:
        knobs.push_back(std::make_unique<HostKnob>(spec));
        break;
    default: // all others are numbers
        knobs.push_back(std::make_unique<NumberKnob>(spec));
    }
    return knobs;
}

} // namespace velmora::host
