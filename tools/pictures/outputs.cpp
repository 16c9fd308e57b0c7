// SPDX-License-Identifier: BSD-3-Clause
#include "tools/pictures/outputs.h"

#include "osapi/temporary_file.h"
#include "text/quoted.h"
#include "tools/failure.h"
#include "tools/files/output_file.h"
#include "tools/pictures/frame_attributes.h"
#include "tools/pictures/png_file.h"
#include "tools/say.h"

#include <algorithm>
#include <filesystem>

namespace velmora {

namespace fs = std::filesystem;

static std::string named(const std::string& name) {
    return "output " + in_quotes(name, in_full);
}

// The ending decides.
Outputs::Kind Outputs::kind_of(const std::string& name) {
    const std::string extension = fs::path(name).extension().string();
    if (extension == ".exr")
        return Kind::exr;
    if (extension == ".png")
        return Kind::png;
    throw UsageFailure(named(name), "must end in .exr or .png");
}

void Outputs::add(const std::string& name, Kind kind, const std::vector<int>& frames) {
    const Output output = {FrameName(name), kind};
    if (frames.size() > 1 && !output.name.has_frame())
        throw UsageFailure(named(name), "has no frame number (#### or %04d), and " +
                                            std::to_string(frames.size()) +
                                            " frames would overwrite each other");
    outputs.push_back(output);
}

bool Outputs::has(Kind kind) const {
    return std::any_of(outputs.begin(), outputs.end(),
                       [kind](const Output& output) { return output.kind == kind; });
}

// Neither a path nor a place for a frame number.
static bool is_plain(const std::string& node) {
    return node.find_first_of("/#%") == std::string::npos;
}

static std::string name_of_node(const std::string& pattern, const std::string& node, bool several) {
    const std::string place = "{node}";
    if (pattern.find(place) != std::string::npos && !is_plain(node))
        throw UsageFailure(named(pattern), "the name of the node " + in_quotes(node, in_full) +
                                               " cannot be part of a file's");
    if (several && pattern.find(place) == std::string::npos)
        throw UsageFailure(named(pattern), "has no {node}, and several nodes would overwrite each "
                                           "other: --node renders one of them");
    std::string name = pattern;
    for (std::size_t at = name.find(place); at != std::string::npos;
         at = name.find(place, at + node.size()))
        name.replace(at, place.size(), node);
    return name;
}

OutputOptions outputs_of_node(const OutputOptions& options, const std::string& node, bool several) {
    OutputOptions named = options;
    for (std::string& picture : named.pictures)
        picture = name_of_node(picture, node, several);
    if (!named.raw.empty())
        named.raw = name_of_node(named.raw, node, several);
    return named;
}

// The path that a file of that name gets. A link there is replaced, so only its folder's links are
// followed.
static fs::path place_of(const std::string& name) {
    std::error_code error;
    const fs::path path = fs::absolute(name, error);
    const fs::path folder = error ? path : fs::canonical(path.parent_path(), error);
    if (error)
        throw WorkFailure(name, error.message());
    return folder / path.filename();
}

// Adds the place of `name` to those `taken`, which neither it nor its temporary file may be.
static void take_place(const std::string& name, OutputPlaces& taken) {
    const auto refuse_temporary = [](const std::string& output) {
        throw UsageFailure(named(output), "is written to " + temporary_name_of(output) +
                                              " first, which is another output");
    };
    const std::string place = place_of(name).string();
    // The same file.
    if (taken.count(place))
        throw UsageFailure(named(name), "is named twice");
    // The temporary file of this is another output.
    if (taken.count(temporary_name_of(place)))
        refuse_temporary(name);
    // This is the temporary file of another output.
    const std::size_t suffix = temporary_name_of("").size();
    const auto other = taken.find(place.substr(0, place.size() - std::min(place.size(), suffix)));
    if (other != taken.end() && temporary_name_of(other->first) == place)
        refuse_temporary(other->second);
    taken[place] = name;
}

Outputs::Outputs(const OutputOptions& options, const std::vector<int>& frames,
                 const std::vector<std::string>& inputs, OutputPlaces& taken)
    : options(options) {
    // The names by themselves.
    for (const std::string& name : options.pictures)
        add(name, kind_of(name), frames);
    if (!options.raw.empty())
        add(options.raw, Kind::raw, frames);
    if (outputs.empty())
        throw UsageFailure("arguments", "no output is named: give -o NAME.exr or NAME.png");
    // Options for kinds of file that are not written are mistakes.
    if (options.half && !has(Kind::exr))
        throw UsageFailure("--half", "is for EXR, and no .exr output is named");
    if (options.exposure && !has(Kind::png))
        throw UsageFailure("--exposure", "is for PNG, and no .png output is named");

    // The files of every frame, beside each other and beside the inputs.
    for (const int frame : frames) {
        for (const Output& output : outputs) {
            const std::string name = output.name.at(frame);
            check_output(name, inputs);
            take_place(name, taken);
        }
    }
}

static FloatPicture picture_of(const RenderedFrame& frame) {
    return {frame.view.width, frame.view.height, frame.pixels.data()};
}

std::string Outputs::encoded(const RenderedFrame& frame, Kind kind, const std::string& name) const {
    if (kind == Kind::png)
        return encode_png(picture_of(frame), options.exposure.value_or(0));
    if (kind == Kind::raw)
        return {reinterpret_cast<const char*>(frame.pixels.data()),
                frame.pixels.size() * sizeof(float)};

    u64 clamped = 0;
    std::string bytes =
        encode_exr(picture_of(frame), frame_attributes(frame, options.fps.value_or(24)),
                   options.half, clamped);
    if (clamped > 0)
        say("warning: " + name + ": " + std::to_string(clamped) +
            " values beyond what half floats hold were clamped to 65504");
    return bytes;
}

void Outputs::write(const RenderedFrame& frame, int number) const {
    for (const Output& output : outputs) {
        const std::string name = output.name.at(number);
        write_file(name, encoded(frame, output.kind, name));
    }
}

} // namespace velmora
