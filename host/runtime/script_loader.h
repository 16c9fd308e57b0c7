// SPDX-License-Identifier: BSD-3-Clause

// Loads the nodes of one class from a saved script, with everything upstream of them.
//
// Errors:    ScriptError, with its place, for whatever would make another image than in the host:
//            an unknown class, an input that the class does not accept, an unknown knob, an
//            expression, a camera that is disabled or reads a file. Other nodes are ignored.
// Threads:   main thread only.
#pragma once

#include "host/runtime/graph.h"
#include "host/script/script.h"

#include <string>
#include <vector>

namespace velmora::host {

struct LoadedScript {
    std::vector<Node*> nodes;                 // of the class asked for, in the script's order
    std::vector<std::string> disabled;        // names of disabled ones, which are not loaded
    std::vector<std::string> skipped_classes; // of all other nodes, sorted, without repetitions
};

// Loads all nodes of `class_name` into `graph`, and sets the graph's format, range and rate.
DDImage_API LoadedScript load_script(const Script& script, const std::string& class_name,
                                     Graph& graph);

} // namespace velmora::host
