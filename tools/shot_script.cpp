#include "tools/shot_script.h"

#include "host/chan.h"
#include "host/format_knob.h"
#include "host/format_text.h"
#include "host/lens.h"
#include "host/script_writer.h"
#include "tools/star_node.h"

#include <algorithm>
#include <cmath>

namespace velmora {

using DD::Image::Node;

// Straight lines from key to key, and as the first and last key outside.
static ScriptValue curve_through(const std::vector<double>& frames,
                                 const std::vector<double>& values) {
    if (frames.size() == 1)
        return number_value(values[0]);
    std::vector<ScriptValue> words = {text_value("curve"), text_value("L")};
    for (std::size_t i = 0; i < frames.size(); i++) {
        words.push_back(text_value("x" + number_text(frames[i])));
        words.push_back(number_value(values[i]));
    }
    return list_value(words);
}

template <class Value>
static ScriptValue curve_of(const Chan& chan, Value value) {
    std::vector<double> values;
    for (const double frame : chan.frames())
        values.push_back(value(chan.sample(frame)));
    return curve_through(chan.frames(), values);
}

static ScriptValue curves_of(const Chan& chan, std::array<double, 3> Transform::*part) {
    std::vector<ScriptValue> curves;
    for (std::size_t i = 0; i < 3; i++)
        curves.push_back(
            curve_of(chan, [&](const ChanSample& sample) { return (sample.transform.*part)[i]; }));
    return list_value(curves);
}

static std::vector<ScriptKnob> moves_of(const Chan& chan, const Node& camera, bool with_lens) {
    std::vector<ScriptKnob> knobs;
    knobs.push_back({"translate", {}, curves_of(chan, &Transform::translate)});
    knobs.push_back({"rotate", {}, curves_of(chan, &Transform::rotate)});
    if (!chan.has_vfov() || !with_lens)
        return knobs;
    const double aperture = camera.knob("vaperture")->get_value_at(0, 0);
    const ScriptValue focal = curve_of(
        chan, [&](const ChanSample& sample) { return focal_of_fov(*sample.vfov, aperture); });
    knobs.push_back({"focal", {}, list_value({focal})});
    return knobs;
}

static ScriptNode node_of(const Node& node) {
    ScriptNode written;
    written.class_name = node.class_name();
    written.name = node.name();
    for (const std::unique_ptr<HostKnob>& knob : node.knobs())
        if (!knob->name().empty() && knob->not_default())
            written.knobs.push_back({knob->name(), {}, knob->script_value()});
    return written;
}

static void set_root(Script& script, const DD::Image::Format& format, int first, int last) {
    const auto add = [&](const char* name, const ScriptValue& value) {
        script.root.push_back({name, {}, value});
    };
    add("frame", number_value(first));
    add("first_frame", number_value(first));
    add("last_frame", number_value(last));
    add("format", text_value(format_text(format)));
}

Script script_of(const CompOptions& options, const std::vector<int>& frames) {
    const std::unique_ptr<Comp> comp = make_comp(options);
    const Node& stars = *comp->stars[0];
    double first = 1, last = 1;
    Script script;

    int camera_place = -1;
    if (const Node* const camera = stars.input(star_camera_input)) {
        ScriptNode written = node_of(*camera);
        if (!options.camera.chan_file.empty()) {
            const Chan chan = Chan::read(options.camera.chan_file);
            first = std::ceil(chan.first_frame());
            last = std::max(first, std::floor(chan.last_frame()));
            const bool with_lens = !options.camera.focal && !options.camera.fov;
            for (const ScriptKnob& knob : moves_of(chan, *camera, with_lens))
                written.knobs.push_back(knob);
        }
        script.nodes.push_back(written);
        camera_place = 0;
    }
    ScriptNode written = node_of(stars);
    if (camera_place >= 0)
        written.inputs = {-1, camera_place};
    script.nodes.push_back(written);

    if (!frames.empty()) {
        first = *std::min_element(frames.begin(), frames.end());
        last = *std::max_element(frames.begin(), frames.end());
    }
    const auto& format = dynamic_cast<const FormatKnob&>(*stars.knob("format"));
    set_root(script, format.format(), int(first), int(last));
    return script;
}

} // namespace velmora
