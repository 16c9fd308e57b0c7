// SPDX-License-Identifier: BSD-3-Clause
#include "tools/commands/commands.h"
#include "tools/commands/explain.h"
#include "tools/comp/comp_options.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace velmora {

static const char* const examples =
    "Examples:\n"
    "  velmora explain --pixel 960,540 --look-at 84,-1 --fov 36 --vaperture 13.824\n"
    "  velmora explain --pixel 12,700 shot.nk --node Bright -F 20\n"
    "  velmora explain --pixel 960,540 --camera shot.chan -F 7 --save few.velmora";

static bool is_one_of(const std::string& name, const std::vector<std::string>& names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// One option as it would be written again. A value that begins with a minus sign is tied to its name.
static void append_option(const std::string& name, const std::string& value,
                          std::vector<std::string>& words) {
    if (value.empty() || value[0] != '-') {
        words.push_back(name);
        words.push_back(value);
    } else {
        words.push_back(name + "=" + value);
    }
}

// A list in one word or in several comes out as one.
static std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : ",") + word;
    return text;
}

// What was given, without what the render command does not know and what says which stars are drawn.
static std::vector<std::string> render_words(const CLI::App& command) {
    std::vector<std::string> words;
    for (const CLI::Option* const option : command.get_options()) {
        const std::string name = option->get_name();
        if (option->count() == 0 ||
            is_one_of(name, {"--pixel", "--save", "--frames", "--star-file"}))
            continue;
        if (option->get_expected_max() == 0) {
            words.push_back(name);
        } else if (name == "--knob") {
            // A database that is named as a knob is replaced, too.
            for (const std::string& setting : option->results())
                if (setting.compare(0, 9, "starfile=") != 0)
                    append_option(name, setting, words);
        } else if (option->nonpositional()) {
            append_option(name, joined(option->results()), words);
        } else {
            words.push_back(option->results()[0]);
        }
    }
    return words;
}

void add_explain_command(CLI::App& program) {
    CLI::App* command = program.add_subcommand(
        "explain", "Show which stars put light into a pixel, and how much each.");
    command->footer(examples);
    // Shared with the callback, which runs after this returns.
    const auto options = std::make_shared<ExplainOptions>();
    add_text(*command, "--pixel", options->pixel, "X,Y",
             "the pixel, as the viewer counts: x from the left, y from the bottom, both from 0")
        ->required();
    add_text(*command, "-F,--frames", options->frame, "FRAME",
             "the frame (default 1, or the first of the script's range)");
    add_text(*command, "--save", options->save, "NAME",
             "star database to write with just those stars, and a command that renders it");
    command->add_flag("--reference", options->reference,
                      "draw with the plain reading instead of the fast kernels");
    add_text(*command, "script", options->comp.script, "SCRIPT",
             "a saved comp script, .nk, with the VelmoraNK node");
    add_text(*command, "--node", options->comp.node, "NAME", "which of its nodes");
    add_comp_options(*command, options->comp);
    command->callback([options, command] {
        options->render_words = render_words(*command);
        explain(*options);
    });
}

} // namespace velmora
