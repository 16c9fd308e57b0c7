// SPDX-License-Identifier: BSD-3-Clause

// Writing star databases: version 2, brightest star first, the same bytes for the same stars.
//
// Units:     see stars/starfile.h.
// Errors:    throws CatalogError for stars that a database cannot hold, StrXception when the system
//            refuses; see osapi/whole_file.h, also for what is then at `path`.
// Threads:   of several writers of one path, one succeeds and the others fail.
#pragma once

#include "core/types.h"
#include "stars/starfile.h"

#include <string>
#include <vector>

namespace velmora {

// Readers number records in 32 bits, and the header is one of them.
const u64 most_stars = 0xfffffffe;

// Throws CatalogError naming `path` when a database cannot hold that many stars.
void check_star_count(const std::string& path, u64 stars);

// Writes `stars` to the database at `path` in order of decreasing flux, those of equal flux in the
// order given. A number that is not finite is refused, naming the star by its index in `stars`,
// counted from 1; the fields are not checked otherwise. `reserved` is written as 0.
//
// The file appears whole or not at all, see osapi/whole_file.h.
void write_star_database(const std::string& path, std::vector<star> stars);

} // namespace velmora
