// SPDX-License-Identifier: BSD-3-Clause
#include "text/number.h"
#include "tools/commands/commands.h"
#include "tools/commands/render.h"
#include "tools/comp/comp_options.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <memory>

namespace velmora {

static const char* const examples =
    "Examples:\n"
    "  velmora render --look-at 84,-1 --fov 36 --vaperture 13.824 -o orion.exr -o orion.png\n"
    "  velmora render -F 1-100x2 --camera shot.chan --vaperture 13.824 -o sky.####.exr\n"
    "  velmora render shot.nk -F 1-100 -o sky.%04d.exr\n"
    "  velmora render --no-camera --knob 'projection=Azimuthal Equidistant' -o dome.png\n"
    "  velmora render -F 1-48 --jobs 2 --camera shot.chan --knob blur_segs=3 -o sky.%04d.exr";

// Checks of a single word: what is wrong with it, or "".
// A rate that EXR's ratio of two integers can hold.
static std::string refuse_frame_rate(const std::string& text) {
    double number;
    const bool sensible = parse_number(text, number) && number >= 0.001 && number <= 100000;
    return sensible ? "" : "takes a number from 0.001 to 100000";
}

static std::string refuse_jobs(const std::string& text) {
    int number;
    return parse_number(text, number) && number >= 1 && number <= 1024
               ? ""
               : "takes a whole number from 1 to 1024";
}

// What is written and how; add_comp_options has what is drawn.
static void add_output_options(CLI::App& command, RenderOptions& options) {
    add_text(command, "-F,--frames", options.frames, "FRAMES",
             "5, 1-100, 1-100x2, 10-1, lists of them (default 1, or the script's range)");
    add_text(command, "-o,--out", options.outputs.pictures, "NAME",
             "picture to write, .exr or .png, with #### or %04d for the frame and {node} for "
             "the node; repeatable")
        ->allow_extra_args(false);
    add_text(command, "--raw", options.outputs.raw, "NAME",
             "also write the floats as in memory: alpha, red, green, blue per pixel");
    command.add_flag("--half", options.outputs.half, "half floats in EXR");
    add_number(command, "--exposure", options.outputs.exposure, "stops by which PNG is brightened");
    add_number(command, "--fps", options.outputs.fps,
               "frames per second, as EXR says (default 24, or the script's)")
        ->check(refuse_frame_rate, "");
    command.add_flag(
        "--stats", options.stats,
        "report for each frame how many stars were read, kept and drawn, and how long it took");
    command.add_flag("--reference", options.reference,
                     "draw with the plain reading instead of the fast kernels");
    command.add_option("--jobs", options.jobs, "frames rendered at a time (default 1)")
        ->check(refuse_jobs, "")
        ->type_name("N");
}

void add_render_command(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("render", "Render frames of a star database, or of a saved comp.");
    command->footer(examples);
    // Shared with the callback, which runs after this returns.
    const auto options = std::make_shared<RenderOptions>();
    add_output_options(*command, *options);
    add_text(*command, "script", options->comp.script, "SCRIPT",
             "a saved comp script, .nk, whose VelmoraNK nodes are rendered");
    add_text(*command, "--node", options->comp.node, "NAME", "the one node of it to render");
    add_comp_options(*command, options->comp);
    command->callback([options] { render(*options); });
}

} // namespace velmora
