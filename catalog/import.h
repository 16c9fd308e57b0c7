// SPDX-License-Identifier: BSD-3-Clause

// Reading whole catalogues, in any supported format, into the records of one database.
//
// Errors:    throws CatalogError naming the file and what is wrong in it, StrXception when the
//            system refuses; the stars read before that have been added.
// Threads:   pure functions of the files and their arguments.
#pragma once

#include "core/types.h"
#include "stars/starfile.h"

#include <string>
#include <vector>

namespace velmora {

struct ImportedStars {
    std::vector<star> records;
    u64 known_distances = 0;
    u64 known_colors = 0;
};

// Adds the stars of the catalogue at `path` in its order.
void import_catalog(const std::string& path, ImportedStars& stars);

} // namespace velmora
