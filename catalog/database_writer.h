// Writes star databases: version 2, brightest star first, the same bytes for the same stars.
//
// Units:     see stars/starfile.h.
// Errors:    throws CatalogError for stars that make no database, StrXception when the system
//            refuses; see osapi/whole_file.h, also for what is then at `path`.
// Threads:   of several writers of one path, one goes on and the others fail.
#pragma once

#include "core/types.h"
#include "stars/starfile.h"

#include <string>
#include <vector>

namespace velmora {

// A reader numbers records in 32 bits, and the header is one of them.
const u64 most_stars = 0xfffffffe;

// Throws CatalogError about `path` when a database cannot hold that many.
void check_star_count(const std::string& path, u64 stars);

// Makes the database at `path` hold `stars` sorted by falling flux, those of equal flux in the
// order given. A number that is not finite is refused, naming the star by its place in `stars`,
// counted from 1; nothing else about the fields is checked. `reserved` is written as 0.
//
// The bytes go to `path` + ".inprogress" and onto the medium before they get their name.
void write_star_database(const std::string& path, std::vector<star> stars);

} // namespace velmora
