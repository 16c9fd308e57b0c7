// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/comp_script.h"

#include "host/knobs/format_knob.h"
#include "host/knobs/format_text.h"
#include "host/script/chan.h"
#include "host/script/script_writer.h"
#include "tools/comp/chan_curves.h"
#include "tools/comp/star_node.h"
#include "tools/failure.h"

#include <algorithm>
#include <cmath>

namespace velmora {

// The knobs that differ from their defaults, as the host itself saves a node.
static host::ScriptNode node_of(const Node& node) {
    host::ScriptNode written;
    written.class_name = node.class_name();
    written.name = node.name();
    for (const std::unique_ptr<host::HostKnob>& knob : node.knobs())
        if (!knob->name().empty() && knob->not_default())
            written.knobs.push_back({knob->name(), {}, knob->script_value()});
    return written;
}

static void set_root(host::Script& script, const DD::Image::Format& format, int first, int last) {
    const auto add = [&](const char* name, const host::ScriptValue& value) {
        script.root.push_back({name, {}, value});
    };
    add("frame", host::number_value(first));
    add("first_frame", host::number_value(first));
    add("last_frame", host::number_value(last));
    add("format", host::text_value(host::format_text(format)));
}

// The host evaluates text in brackets within a path as an expression, however it is quoted.
static void check_star_file(const Node& stars) {
    const std::string path = stars.knob("starfile")->get_text();
    if (path.find('[') != std::string::npos)
        throw UsageFailure(path, "cannot be written to a script, where [ begins an expression");
}

host::Script script_of(const Comp& comp, const CompOptions& options,
                       const std::vector<int>& frames) {
    const Node& stars = *comp.stars[0];
    check_star_file(stars);
    double first = 1, last = 1;
    host::Script script;

    // The camera, with a moving one's curves in place of its constant knobs.
    int camera_place = -1;
    if (const Node* const camera = stars.input(star_camera_input)) {
        host::ScriptNode written = node_of(*camera);
        if (!options.camera.chan_file.empty()) {
            const host::Chan chan = *read_chan(options.camera.chan_file);
            first = std::ceil(chan.first_frame());
            last = std::max(first, std::floor(chan.last_frame()));
            written.knobs.push_back({"translate", {}, translate_curves(chan)});
            written.knobs.push_back({"rotate", {}, rotate_curves(chan)});
            if (chan.has_vfov() && !options.camera.focal && !options.camera.fov)
                written.knobs.push_back(
                    {"focal",
                     {},
                     focal_curve(chan, camera->knob("vaperture")->get_value_at(0, 0))});
        }
        script.nodes.push_back(written);
        camera_place = 0;
    }

    // The node, connected to it.
    host::ScriptNode written = node_of(stars);
    if (camera_place >= 0)
        written.inputs = {-1, camera_place};
    script.nodes.push_back(written);

    // The project's range and format.
    if (!frames.empty()) {
        first = *std::min_element(frames.begin(), frames.end());
        last = *std::max_element(frames.begin(), frames.end());
    }
    const auto& format = dynamic_cast<const host::FormatKnob&>(*stars.knob("format"));
    set_root(script, format.format(), int(first), int(last));
    return script;
}

} // namespace velmora
