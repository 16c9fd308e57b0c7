// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/script_writer.h"
#include "tools/commands/commands.h"
#include "tools/comp/comp_options.h"
#include "tools/comp/comp_script.h"
#include "tools/failure.h"
#include "tools/files/output_file.h"
#include "tools/frames/frame_range.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace velmora {

struct ScriptArguments {
    CompOptions comp;
    std::string frames;
    std::string out;
};

// The script holds the comp that the same options render.
static void write_new_script(const ScriptArguments& arguments) {
    // Check everything before the file is touched.
    const std::vector<int> frames =
        arguments.frames.empty() ? std::vector<int>() : parse_frame_range(arguments.frames);
    const std::unique_ptr<Comp> comp = make_comp(arguments.comp);
    check_output(arguments.out, comp->inputs);
    write_file(arguments.out, host::write_script(script_of(*comp, arguments.comp, frames)));
}

void add_script_command(CLI::App& program) {
    CLI::App* command = program.add_subcommand("script", "Write comp scripts that Nuke opens.");
    command->footer("Examples:\n"
                    "  velmora script new --camera shot.chan --format 1920x1080 -o shot.nk");
    CLI::App* fresh = command->add_subcommand(
        "new", "Write a script with the node, its camera and the knobs that the options set.");
    fresh->footer("Examples:\n"
                  "  velmora script new --camera shot.chan --format 1920x1080 -o shot.nk\n"
                  "  velmora script new -F 1-48 --look-at 84,-1 --fov 36 -o orion.nk");
    const auto arguments = std::make_shared<ScriptArguments>();
    add_text(*fresh, "-o,--out", arguments->out, "NAME", "the script to write")->required();
    add_text(*fresh, "-F,--frames", arguments->frames, "FRAMES",
             "the project's range (default the .chan file's, or 1)");
    add_comp_options(*fresh, arguments->comp);
    fresh->callback([arguments] { write_new_script(*arguments); });
    command->callback([command] {
        if (command->get_subcommands().empty())
            throw UsageFailure("script", "name a command: new");
    });
}

} // namespace velmora
