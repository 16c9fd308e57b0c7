// SPDX-License-Identifier: BSD-3-Clause

// The knobs of our node as the command line sets and shows them: text in, text out.
//
// Shapes:    numbers are values at a frame; a matrix is its rows, for column vectors.
//
// Errors:    UsageFailure naming the knob, its value and what it takes.
#pragma once

#include "host/runtime/node.h"

#include <string>
#include <variant>
#include <vector>

namespace velmora {

// The knobs that the node's class declares itself, in the order of its panel.
std::vector<host::HostKnob*> own_knobs(const Node& node);

// What set_knob takes for it, in words.
std::string takes_of(const host::HostKnob& knob);

// Sets the knob from the text that a user gave.
void set_knob(Node& node, const std::string& name, const std::string& text);

// A knob's value at a frame.
typedef std::variant<double, int, bool, std::string, std::vector<double>> KnobValue;
KnobValue knob_value(const host::HostKnob& knob, double frame);

// The same as text that set_knob takes back.
std::string knob_text(const host::HostKnob& knob, double frame);

// `text` as <width>x<height>.
DD::Image::Format parse_format(const std::string& text);

// Throws for a format of whose image the bytes, 16 per pixel, would reach 4 GiB, and for more
// motion blur segments than anybody uses: either would take the machine's memory. `where` names the
// node of a script, which is then at fault rather than the arguments.
void check_sizes(const Node& node, double frame, const std::string& where);

} // namespace velmora
