// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/star_node.h"

#include "host/runtime/scanlines.h"
#include "host/script/script_text.h"
#include "tools/files/program_folder.h"

namespace velmora {

const char* const star_node_class = "VelmoraNK";
const DD::Image::Format default_format(1920, 1080);

host::PluginPath plugin_path() {
    return host::PluginPath({(program_prefix() / "plugin").string()});
}

void working_in_host(const std::function<void()>& work) {
    try {
        work();
    } catch (const host::PluginError& error) {
        throw WorkFailure(error.where, error.why);
    } catch (const host::ScriptError& error) {
        throw WorkFailure(error.where, error.why);
    } catch (const host::OpFailure& failure) {
        throw WorkFailure(failure.node, failure.why);
    }
}

// The class must come from the plug-in, which is loaded when the first node is made.
Node& create_star_node(host::Graph& graph, const std::string& name) {
    Node* node = nullptr;
    working_in_host([&] { node = &graph.create(star_node_class, name); });
    return *node;
}

} // namespace velmora
