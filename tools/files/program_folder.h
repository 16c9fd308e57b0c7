// SPDX-License-Identifier: BSD-3-Clause

// Where the program is installed, and what lies there with it.
#pragma once

#include <filesystem>
#include <string>

namespace velmora {

// The folder that holds the program's bin folder.
std::filesystem::path program_prefix();

// The database that was made with this program: share/velmora/stars.velmora below the prefix.
std::string default_star_file();

} // namespace velmora
