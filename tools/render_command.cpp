#include "core/number.h"
#include "tools/command.h"
#include "tools/failure.h"
#include "tools/numbers.h"
#include "tools/render.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <memory>

namespace velmora {

static const char* const examples =
    "Examples:\n"
    "  velmora render --look-at 84,-1 --fov 36 --vaperture 13.824 -o orion.exr -o orion.png\n"
    "  velmora render -F 1-100x2 --camera shot.chan --vaperture 13.824 -o sky.####.exr\n"
    "  velmora render --no-camera --knob 'projection=Azimuthal Equidistant' -o dome.png\n"
    "  velmora render -F 1-48 --jobs 2 --camera shot.chan --knob blur_segs=3 -o sky.%04d.exr";

// A list of numbers of the wrong length is the option's fault, not the shot's.
static std::vector<double> numbers_of(const std::string& option, const std::string& text,
                                      std::size_t least, std::size_t most, const char* takes) {
    std::vector<double> numbers;
    if (!parse_numbers(text, numbers) || numbers.size() < least || numbers.size() > most)
        throw UsageFailure(option + " '" + text + "'", std::string("takes ") + takes);
    return numbers;
}

static std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : ",") + word;
    return text;
}

// Checks of a single word: what is wrong with it, or nothing.
static std::string refuse_empty(const std::string& text) {
    return text.empty() ? "is empty" : "";
}

static std::string refuse_other_than_number(const std::string& text) {
    double number;
    return parse_number(text, number) && std::isfinite(number) ? "" : "takes a number";
}

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

template <class Value>
static CLI::Option* add_text(CLI::App& command, const char* name, Value& value, const char* takes,
                             const char* text) {
    return command.add_option(name, value, text)->check(refuse_empty, "")->type_name(takes);
}

template <class Value>
static CLI::Option* add_number(CLI::App& command, const char* name, Value& value,
                               const char* text) {
    return command.add_option(name, value, text)
        ->check(refuse_other_than_number, "")
        ->type_name("NUMBER");
}

static void add_output_options(CLI::App& command, RenderOptions& options) {
    add_text(command, "-F,--frames", options.frames, "FRAMES",
             "5, 1-100, 1-100x2, 10-1, lists of them (default 1)");
    add_text(command, "-o,--out", options.outputs.pictures, "NAME",
             "picture to write, .exr or .png, with #### or %04d for the frame; repeatable")
        ->allow_extra_args(false);
    add_text(command, "--raw", options.outputs.raw, "NAME",
             "also write the floats as in memory: alpha, red, green, blue per pixel");
    command.add_flag("--half", options.outputs.half, "half floats in EXR");
    add_number(command, "--exposure", options.outputs.exposure, "stops by which PNG is brightened");
    add_number(command, "--fps", options.outputs.fps, "frames per second, as EXR says (default 24)")
        ->check(refuse_frame_rate, "");
    command.add_option("--jobs", options.jobs, "frames rendered at a time (default 1)")
        ->check(refuse_jobs, "")
        ->type_name("N");
}

static void add_sky_options(CLI::App& command, RenderOptions& options) {
    add_text(command, "--format", options.format, "WxH", "pixels (default 1920x1080)");
    add_text(command, "--star-file", options.star_file, "NAME",
             "star database (default the bundled one)");
    add_text(command, "--knob", options.knobs, "NAME=VALUE",
             "a knob of the node, as velmora info lists them; repeatable")
        ->allow_extra_args(false);
}

static void add_camera_options(CLI::App& command, RenderOptions& options) {
    CameraOptions& camera = options.camera;
    add_text(command, "--camera", camera.chan_file, "NAME",
             ".chan file: frame tx ty tz rx ry rz [vertical field of view]");
    add_number(command, "--focal", camera.focal, "focal length in mm (default 50)");
    add_number(command, "--haperture", camera.horizontal_aperture,
               "film width in mm (default 24.576)");
    add_number(command, "--vaperture", camera.vertical_aperture,
               "film height in mm (default 18.672)");
    add_number(command, "--fov", camera.fov,
               "horizontal field of view in degrees, instead of --focal");
    command.add_flag_callback(
        "--no-camera", [&camera] { camera.connected = false; },
        "leave the node's camera input open: the film window becomes ±width/height by ±1");

    const auto add_vector = [&](const char* name, std::vector<double>& numbers, const char* takes,
                                const char* text) {
        command
            .add_option_function<std::vector<std::string>>(
                name,
                [name, takes, &numbers](const std::vector<std::string>& words) {
                    numbers = numbers_of(name, joined(words), 3, 3, takes);
                },
                text)
            ->expected(1, 3)
            ->type_name("X,Y,Z");
    };
    add_vector("--translate", camera.translate, "three numbers: x,y,z", "where the camera stands");
    add_vector("--rotate", camera.rotate, "three angles in degrees: x,y,z",
               "how it is turned: degrees, about z first, then x, then y");
    command
        .add_option_function<std::string>(
            "--look-at",
            [&camera](const std::string& text) {
                camera.look_at =
                    numbers_of("--look-at", text, 2, 3,
                               "right ascension and declination in degrees, and a roll");
            },
            "the sky direction at the image's centre, in degrees; north is up, east is left")
        ->type_name("RA,DEC[,ROLL]");
}

void add_render_command(CLI::App& program) {
    CLI::App* command = program.add_subcommand("render", "Render frames of a star database.");
    command->footer(examples);
    const auto options = std::make_shared<RenderOptions>();
    add_output_options(*command, *options);
    add_sky_options(*command, *options);
    add_camera_options(*command, *options);
    command->callback([options] { render(*options); });
}

} // namespace velmora
