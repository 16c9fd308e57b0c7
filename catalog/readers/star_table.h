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
    // Whether a file that begins with `head` means to be such a table.
    static bool recognises(std::string_view head);

    // Takes the header from `opened`, of which no line has been taken.
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
