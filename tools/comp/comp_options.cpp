// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/comp_options.h"

#include "text/number.h"
#include "text/quoted.h"
#include "tools/failure.h"
#include "tools/numbers.h"

#include <cmath>

namespace velmora {

// Lists are checked here rather than by the camera, so that messages name the option.
static std::vector<double> numbers_of(const std::string& option, const std::string& text,
                                      std::size_t least, std::size_t most, const char* takes) {
    std::vector<double> numbers;
    if (!parse_numbers(text, numbers) || numbers.size() < least || numbers.size() > most)
        throw UsageFailure(option + " " + in_quotes(text, in_full), std::string("takes ") + takes);
    return numbers;
}

static std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : ",") + word;
    return text;
}

std::string refuse_empty(const std::string& text) {
    return text.empty() ? "is empty" : "";
}

std::string refuse_other_than_number(const std::string& text) {
    double number;
    return parse_number(text, number) && std::isfinite(number) ? "" : "takes a number";
}

// Options are checked word by word as they are parsed; what excludes what is the comp's to check.
static void add_sky_options(CLI::App& command, CompOptions& options) {
    add_text(command, "--format", options.format, "WxH", "pixels (default 1920x1080)");
    add_text(command, "--star-file", options.star_file, "NAME",
             "star database (default the bundled one)");
    add_text(command, "--knob", options.knobs, "NAME=VALUE",
             "a knob of the node, as velmora info lists them; repeatable")
        ->allow_extra_args(false);
}

// Numbers stay empty when they are not given, so that defaults remain the camera node's.
static void add_camera_options(CLI::App& command, CameraOptions& camera) {
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

    // Three numbers in one word or in three.
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
    add_vector("--translate", camera.translate, "three numbers: x,y,z", "the camera's position");
    add_vector("--rotate", camera.rotate, "three angles in degrees: x,y,z",
               "the camera's rotation: degrees, about z first, then x, then y");
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

void add_comp_options(CLI::App& command, CompOptions& options) {
    add_sky_options(command, options);
    add_camera_options(command, options.camera);
}

} // namespace velmora
