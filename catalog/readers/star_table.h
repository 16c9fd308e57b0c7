// SPDX-License-Identifier: BSD-3-Clause

// The format of the bundled star table: a header line, then a line of comma-separated values for
// each star.
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
//            milliarcseconds.
// Shapes:    a field may be in double quotes, with "" for a quote inside; it cannot contain a line
//            end.
// Errors:    throws CatalogError naming the file, the line, the field and what is wrong with it.
// Threads:   one reader belongs to one thread at a time.
#pragma once

#include "catalog/reader.h"
#include "catalog/source_file.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

class StarTable : public StarReader {
public:
    // Whether a file that begins with `head` is meant to be such a table.
    static bool recognises(std::string_view head);

    // Reads the header. REQUIRES: no line of `opened` has been taken.
    explicit StarTable(std::unique_ptr<SourceFile> opened);

    bool next(CatalogStar& row) override;

private:
    const std::unique_ptr<SourceFile> file;
    std::vector<std::string> fields;

    int hip_number() const;
    double number(int column) const;
    std::optional<double> optional_number(int column) const;
    [[noreturn]] void fail_field(int column, const std::string& why) const;
};

} // namespace velmora
