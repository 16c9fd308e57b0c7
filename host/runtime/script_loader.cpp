// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/script_loader.h"

#include "host/knobs/format_text.h"

#include <cmath>
#include <map>
#include <set>

namespace velmora::host {

// Ops validate and open their inputs recursively.
static const int longest_chain = 1000;

// Knobs of every node or camera of the host that have no effect on the image here. Values that
// would have one are refused first, see refuse_switches().
static bool is_without_effect(const std::string& name) {
    static const std::set<std::string> names = {
        "animated",        "display",   "file",           "fbx_node_name", "fbx_take_list",
        "frame_rate",      "help",      "knobChanged",    "lifetimeEnd",   "lifetimeStart",
        "onCreate",        "onDestroy", "panel",          "render_mode",   "selectable",
        "suppress_dialog", "updateUI",  "use_frame_rate", "useLifetime"};
    return is_graph_knob(name) || names.count(name) > 0;
}

namespace {

class Loader {
public:
    Loader(const Script& script, Graph& graph) : script(script), graph(graph) {}

    // `depth` counts the nodes downstream that are being loaded.
    Node& load(int index, int depth = 0);
    bool is_loaded(int index) const { return loaded.count(index) > 0; }

    // By the knob `disable`; anything but true and false is an expression.
    bool is_disabled(const ScriptNode& node) const;

private:
    const Script& script;
    Graph& graph;
    std::map<int, Node*> loaded; // by index in the script

    Node& create(const ScriptNode& from);
    void read_knobs(const ScriptNode& from, Node& node) const;
    void refuse_switches(const ScriptNode& from) const;
    void wire(const ScriptNode& from, Node& node, int depth);

    [[noreturn]] void refuse(ScriptPlace place, const std::string& why) const {
        throw ScriptError(script.name, place, why);
    }
};

} // namespace

static std::string title(const ScriptNode& node) {
    return node.name.empty() ? "a " + node.class_name : node.name;
}

bool Loader::is_disabled(const ScriptNode& node) const {
    const ScriptKnob* const knob = find_knob(node.knobs, "disable");
    if (!knob || knob->value.text == "false" || knob->value.text == "0")
        return false;
    if (knob->value.text != "true" && knob->value.text != "1")
        refuse(knob->value.place,
               "knob 'disable': the expression " + in_quotes(knob->value) + " is not supported");
    return true;
}

Node& Loader::load(int index, int depth) {
    const auto known = loaded.find(index);
    if (known != loaded.end())
        return *known->second;
    const ScriptNode& from = script.nodes[std::size_t(index)];
    if (depth == longest_chain)
        refuse(from.place,
               "more than " + std::to_string(longest_chain) + " nodes feed each other in a row");
    // Known before its inputs are loaded: several nodes may share it.
    Node& node = create(from);
    loaded[index] = &node;
    read_knobs(from, node);
    wire(from, node, depth);
    return node;
}

Node& Loader::create(const ScriptNode& from) {
    try {
        if (graph.plugins().look_for(from.class_name))
            return graph.create(from.class_name, from.name);
    } catch (const PluginError& error) {
        refuse(from.place, error.what());
    }
    refuse(from.place, "there is no plug-in for " + title(from) + ", of class " +
                           in_quotes(from.class_name) + ", whose output is needed");
}

// The names of the knobs that a user added to the node: `addUserKnob {type name ...}`.
static std::set<std::string> user_knobs(const ScriptNode& node, const std::string& name) {
    std::set<std::string> names;
    for (const ScriptKnob& knob : node.knobs) {
        if (knob.name != "addUserKnob")
            continue;
        const std::vector<ScriptValue> words = list_items(knob.value, name);
        if (words.size() > 1)
            names.insert(words[1].text);
    }
    return names;
}

// Refuses knobs that make the host compute something that is not computed here.
void Loader::refuse_switches(const ScriptNode& from) const {
    const ScriptKnob* const file = find_knob(from.knobs, "read_from_file");
    if (file && file->value.text != "false" && file->value.text != "0")
        refuse(file->value.place, title(from) + " reads its values from a file, which is "
                                                "not supported");
    const ScriptKnob* const lifetime = find_knob(from.knobs, "useLifetime");
    if (lifetime && lifetime->value.text != "false" && lifetime->value.text != "0")
        refuse(lifetime->value.place, title(from) + " is there for some of the frames only, which "
                                                    "is not supported");
}

void Loader::read_knobs(const ScriptNode& from, Node& node) const {
    refuse_switches(from);
    const std::set<std::string> of_user = user_knobs(from, script.name);
    for (const ScriptKnob& knob : from.knobs) {
        // A knob of the class takes its value; others must have no effect.
        const bool passed = knob.name == "addUserKnob" || knob.name == "disable" ||
                            knob.name == "read_from_file" || is_without_effect(knob.name) ||
                            of_user.count(knob.name) > 0;
        if (HostKnob* const known = node.knob(knob.name))
            known->read(knob.value, script.name);
        else if (!passed)
            refuse(knob.place, title(from) + ", of class " + in_quotes(from.class_name) +
                                   ", has no knob " + in_quotes(knob.name) + " here");
    }
}

void Loader::wire(const ScriptNode& from, Node& node, int depth) {
    for (std::size_t n = 0; n < from.inputs.size(); n++) {
        if (from.inputs[n] < 0)
            continue;
        // What a disabled node passes on depends on its class.
        const ScriptNode& source = script.nodes[std::size_t(from.inputs[n])];
        if (is_disabled(source))
            refuse(source.place, title(source) + " is disabled, which is not supported");
        Node& input = load(from.inputs[n], depth + 1);
        if (!node.set_input(int(n), &input))
            refuse(from.place, title(from) + " does not take " + title(source) + " as input " +
                                   std::to_string(n));
    }
}

// ---- the project -------------------------------------------------------------------------------

static int frame_of(const ScriptKnob& knob, const std::string& name) {
    const double frame = number_of(knob.value, name);
    if (frame != std::floor(frame) || std::fabs(frame) > 1e9)
        throw ScriptError(name, knob.value.place, "knob '" + knob.name + "' takes a whole number");
    return int(frame);
}

// The project's settings, as far as they have an effect here.
static void read_root(const Script& script, Graph& graph) {
    if (const ScriptKnob* const format = find_knob(script.root, "format"))
        graph.set_format(parse_format_text(format->value, script.name));
    if (const ScriptKnob* const fps = find_knob(script.root, "fps")) {
        graph.fps = number_of(fps->value, script.name);
        if (!(graph.fps >= 0.001 && graph.fps <= 100000))
            throw ScriptError(script.name, fps->value.place,
                              "knob 'fps' takes a number from 0.001 to 100000");
    }
    if (const ScriptKnob* const first = find_knob(script.root, "first_frame"))
        graph.first_frame = frame_of(*first, script.name);
    if (const ScriptKnob* const last = find_knob(script.root, "last_frame"))
        graph.last_frame = frame_of(*last, script.name);
}

LoadedScript load_script(const Script& script, const std::string& class_name, Graph& graph) {
    read_root(script, graph);
    // The nodes of the class, unless disabled.
    Loader loader(script, graph);
    LoadedScript result;
    std::set<int> wanted;
    for (std::size_t i = 0; i < script.nodes.size(); i++) {
        const ScriptNode& node = script.nodes[i];
        if (node.class_name != class_name)
            continue;
        wanted.insert(int(i));
        if (loader.is_disabled(node))
            result.disabled.push_back(title(node));
        else
            result.nodes.push_back(&loader.load(int(i)));
    }
    // The classes of everything else.
    std::set<std::string> skipped;
    for (std::size_t i = 0; i < script.nodes.size(); i++)
        if (!loader.is_loaded(int(i)) && !wanted.count(int(i)) &&
            !is_looked_through(script.nodes[i].class_name))
            skipped.insert(script.nodes[i].class_name);
    result.skipped_classes.assign(skipped.begin(), skipped.end());
    return result;
}

} // namespace velmora::host
