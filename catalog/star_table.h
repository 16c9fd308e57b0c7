// The star table that we bundle: one line of comma-separated values a star, under a header line.
//
//     hip,ra,dec,vmag,bv,plx,e_plx,name
//     32349,101.28716,-16.71612,-1.44,0.009,379.21,1.58,Sirius
//
//     hip    Hipparcos number, above 0          bv     B-V, may be empty
//     ra     right ascension, [0, 360)          plx    parallax, may be empty
//     dec    declination, [-90, 90]             e_plx  its standard error, >= 0, may be empty
//     vmag   V, in ±`largest_magnitude`         name   any text, may be empty
//
// Units:     ra and dec in degrees (J2000), vmag and bv in magnitudes, plx and e_plx in
//            milliarcseconds; distances in parsec.
// Shapes:    a field may stand in double quotes, with "" for a quote inside; it ends with its line.
// Errors:    throws CatalogError naming the file, the line, the field and what is wrong with it.
// Threads:   one reader belongs to one thread at a time.
#pragma once

#include "catalog/source_file.h"
#include "stars/starfile.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

// Brighter or fainter than this is no flux that a record's float can hold.
const double largest_magnitude = 90;

// A parallax whose standard error is this part of it or more tells no distance: the inverse of so
// noisy a number is biased.
const double largest_parallax_error = 0.2;

// One line.
struct TableStar {
    int hip;
    double ra, dec;
    double vmag;
    std::optional<double> bv;
    std::optional<double> plx, e_plx;
    std::string name;
};

class StarTable {
public:
    // Whether a file that begins with `head` means to be such a table.
    static bool recognises(std::string_view head);

    // Takes the header from `file`, of which no line has been taken; `file` must outlive the table.
    explicit StarTable(SourceFile& file);

    // Reads the next star; false behind the last. After an exception `row` is unspecified.
    bool next(TableStar& row);

private:
    SourceFile& file;
    std::vector<std::string> fields;

    int hip_number() const;
    double number(int column) const;
    std::optional<double> optional_number(int column) const;
    [[noreturn]] void fail_field(int column, const std::string& why) const;
};

// 1000 / plx, or 0, which is unknown, without a parallax above 0 that is known well enough. A
// missing error is taken for a small one.
double distance_of_parallax(std::optional<double> plx, std::optional<double> e_plx);

// The star's record: flux from vmag, colour from bv (white without), distance from plx and e_plx.
star record_of(const TableStar& row);

} // namespace velmora
