#include "tools/render.h"

#include "stars/setup.h"
#include "tools/failure.h"
#include "tools/frame_attributes.h"
#include "tools/frame_name.h"
#include "tools/frame_range.h"
#include "tools/jobs.h"
#include "tools/numbers.h"
#include "tools/output_file.h"
#include "tools/png_file.h"
#include "tools/progress.h"
#include "tools/star_file.h"

#include <cmath>
#include <filesystem>
#include <set>

namespace velmora {

namespace {

enum class FileKind { exr, png, raw };

struct Output {
    FrameName name;
    FileKind kind;
};

} // namespace

static FileKind kind_of(const std::string& name) {
    const std::string extension = std::filesystem::path(name).extension().string();
    if (extension == ".exr")
        return FileKind::exr;
    if (extension == ".png")
        return FileKind::png;
    throw UsageFailure("output '" + name + "'", "must end in .exr or .png");
}

// Where every frame goes, with all that can be known wrong about it found out now.
static std::vector<Output> checked_outputs(const RenderOptions& options, std::size_t frames) {
    std::vector<Output> outputs;
    for (const std::string& name : options.outputs)
        outputs.push_back({FrameName(name), kind_of(name)});
    if (!options.raw.empty())
        outputs.push_back({FrameName(options.raw), FileKind::raw});
    if (outputs.empty())
        throw UsageFailure("arguments", "no output is named: give -o NAME.exr or NAME.png");

    std::set<std::string> names;
    bool exr = false, png = false;
    for (const Output& output : outputs) {
        const std::string name = output.name.at(0);
        if (frames > 1 && !output.name.has_frame())
            throw UsageFailure("output '" + name + "'", "has no frame number (#### or %04d), and " +
                                                            std::to_string(frames) +
                                                            " frames would overwrite each other");
        if (!names.insert(name).second)
            throw UsageFailure("output '" + name + "'", "is named twice");
        exr = exr || output.kind == FileKind::exr;
        png = png || output.kind == FileKind::png;

        const std::filesystem::path folder = std::filesystem::path(name).parent_path();
        std::error_code ignored;
        if (!folder.empty() && !std::filesystem::is_directory(folder, ignored))
            throw WorkFailure(folder.string(), "there is no such output folder");
    }
    if (options.half && !exr)
        throw UsageFailure("--half", "is for EXR, and no .exr output is named");
    if (options.exposure && !png)
        throw UsageFailure("--exposure", "is for PNG, and no .png output is named");
    return outputs;
}

static KnobValues knobs_of(const RenderOptions& options) {
    KnobValues knobs;
    std::set<std::string> given;
    for (const std::string& setting : options.knobs) {
        const std::size_t equals = setting.find('=');
        if (equals == std::string::npos)
            throw UsageFailure("--knob " + setting, "takes NAME=VALUE");
        const std::string name = setting.substr(0, equals);
        set_knob(knobs, name, setting.substr(equals + 1));
        given.insert(name);
    }

    const auto exclusive = [&](const char* option, const std::string& value, const char* name) {
        if (!value.empty() && given.count(name))
            throw UsageFailure(option, std::string("says the same as --knob ") + name);
    };
    exclusive("--format", options.format, "format");
    exclusive("--star-file", options.star_file, "starfile");
    if (!options.format.empty())
        knobs.format = parse_format(options.format);
    if (!options.star_file.empty())
        knobs.starfile = options.star_file;
    else if (!given.count("starfile"))
        knobs.starfile = default_star_file();

    const bool oriented = !options.camera.translate.empty() || !options.camera.rotate.empty() ||
                          !options.camera.look_at.empty();
    if (!options.camera.connected && oriented && given.count("transform"))
        throw UsageFailure(
            "--no-camera",
            "puts the given view into the transform knob, which --knob sets as well");
    return knobs;
}

// What a user would otherwise only find by wondering at the picture.
static void say_notes(const KnobValues& knobs, const Shot& shot) {
    StarRendererData data;
    shot.set_window(knobs, data);
    if (projection_of_index(knobs.projection) != OP_STARS_PERSPECTIVE) {
        const double disc = 2 / (data.top - data.bottom);
        if (disc < 0.25)
            say("note: the " + std::string(projection_names[std::size_t(knobs.projection)]) +
                " disc takes up " + std::to_string(int(std::lround(disc * knobs.format.height))) +
                " of the image's " + std::to_string(knobs.format.height) +
                " rows with these apertures: --no-camera fits it");
    }
    const double stretch = film_stretch(data, knobs.format.width, knobs.format.height);
    if (std::fabs(stretch - 1) > 0.01) {
        const double fitting = (data.right - data.left) * knobs.format.height / knobs.format.width;
        say("note: the apertures' shape is not the image's, so the sky is stretched: --vaperture " +
            shortest_text(std::round(fitting * 1000) / 1000) + " gives square pixels");
    }
}

static std::string encoded(const RenderedFrame& frame, FileKind kind, const KnobValues& knobs,
                           const RenderOptions& options, u64& clamped) {
    switch (kind) {
    case FileKind::exr:
        return encode_exr(frame.picture(), frame_attributes(knobs, frame, options.fps),
                          options.half, clamped);
    case FileKind::png:
        return encode_png(frame.picture(), options.exposure.value_or(0));
    default:
        return {frame.image.data,
                std::size_t(frame.image.stride) * std::size_t(frame.image.height)};
    }
}

static void write_outputs(const RenderedFrame& frame, int number, const KnobValues& knobs,
                          const RenderOptions& options, const std::vector<Output>& outputs) {
    for (const Output& output : outputs) {
        const std::string name = output.name.at(number);
        u64 clamped = 0;
        write_file(name, encoded(frame, output.kind, knobs, options, clamped));
        if (clamped > 0)
            say("warning: " + name + ": " + std::to_string(clamped) +
                " values beyond what half floats hold were clamped to 65504");
    }
}

void render(const RenderOptions& options) {
    KnobValues knobs = knobs_of(options);
    const std::vector<int> frames = parse_frame_range(options.frames);
    const std::vector<Output> outputs = checked_outputs(options, frames.size());
    const Shot shot(options.camera, knobs);
    const std::unique_ptr<StarInput> stars =
        knobs.starfile.empty() ? nullptr : open_star_file(knobs.starfile);
    say_notes(knobs, shot);

    const auto render_one = [&](std::size_t i) {
        const auto frame = render_frame(knobs, shot, stars.get(), frames[i]);
        write_outputs(*frame, frames[i], knobs, options, outputs);
    };
    if (frames.size() == 1) {
        render_one(0);
        return;
    }

    std::size_t failed;
    {
        Progress progress(frames.size(), stars ? stars->count : 0);
        failed = run_jobs(
            frames.size(), options.jobs, render_one,
            [&](std::size_t i) { return "frame " + std::to_string(frames[i]); },
            [&] { progress.frame_done(); });
    }
    if (failed > 0)
        throw WorkFailure("render", std::to_string(failed) + " of " +
                                        std::to_string(frames.size()) + " frames failed");
}

} // namespace velmora
