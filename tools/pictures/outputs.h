// The files that a render writes for each frame, by the names' endings.
//
// Errors:    UsageFailure for names that do not serve, WorkFailure for places that cannot be
//            written.
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
    std::string raw;                   // name for the floats as they stand in memory
    bool half = false;                 // EXR in half floats
    std::optional<double> exposure;    // of PNG, in stops
    std::optional<double> fps;         // as EXR says; the comp's own when not given
};

// The places that outputs are going to take up, with the name that each was given.
typedef std::map<std::string, std::string> OutputPlaces;

// The options for one of several nodes: {node} in names becomes the node's name, and must be there.
OutputOptions outputs_of_node(const OutputOptions& options, const std::string& node, bool several);

class Outputs {
public:
    // Finds out now what would go wrong for any of `frames`: names that do not differ from frame to
    // frame or from what is `taken`, `inputs` that would be overwritten, folders that are not
    // there.
    Outputs(const OutputOptions& options, const std::vector<int>& frames,
            const std::vector<std::string>& inputs, OutputPlaces& taken);

    // Writes every file of frame `number`; says how much half floats could not hold.
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
