// SPDX-License-Identifier: BSD-3-Clause

// The contents of a star database, counted star by star, and what is odd about them.
//
// Units:     see stars/starfile.h; magnitudes are -2.5 log10(flux).
// Shapes:    records are numbered as readers do: the header is 0, the stars are 1 to `stars`.
// Errors:    as in catalog/database_file.h, and CatalogError for a database that is written to
//            while it is read. Odd stars are not errors.
// Threads:   pure functions of the file and their arguments.
#pragma once

#include "core/types.h"

#include <limits>
#include <map>
#include <string>

namespace velmora {

// The range of the finite values added; empty while lowest > highest.
struct ValueRange {
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -std::numeric_limits<double>::infinity();

    bool empty() const { return lowest > highest; }
    void add(double value);
};

// How many records share an oddity, and the number of the first; 0 when there is none.
struct Oddity {
    u64 count = 0;
    u64 first = 0;

    void add(u64 record);
};

struct DatabaseInfo {
    int version = 0;
    u64 stars = 0;
    u64 trailing_bytes = 0; // after the last whole record; readers ignore them

    ValueRange ra, dec, flux;
    ValueRange distance;           // of the stars whose distance is known
    u64 known_distances = 0;       // finite and above 0; none in version 1, which has no distances
    std::map<int, u64> magnitudes; // stars of magnitude [key, key + 1), those of finite flux > 0

    Oddity out_of_order;     // brighter than the star before
    Oddity nan, infinite;    // in any field that readers use
    Oddity ra_outside;       // [0, 360)
    Oddity dec_outside;      // [-90, 90]
    Oddity dark;             // flux <= 0
    Oddity distance_unknown; // <= 0, version 2 only

    bool brightest_first() const { return out_of_order.count == 0; }
};

// Reads the whole database at `path`.
DatabaseInfo inspect_star_database(const std::string& path);

// Formats it as lines of text, each ended by a newline.
std::string describe(const DatabaseInfo& info);

} // namespace velmora
