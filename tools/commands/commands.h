// SPDX-License-Identifier: BSD-3-Clause

// The commands of the command line, each of which adds itself with its options to the program.
//
// Ownership: a command keeps its options alive as long as the program.
// Errors:    nothing is thrown here; the callbacks that do the work throw Failure and Xception.
#pragma once

namespace CLI {
class App;
}

namespace velmora {

void add_render_command(CLI::App& program);
void add_explain_command(CLI::App& program);
void add_catalog_command(CLI::App& program);
void add_script_command(CLI::App& program);
void add_info_command(CLI::App& program);

} // namespace velmora
