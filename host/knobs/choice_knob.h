// SPDX-License-Identifier: BSD-3-Clause

// A knob that picks one item of a menu.
//
// Shapes:    scripts hold the item's text. An index is accepted as well, even out of range.
// Errors:    ScriptError for other texts, and for animations and expressions.
#pragma once

#include "host/knobs/host_knob.h"

#include <vector>

namespace velmora::host {

class ChoiceKnob : public HostKnob {
public:
    explicit ChoiceKnob(const DD::Image::KnobSpec& spec);

    // A part of another knob, with its default.
    ChoiceKnob(const DD::Image::KnobSpec& spec, int index);

    // The menu, and the index of what is chosen.
    const std::vector<std::string>& items() const { return texts; }
    int index() const { return chosen; }

    int size() const override { return 1; }
    using Knob::get_value_at;
    double get_value_at(double, int) const override { return chosen; }
    bool set_value(double value, int i) override;

    // The item's text; of an index out of range the number.
    const char* get_text() const override { return text.c_str(); }
    bool set_text(const char* text) override;

    void read(const ScriptValue& value, const std::string& script) override;
    ScriptValue script_value() const override;
    void store(DD::Image::StoreType type, void* data, DD::Image::Hash& hash,
               const DD::Image::OutputContext& context) override;

protected:
    bool fits(DD::Image::StoreType type) const override { return type == DD::Image::IntPtr; }

private:
    std::vector<std::string> texts;
    int chosen = 0;
    std::string text;

    void choose(int index);
};

} // namespace velmora::host
