// SPDX-License-Identifier: BSD-3-Clause
#include "text/quoted.h"
#include "tools/commands/commands.h"
#include "tools/comp/knobs.h"
#include "tools/comp/plugin_doors.h"
#include "tools/comp/star_node.h"
#include "tools/files/program_folder.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <OpenEXR/OpenEXRConfig.h>
#include <png.h>

namespace velmora {

static void print_info() {
    // Libraries by their own versions, then what the plug-in chose on this machine.
    printf("velmora    " VELMORA_VERSION "\n");
    printf("OpenEXR    " OPENEXR_VERSION_STRING "\n");
    printf("libpng     %s\n", png_get_libpng_ver(nullptr));
    printf("CLI11      " CLI11_VERSION "\n");
    // The knobs are those of a new node in a default comp.
    host::Graph graph(plugin_path());
    graph.set_format(default_format);
    const Node& node = create_star_node(graph);
    printf("kernels    %s\n", PluginDoors(node.description()).kernels().c_str());
    printf("star file  %s\n", printable(default_star_file()).c_str());

    printf("\n%-16s %-22s %s\n", "knob", "default", "takes");
    for (const host::HostKnob* const knob : own_knobs(node))
        printf("%-16s %-22s %s\n", knob->name().c_str(), printable(knob_text(*knob, 1)).c_str(),
               takes_of(*knob).c_str());
}

void add_info_command(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("info", "Show versions, the default star database and the knobs.");
    command->footer("Examples:\n"
                    "  velmora info");
    command->callback(print_info);
}

} // namespace velmora
