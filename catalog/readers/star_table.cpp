// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/readers/star_table.h"

#include "text/number.h"
#include "text/quoted.h"

#include <cmath>
#include <utility>

namespace velmora {

static const std::string_view header = "hip,ra,dec,vmag,bv,plx,e_plx,name";
static const std::string_view header_start = "hip,ra,dec,"; // recognises a table, even a faulty one

// The columns, in the header's order.
enum { HIP, RA, DEC, VMAG, BV, PLX, E_PLX, NAME, COLUMN_COUNT };
static const char* const column_names[COLUMN_COUNT] = {"hip", "ra",  "dec",   "vmag",
                                                       "bv",  "plx", "e_plx", "name"};

// Moves the quoted field at the start of `rest` to `field`, unquoted; false without its end.
static bool take_quoted(std::string_view& rest, std::string& field) {
    // Up to a quote that is not doubled.
    rest.remove_prefix(1);
    for (;;) {
        const uword quote = rest.find('"');
        if (quote == std::string_view::npos)
            return false;
        field += rest.substr(0, quote);
        rest.remove_prefix(quote + 1);
        if (rest.empty() || rest[0] != '"')
            return true;
        field += '"';
        rest.remove_prefix(1);
    }
}

// Splits a line at its commas; returns what is wrong with it, or null.
static const char* split(std::string_view rest, std::vector<std::string>& fields) {
    // A field, quoted or up to the next comma, until a field ends the line.
    fields.clear();
    for (;;) {
        std::string& field = fields.emplace_back();
        if (!rest.empty() && rest[0] == '"') {
            if (!take_quoted(rest, field))
                return "a quoted field does not end";
            if (!rest.empty() && rest[0] != ',')
                return "text follows a quoted field";
        } else {
            field = rest.substr(0, rest.find(','));
            rest.remove_prefix(field.size());
        }
        if (rest.empty())
            return nullptr;
        rest.remove_prefix(1);
    }
}

bool StarTable::recognises(std::string_view head) {
    return head.substr(0, header_start.size()) == header_start;
}

StarTable::StarTable(std::unique_ptr<SourceFile> opened) : file(std::move(opened)) {
    std::string_view line;
    if (!file->next_line(line))
        file->fail("the file is empty");
    if (line != header)
        file->fail_line("the header is " + in_quotes(line) + " instead of " + in_quotes(header));
}

bool StarTable::next(CatalogStar& row) {
    // A line, split into exactly as many fields as there are columns.
    std::string_view line;
    if (!file->next_line(line))
        return false;
    if (const char* wrong = split(line, fields))
        file->fail_line(wrong);
    if (fields.size() != COLUMN_COUNT)
        file->fail_line("the number of columns is " + std::to_string(fields.size()) +
                        " instead of " + std::to_string(COLUMN_COUNT));

    // Each field checked in the order of the columns, so that the first wrong one is reported.
    row.hip = hip_number();
    row.ra = number(RA);
    if (row.ra < 0 || row.ra >= 360)
        fail_field(RA, "lies outside [0, 360)");
    row.dec = number(DEC);
    if (std::abs(row.dec) > 90)
        fail_field(DEC, "lies outside [-90, 90]");
    row.vmag = number(VMAG);
    if (std::abs(row.vmag) > largest_magnitude)
        fail_field(VMAG, "lies outside [-90, 90]");
    row.bv = optional_number(BV);
    row.plx = optional_number(PLX);
    row.e_plx = optional_number(E_PLX);
    if (row.e_plx && *row.e_plx < 0)
        fail_field(E_PLX, "is negative");
    row.name = fields[NAME];
    return true;
}

// Shows the field as it is in the file, so that it can be searched for.
void StarTable::fail_field(int column, const std::string& why) const {
    file->fail_line(std::string(column_names[column]) + " " + in_quotes(fields[column]) + " " +
                    why);
}

int StarTable::hip_number() const {
    int hip = 0;
    if (!parse_number(fields[HIP], hip) || hip < 1)
        fail_field(HIP, "is not a whole number above 0");
    return hip;
}

// A catalogue has gaps but no infinities: a missing, malformed or infinite number is an error.
double StarTable::number(int column) const {
    double value = 0;
    if (fields[column].empty())
        file->fail_line(std::string(column_names[column]) + " is missing");
    if (!parse_number(fields[column], value))
        fail_field(column, "is not a number");
    if (!std::isfinite(value))
        fail_field(column, "is not finite");
    return value;
}

std::optional<double> StarTable::optional_number(int column) const {
    if (fields[column].empty())
        return std::nullopt;
    return number(column);
}

} // namespace velmora
