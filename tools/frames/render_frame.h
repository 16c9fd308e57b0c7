// SPDX-License-Identifier: BSD-3-Clause

// One node rendered through the host, frame by frame.
//
// Shapes:    four floats per pixel, alpha, red, green, blue, rows top first; alpha stays 0.
// Errors:    WorkFailure, UsageFailure for sizes that take the machine's memory, and what the
//            renderer throws.
#pragma once

#include "host/runtime/op_tree.h"
#include "osapi/osapi.h"
#include "tools/comp/view.h"

#include <memory>
#include <vector>

namespace velmora {

// How long the phases of a frame took, in seconds.
struct FrameTimes {
    double setting_up; // the comp's nodes, cameras and the star database
    double drawing;
    double taking_rows;
};

struct RenderedFrame {
    const Node& node;
    double frame;
    View view;
    std::vector<float> pixels;

    FrameTimes times;
};

class NodeRenderer {
public:
    // `where`, "" or "<node>: ", precedes messages about the node's knobs.
    explicit NodeRenderer(Node& node, const std::string& where = "");

    // Every row comes through the node's engine. The star database stays open from frame to frame,
    // and is the same for all frames: WorkFailure when its file is no longer what it was when this
    // was made.
    std::unique_ptr<RenderedFrame> render(double frame);

private:
    Node& node;
    std::string where;
    host::OpTree tree;
    PluginDoors doors;
    std::string failed_file; // the star database that could not be opened: the node reports it
    std::string failure;     // once and then renders black

    const std::string star_file;
    OSAPI::FileStamp stamp = {}; // of star_file at the start
    bool has_stamp;

    DD::Image::Op& validated(double frame);
    void check_same_stars() const;
    void check_star_file(DD::Image::Op& op);
};

} // namespace velmora
