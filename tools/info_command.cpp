#include "tools/command.h"
#include "tools/knobs.h"
#include "tools/star_file.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <OpenEXR/OpenEXRConfig.h>
#include <png.h>

namespace velmora {

static void print_info() {
    printf("velmora    " VELMORA_VERSION "\n");
    printf("OpenEXR    " OPENEXR_VERSION_STRING "\n");
    printf("libpng     %s\n", png_get_libpng_ver(nullptr));
    printf("CLI11      " CLI11_VERSION "\n");
    printf("kernels    plain\n");
    printf("star file  %s\n", default_star_file().c_str());

    printf("\n%-16s %-22s %s\n", "knob", "default", "takes");
    const KnobValues defaults;
    for (const KnobDescription& knob : knob_descriptions())
        printf("%-16s %-22s %s\n", knob.name, knob_text(defaults, knob.name).c_str(), knob.takes);
}

void add_info_command(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("info", "Show versions, the default star database and the knobs.");
    command->footer("Examples:\n"
                    "  velmora info");
    command->callback(print_info);
}

} // namespace velmora
