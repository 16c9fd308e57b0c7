// SPDX-License-Identifier: BSD-3-Clause
#include "tools/files/program_folder.h"

namespace velmora {

std::filesystem::path program_prefix() {
    // The program itself, whatever name or link it was called by.
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    return program.parent_path().parent_path();
}

std::string default_star_file() {
    return (program_prefix() / "share" / "velmora" / "stars.velmora").string();
}

} // namespace velmora
