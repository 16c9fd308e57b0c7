// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/comp.h"

#include "host/knobs/format_knob.h"
#include "host/runtime/script_loader.h"
#include "tools/comp/knobs.h"
#include "tools/comp/star_node.h"
#include "tools/failure.h"
#include "tools/files/program_folder.h"
#include "tools/files/text_file.h"

#include <algorithm>
#include <set>

namespace velmora {

Comp::Comp() : graph(plugin_path()) {}

// ---- knobs of the command line -----------------------------------------------------------------

// Sets the knobs of --knob and returns their names.
static std::set<std::string> set_given_knobs(const std::vector<std::string>& settings, Node& node) {
    std::set<std::string> given;
    for (const std::string& setting : settings) {
        const std::size_t equals = setting.find('=');
        if (equals == std::string::npos)
            throw UsageFailure("--knob " + setting, "takes NAME=VALUE");
        const std::string name = setting.substr(0, equals);
        if (!given.insert(name).second)
            throw UsageFailure("--knob " + setting, "the knob is given twice");
        set_knob(node, name, setting.substr(equals + 1));
    }
    return given;
}

// Returns whether a star database is named.
static bool set_knobs(const CompOptions& options, Node& node) {
    // An option and --knob may not set the same knob.
    const std::set<std::string> given = set_given_knobs(options.knobs, node);
    const auto exclusive = [&](const char* option, bool used, const char* name) {
        if (used && given.count(name))
            throw UsageFailure(option, std::string("says the same as --knob ") + name);
    };
    exclusive("--format", !options.format.empty(), "format");
    exclusive("--star-file", !options.star_file.empty(), "starfile");
    exclusive("--no-camera", !options.camera.connected && options.camera.gives_view(), "transform");

    // What each option sets, where it is given.
    if (!options.format.empty())
        dynamic_cast<host::FormatKnob&>(*node.knob("format"))
            .set_format(parse_format(options.format));
    if (!options.star_file.empty())
        node.knob("starfile")->set_text(options.star_file.c_str());
    return !options.star_file.empty() || given.count("starfile") > 0;
}

// ---- from options ------------------------------------------------------------------------------

// One node of ours with a camera, as the options say.
static void make_shot(const CompOptions& options, Comp& comp) {
    comp.graph.set_format(default_format);
    Node& stars = create_star_node(comp.graph);
    if (!set_knobs(options, stars))
        stars.knob("starfile")->set_text(default_star_file().c_str());
    comp.stars.push_back(&stars);
    check_sizes(stars, 1, "");
    add_camera(comp.graph, stars, options.camera);
    if (!options.camera.chan_file.empty())
        comp.inputs.push_back(options.camera.chan_file);
}

// ---- from a script -----------------------------------------------------------------------------

static std::string in_list(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

// By the full name, or by the name without its groups where that is unambiguous.
static Node* find_node(const std::vector<Node*>& nodes, const std::string& name) {
    std::vector<Node*> alike;
    for (Node* const node : nodes) {
        if (node->name() == name)
            return node;
        if (node->name().substr(node->name().rfind('.') + 1) == name)
            alike.push_back(node);
    }
    return alike.size() == 1 ? alike[0] : nullptr;
}

static Node* node_named(const CompOptions& options, const host::LoadedScript& loaded) {
    const std::string what = "--node " + options.node;
    if (Node* const node = find_node(loaded.nodes, options.node))
        return node;
    const std::vector<std::string>& off = loaded.disabled;
    if (std::find(off.begin(), off.end(), options.node) != off.end())
        throw UsageFailure(what, "is disabled in " + options.script);
    throw UsageFailure(what, options.script + " has no such node of class " + star_node_class);
}

static void read_script(const CompOptions& options, Comp& comp) {
    if (options.camera.given())
        throw UsageFailure("arguments", "the camera is what the script says: options such as "
                                        "--camera, --focal or --look-at are for renders without");
    const host::Script script = host::Script::parse(read_text_file(options.script), options.script);
    const host::LoadedScript loaded = host::load_script(script, star_node_class, comp.graph);
    comp.inputs.push_back(options.script);

    // Note what is left out.
    if (!loaded.skipped_classes.empty())
        comp.notes.push_back("note: " + options.script + ": skipped nodes of other classes: " +
                             in_list(loaded.skipped_classes));
    if (!loaded.disabled.empty())
        comp.notes.push_back("note: " + options.script +
                             ": not rendered, being disabled: " + in_list(loaded.disabled));

    // Choose the nodes, and set the given knobs on each.
    comp.stars = loaded.nodes;
    if (!options.node.empty())
        comp.stars = {node_named(options, loaded)};
    if (comp.stars.empty())
        throw WorkFailure(options.script,
                          std::string("has no node of class ") + star_node_class + " to render");
    for (Node* const node : comp.stars)
        set_knobs(options, *node);
}

std::unique_ptr<Comp> make_comp(const CompOptions& options) {
    auto comp = std::make_unique<Comp>();
    if (options.script.empty() && !options.node.empty())
        throw UsageFailure("--node", "is for scripts");
    working_in_host([&] {
        if (options.script.empty())
            make_shot(options, *comp);
        else
            read_script(options, *comp);
    });
    // The databases are read, too.
    for (const Node* const node : comp->stars)
        comp->inputs.push_back(node->knob("starfile")->get_text());
    return comp;
}

} // namespace velmora
