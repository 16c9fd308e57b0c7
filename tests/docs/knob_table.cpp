// SPDX-License-Identifier: BSD-3-Clause
#include "tests/docs/knob_table.h"

#include "tools/comp/knobs.h"
#include "tools/comp/star_node.h"
#include "tools/numbers.h"

namespace velmora {

using DD::Image::Format;
using DD::Image::Knob;

static std::string slider_of(const Knob& knob) {
    if (!knob.has_range())
        return "";
    return shortest_text(knob.minimum()) + " to " + shortest_text(knob.maximum()) +
           (knob.flag(Knob::LOG_SLIDER) ? ", logarithmic" : "");
}

// What a new node has, in two comps of different formats: where they differ it is the comp's.
static std::string default_of(const host::HostKnob& knob, const host::HostKnob& in_another_comp) {
    const std::string text = knob_text(knob, 1);
    if (text != knob_text(in_another_comp, 1))
        return "the project's";
    if (text == "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1")
        return "identity";
    return text.empty() ? "none" : text;
}

// A knob without a label of its own shows none, or the parts that it is made of.
static std::string label_of(const Knob& knob) {
    return knob.label() == knob.name() ? "" : knob.label();
}

// Angle brackets would be taken for HTML.
static std::string escaped(std::string text) {
    for (std::size_t at = 0; (at = text.find('<', at)) != std::string::npos;)
        text.replace(at, 1, "&lt;");
    return text;
}

std::string knob_table() {
    host::Graph graph(plugin_path()), other(plugin_path());
    graph.set_format(Format(1920, 1080));
    other.set_format(Format(640, 480));
    const Node& node = create_star_node(graph);
    const Node& in_other = create_star_node(other);

    std::string table =
        "| knob | in the panel | takes | default | slider |\n|---|---|---|---|---|\n";
    for (const host::HostKnob* const knob : own_knobs(node))
        table += "| [`" + knob->name() + "`](#" + knob->name() + ") | " + label_of(*knob) + " | " +
                 escaped(takes_of(*knob)) + " | " +
                 default_of(*knob, *in_other.knob(knob->name())) + " | " + slider_of(*knob) +
                 " |\n";
    return table;
}

} // namespace velmora
