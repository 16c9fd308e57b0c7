// Whether a file is a star database, and its bytes.
//
// Errors:    CatalogError naming the file: missing or not readable (with the system's reason), not
//            a regular file, shorter than a header, with more records than readers can count, or
//            without the magic; or shorter than when it was opened.
#pragma once

#include "osapi/osapi.h"

#include <string>

namespace velmora {

// Opens the database at `path` for reading, after its header; the caller owns the descriptor.
OSAPI::fd_t open_star_database(const std::string& path);

// Throws the CatalogError about a database from which bytes have gone since it was opened.
[[noreturn]] void throw_shortened(const std::string& path);

// Reads the next `n` bytes, all of them, of the database at `path`, which is open as `file`.
void read_star_database(OSAPI::fd_t file, const std::string& path, unsigned char* bytes, uword n);

// Opens and closes the database at `path`; returns how many stars it holds.
u64 stars_in_database(const std::string& path);

} // namespace velmora
