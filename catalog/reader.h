// SPDX-License-Identifier: BSD-3-Clause

// One star after the other from any catalogue, whatever its file looks like.
//
// Units:     ra and dec in degrees (J2000), vmag and bv in magnitudes (Johnson), plx and e_plx in
//            milliarcseconds.
// Errors:    throws CatalogError naming the file and what is wrong in it, StrXception when the
//            system refuses.
// Threads:   one reader belongs to one thread at a time.
#pragma once

#include <optional>
#include <string>

namespace velmora {

// The largest distance of a magnitude from 0 whose flux a record's float can hold.
const double largest_magnitude = 90;

// One star as its catalogue has it. Every number is finite.
struct CatalogStar {
    int hip;                          // Hipparcos number, above 0
    double ra;                        // right ascension, [0, 360)
    double dec;                       // declination, [-90, 90]
    double vmag;                      // V, [-largest_magnitude, largest_magnitude]
    std::optional<double> bv;         // B-V
    std::optional<double> plx, e_plx; // parallax, and its standard error, >= 0
    std::string name;                 // may be empty
};

class StarReader {
public:
    StarReader() = default;
    StarReader(const StarReader&) = delete;
    StarReader& operator=(const StarReader&) = delete;
    virtual ~StarReader() = default;

    // Reads the next star; false after the last. After an exception `row` is unspecified.
    virtual bool next(CatalogStar& row) = 0;
};

} // namespace velmora
