// The commands of the command line. Each adds itself with its options to the program; its callback
// does the work and throws Failure or Xception.
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
