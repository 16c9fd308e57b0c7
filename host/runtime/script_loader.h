// From a saved script to a comp: the nodes of one class, and all that feeds them.
//
// Errors:    ScriptError with the place of whatever would make another picture than the host does:
//            a class that no plug-in has, an input that the class does not take, a knob that it
//            does not have, an expression, a camera that is off or reads a file. Nothing is loaded
//            of nodes that do not feed one of the class.
// Threads:   main thread only.
#pragma once

#include "host/runtime/graph.h"
#include "host/script/script.h"

#include <string>
#include <vector>

namespace velmora::host {

struct LoadedScript {
    std::vector<Node*> nodes;                 // of the class asked for, in the script's order
    std::vector<std::string> disabled;        // names of those that are off, which are not loaded
    std::vector<std::string> skipped_classes; // of nodes that feed none of them, each once, sorted
};

// Loads all nodes of `class_name` into `graph`, which takes on the script's format and range.
DDImage_API LoadedScript load_script(const Script& script, const std::string& class_name,
                                     Graph& graph);

} // namespace velmora::host
