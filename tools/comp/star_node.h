// SPDX-License-Identifier: BSD-3-Clause

// Our node in the stand-in host: where its plug-in is, and how it is made.
//
// Errors:    WorkFailure for a plug-in that is missing or cannot be loaded.
#pragma once

#include "host/runtime/graph.h"
#include "tools/failure.h"

#include <functional>

namespace velmora {

// The class of our node.
extern const char* const star_node_class;

// Its camera input.
const int star_camera_input = 1;

// The format of renders without --format.
extern const DD::Image::Format default_format;

// The folder plugin beside the program's bin folder.
host::PluginPath plugin_path();

// Runs `work` and turns the host's exceptions into WorkFailure.
void working_in_host(const std::function<void()>& work);

// A new node of ours in `graph`.
Node& create_star_node(host::Graph& graph, const std::string& name = "");

} // namespace velmora
