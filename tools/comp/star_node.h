// Where the command line finds the node: the plug-in beside the program, and a comp to put it in.
//
// Errors:    WorkFailure for a plug-in that is not there or cannot be loaded.
#pragma once

#include "host/runtime/graph.h"
#include "tools/failure.h"

#include <functional>

namespace velmora {

// The class of our node.
extern const char* const star_node_class;

// Its camera input.
const int star_camera_input = 1;

// The format of renders that name none.
extern const DD::Image::Format default_format;

// The folder plugin beside the program's bin folder.
host::PluginPath plugin_path();

// Runs `work` in the host; what the host throws becomes a failure of one line.
void working_in_host(const std::function<void()>& work);

// A new node of ours in `graph`.
Node& create_star_node(host::Graph& graph, const std::string& name = "");

} // namespace velmora
