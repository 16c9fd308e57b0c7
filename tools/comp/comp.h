// SPDX-License-Identifier: BSD-3-Clause

// What a command renders: a comp made from options, or read from a saved script.
//
// Ownership: a Comp owns its graph, and the graph its nodes.
// Errors:    UsageFailure for options that contradict each other, WorkFailure for files that cannot
//            be read.
#pragma once

#include "host/runtime/graph.h"
#include "tools/comp/camera.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora {

struct CompOptions {
    std::string script; // a saved script; empty for a comp from what else is given
    std::string node;   // of the script; empty for every one of ours
    std::string format;
    std::string star_file;
    std::vector<std::string> knobs; // NAME=VALUE, for every node that is rendered
    CameraOptions camera;
};

struct Comp {
    host::Graph graph;
    std::vector<Node*> stars;        // the nodes to render
    std::vector<std::string> inputs; // the files that rendering them reads
    std::vector<std::string> notes;  // to report before rendering

    Comp();
};

std::unique_ptr<Comp> make_comp(const CompOptions& options);

} // namespace velmora
