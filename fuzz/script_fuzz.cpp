// SPDX-License-Identifier: BSD-3-Clause

// Any bytes read as a saved script: refused with a ScriptError of one line, or nodes that are wired
// to earlier ones, knobs whose curves are finite, and a script that can be written and read again.
#include "fuzz/law.h"
#include "host/script/curve.h"
#include "host/script/script_writer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <stdexcept>

using namespace velmora;
using namespace velmora::host;

static const char* const name = "shot.nk";

static std::optional<Script> parse(const std::string& text) {
    try {
        return Script::parse(text, name);
    } catch (const ScriptError& error) {
        require_printable_line(error.what());
        return std::nullopt;
    }
}

static std::optional<double> value_at(const AnimationCurve& curve, double frame) {
    try {
        return curve.at(frame);
    } catch (const ScriptError& error) {
        require_printable_line(error.what());
        require(frame > curve.keys().back().frame, "only the end of a curve may be open");
        return std::nullopt;
    }
}

static bool is_smooth(const CurveKey& key) {
    return key.interpolation == 'S' && !key.left_slope;
}

static void check_span(const AnimationCurve& curve, const CurveKey& a, const CurveKey& b) {
    require(a.frame < b.frame, "frames grow");
    for (const double part : {0.1, 0.5, 0.9}) {
        const double value = *value_at(curve, (1 - part) * a.frame + part * b.frame);
        require(std::isfinite(value), "a curve is finite");
        if (!is_smooth(a) || !is_smooth(b))
            continue;
        const double slack = 1e-9 * std::max(std::fabs(a.value), std::fabs(b.value));
        require(value >= std::min(a.value, b.value) - slack &&
                    value <= std::max(a.value, b.value) + slack,
                "a smooth curve stays within its keys' values");
    }
}

static void check_curve(const ScriptValue& item) {
    try {
        const AnimationCurve curve = AnimationCurve::parse(item, name);
        const std::vector<CurveKey>& keys = curve.keys();
        for (const CurveKey& key : keys)
            require(value_at(curve, key.frame) == key.value, "a curve passes through its keys");
        for (std::size_t k = 1; k < keys.size(); k++)
            check_span(curve, keys[k - 1], keys[k]);
        for (const double frame : {-1e9, 1e9}) {
            const std::optional<double> value = value_at(curve, frame);
            require(!value || std::isfinite(*value), "a curve is finite");
        }
        const AnimationCurve again = AnimationCurve::parse(curve.value(), name);
        require(again.keys() == keys && again.text() == curve.text(),
                "a curve that is written reads the same");
    } catch (const ScriptError& error) {
        require_printable_line(error.what());
    }
}

static void check_value(const ScriptValue& value) {
    try {
        for (const ScriptValue& item : list_items(value, name))
            check_curve(item);
    } catch (const ScriptError& error) {
        require_printable_line(error.what());
    }
}

static void check_node(const Script& script, std::size_t k) {
    const ScriptNode& node = script.nodes[k];
    for (const int input : node.inputs)
        require(input >= -1 && input < static_cast<int>(k), "inputs stand before their node");
    require(node.clone_of < static_cast<int>(k), "originals stand before their clones");
    if (node.clone_of >= 0)
        require(script.nodes[static_cast<std::size_t>(node.clone_of)].clone_of == -1,
                "originals are no clones");
    require(node.class_name == "Group" || !is_looked_through(node.class_name),
            "what only passes on a picture is no node");
}

static bool is_flat(const ScriptNode& node) {
    return node.class_name != "Group" && node.name.find('.') == std::string::npos;
}

static void check_writing(const Script& script) {
    const bool can_be_written = std::all_of(script.nodes.begin(), script.nodes.end(), is_flat);
    try {
        const std::string text = write_script(script);
        const std::optional<Script> again = parse(text);
        require(again && *again == script, "a script that is written reads the same");
        require(write_script(*again) == text, "a script is always written in the same way");
    } catch (const std::invalid_argument& refusal) {
        require_printable_line(refusal.what());
        require(!can_be_written, "a script without groups can be written");
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::optional<Script> script = parse(std::string(data, data + size));
    if (!script)
        return 0;
    for (std::size_t k = 0; k < script->nodes.size(); k++) {
        check_node(*script, k);
        for (const ScriptKnob& knob : script->nodes[k].knobs)
            check_value(knob.value);
    }
    for (const ScriptKnob& knob : script->root)
        check_value(knob.value);
    check_writing(*script);
    return 0;
}
