// SPDX-License-Identifier: BSD-3-Clause

// The files that a render writes for each frame, by the names' endings.
//
// Errors:    UsageFailure for unusable names, WorkFailure for files that cannot be written.
#pragma once

#include "tools/frames/frame_name.h"
#include "tools/frames/render_frame.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

struct OutputOptions {
    std::vector<std::string> pictures; // names ending in .exr or .png
    std::string raw;                   // name for the raw floats
    bool half = false;                 // EXR in half floats
    std::optional<double> exposure;    // of PNG, in stops
    std::optional<double> fps;         // as EXR says; the comp's own when not given
};

// The files that outputs will write: absolute paths, and the name that each was given as.
typedef std::map<std::string, std::string> OutputPlaces;

// The options for one of several nodes: {node} in names becomes the node's name, and must be there.
OutputOptions outputs_of_node(const OutputOptions& options, const std::string& node, bool several);

class Outputs {
public:
    // Throws where writing any of `frames` would fail: names that are the same for several frames
    // or already `taken`, `inputs` that would be overwritten, missing folders.
    Outputs(const OutputOptions& options, const std::vector<int>& frames,
            const std::vector<std::string>& inputs, OutputPlaces& taken);

    // Writes every file of frame `number`; warns of values that half floats cannot hold.
    void write(const RenderedFrame& frame, int number) const;

private:
    enum class Kind { exr, png, raw };
    struct Output {
        FrameName name;
        Kind kind;
    };

    OutputOptions options;
    std::vector<Output> outputs;

    static Kind kind_of(const std::string& name);
    void add(const std::string& name, Kind kind, const std::vector<int>& frames);
    bool has(Kind kind) const;
    std::string encoded(const RenderedFrame& frame, Kind kind, const std::string& name) const;
};

} // namespace velmora
