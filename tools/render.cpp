#include "tools/render.h"

#include "stars/setup.h"
#include "tools/failure.h"
#include "tools/frame_range.h"
#include "tools/jobs.h"
#include "tools/notes.h"
#include "tools/progress.h"
#include "tools/star_file.h"

#include <set>

namespace velmora {

// Sets the knobs of --knob and returns their names.
static std::set<std::string> set_given_knobs(const std::vector<std::string>& settings,
                                             KnobValues& knobs) {
    std::set<std::string> given;
    for (const std::string& setting : settings) {
        const std::size_t equals = setting.find('=');
        if (equals == std::string::npos)
            throw UsageFailure("--knob " + setting, "takes NAME=VALUE");
        const std::string name = setting.substr(0, equals);
        if (!given.insert(name).second)
            throw UsageFailure("--knob " + setting, "the knob is given twice");
        set_knob(knobs, name, setting.substr(equals + 1));
    }
    return given;
}

static KnobValues knobs_of(const RenderOptions& options) {
    KnobValues knobs;
    const std::set<std::string> given = set_given_knobs(options.knobs, knobs);
    const auto exclusive = [&](const char* option, bool used, const char* name) {
        if (used && given.count(name))
            throw UsageFailure(option, std::string("says the same as --knob ") + name);
    };
    exclusive("--format", !options.format.empty(), "format");
    exclusive("--star-file", !options.star_file.empty(), "starfile");
    exclusive("--no-camera", !options.camera.connected && options.camera.gives_view(), "transform");

    if (!options.format.empty())
        knobs.format = parse_format(options.format);
    if (!options.star_file.empty())
        knobs.starfile = options.star_file;
    else if (!given.count("starfile"))
        knobs.starfile = default_star_file();
    return knobs;
}

void render(const RenderOptions& options) {
    KnobValues knobs = knobs_of(options);
    const std::vector<int> frames = parse_frame_range(options.frames);
    const Outputs outputs(options.outputs, frames, {knobs.starfile, options.camera.chan_file});
    const Shot shot(options.camera, projection_of_index(knobs.projection));
    if (const auto view = shot.view_without_camera())
        knobs.transform = *view;
    const std::unique_ptr<StarInput> stars =
        knobs.starfile.empty() ? nullptr : open_star_file(knobs.starfile);
    say_notes(knobs, shot);

    const auto render_one = [&](std::size_t i) {
        const auto frame = render_frame(knobs, shot, stars.get(), frames[i]);
        outputs.write(*frame, frames[i], knobs);
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
