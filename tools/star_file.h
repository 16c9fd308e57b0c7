// Star databases as the tools take them: checked before anything is rendered from them.
#pragma once

#include "stars/starfile.h"

#include <memory>
#include <string>

namespace velmora {

// The database that was made with this program: share/velmora/stars.velmora beside its bin folder.
std::string default_star_file();

// Opens `path`, standing at its header. Throws WorkFailure when it cannot be read, is shorter than a
// header or carries no magic.
std::unique_ptr<StarInput> open_star_file(const std::string& path);

} // namespace velmora
