// Whether a file is a star database, asked before it is mapped.
//
// Errors:    CatalogError naming the file: missing or not readable (with the system's reason), not
//            a regular file, shorter than a header, or without the magic.
#pragma once

#include "osapi/osapi.h"

#include <string>

namespace velmora {

// Opens the database at `path` for reading; the caller owns the descriptor.
OSAPI::fd_t open_star_database(const std::string& path);

// The same, and leaves it closed.
void check_star_database(const std::string& path);

} // namespace velmora
