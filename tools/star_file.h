// Star databases as the tools take them: checked before anything is rendered from them.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace velmora {

// The folder that the program's bin folder stands in.
std::filesystem::path program_prefix();

// The database that was made with this program: share/velmora/stars.velmora beside its bin folder.
std::string default_star_file();

// How many stars the database at `path` has. Throws WorkFailure when it cannot be read, is shorter
// than a header or carries no magic.
std::size_t stars_in(const std::string& path);

} // namespace velmora
