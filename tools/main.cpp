// SPDX-License-Identifier: BSD-3-Clause

// The command line: hands the arguments to the commands and turns failures into exit statuses.
#include "text/quoted.h"
#include "tools/commands/commands.h"
#include "tools/commands/help.h"
#include "tools/failure.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <iostream>

using namespace velmora;

static const char* const examples = "Examples:\n"
                                    "  velmora render -o sky.exr\n"
                                    "  velmora render -F 1-100 --camera shot.chan -o sky.####.exr\n"
                                    "  velmora render shot.nk -o sky.####.exr\n"
                                    "  velmora explain --pixel 960,540 shot.nk\n"
                                    "  velmora catalog import stars.csv.gz -o sky.velmora\n"
                                    "  velmora catalog info sky.velmora";

static void run(int argc, char** argv) {
    CLI::App program{"Renders realistic star fields.", "velmora"};
    program.formatter(std::make_shared<ExamplesFirst>());
    program.footer(examples);
    program.set_version_flag("--version", "velmora " VELMORA_VERSION);
    add_render_command(program);
    add_explain_command(program);
    add_catalog_command(program);
    add_script_command(program);
    add_info_command(program);
    if (argc < 2)
        throw UsageFailure("arguments", "name a command: render, explain, catalog, script or info");
    // A misspelt command is named here; the parser would call it an argument not expected.
    const auto named = [&](const CLI::App* command) { return command->get_name() == argv[1]; };
    if (argv[1][0] != '-' && program.get_subcommands(named).empty())
        throw UsageFailure(in_quotes(argv[1], in_full),
                           "unknown command; use render, explain, catalog, script or info");
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != int(CLI::ExitCodes::Success))
            throw UsageFailure("arguments", error.what());
        program.exit(error); // prints the help or the version that was asked for
    }
    // What cannot be written must not pass for success.
    std::cout.flush();
    if (!std::cout || fflush(stdout) == EOF || ferror(stdout))
        throw WorkFailure("standard output", "cannot be written");
}

int main(int argc, char** argv) {
    // A file that outgrows its limit is then a failed write, which is reported.
    signal(SIGXFSZ, SIG_IGN);
    return exit_status_of([&] { run(argc, argv); });
}
