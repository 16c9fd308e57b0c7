// SPDX-License-Identifier: BSD-3-Clause

// Opening a star database, checked, and reading its bytes.
//
// Errors:    CatalogError naming the file: missing or not readable (with the system's reason), not
//            a regular file, shorter than a header, with more records than readers can count,
//            without the magic, or shorter than when it was opened. StrXception when reading fails.
// Ownership: the caller owns the descriptor.
// Threads:   no shared state; one descriptor belongs to one thread at a time.
#pragma once

#include "osapi/osapi.h"

#include <string>

namespace velmora {

// Opens the database at `path` for reading, positioned after its header.
OSAPI::fd_t open_star_database(const std::string& path);

// Throws the CatalogError about a database that has become shorter since it was opened.
[[noreturn]] void throw_shortened(const std::string& path);

// Reads exactly the next `n` bytes of `file`, the open database at `path`.
void read_star_database(OSAPI::fd_t file, const std::string& path, unsigned char* bytes, uword n);

// Opens and closes the database at `path`; returns how many stars it holds.
u64 stars_in_database(const std::string& path);

} // namespace velmora
