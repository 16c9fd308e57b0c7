// SPDX-License-Identifier: BSD-3-Clause

// Star databases, checked before anything is rendered from them.
#pragma once

#include <cstddef>
#include <string>

namespace velmora {

// How many stars the database at `path` has. Throws WorkFailure when it cannot be read, is shorter
// than a header or carries no magic.
std::size_t stars_in(const std::string& path);

} // namespace velmora
