// SPDX-License-Identifier: BSD-3-Clause

// Any bytes, plain or packed, read as a star table: refused with a CatalogError of one line, or
// stars that a record can hold.
#include "catalog/catalog_error.h"
#include "catalog/database_record.h"
#include "catalog/readers/star_table.h"
#include "catalog/record_maker.h"
#include "fuzz/law.h"
#include "fuzz/memory_file.h"

#include <cmath>
#include <cstring>
#include <memory>
#include <utility>

using namespace velmora;

static void check_lines(std::unique_ptr<SourceFile> file) {
    std::string_view line;
    while (file->next_line(line)) {
        require(line.size() <= SourceFile::longest_line, "lines have a largest length");
        require(line.find('\n') == std::string_view::npos &&
                    line.find('\0') == std::string_view::npos,
                "a line holds neither its end nor a NUL");
    }
}

static void check_star(const CatalogStar& row) {
    require(row.hip > 0, "numbers of stars are above 0");
    require(row.ra >= 0 && row.ra < 360, "ra lies in [0, 360)");
    require(std::abs(row.dec) <= 90, "dec lies in [-90, 90]");

    const star record = record_of(row);
    require(std::isfinite(record.flux) && record.flux > 0, "every star gives light");
    require(std::isfinite(record.distance) && record.distance >= 0, "distances are finite");

    unsigned char bytes[record_size], again[record_size];
    encode_record(record, bytes);
    encode_record(decode_record(bytes), again);
    require(memcmp(bytes, again, record_size) == 0, "a record's bytes come back");
}

static void check_table(std::unique_ptr<SourceFile> file) {
    const bool recognised = StarTable::recognises(file->head());
    StarTable table(std::move(file));
    require(recognised, "what is read as a table is recognised as one");
    CatalogStar row;
    while (table.next(row))
        check_star(row);
}

// Gives the file to `check`; the only way to refuse it is a CatalogError of one line.
static void read(const MemoryFile& bytes, void (*check)(std::unique_ptr<SourceFile>)) {
    try {
        check(std::make_unique<SourceFile>(bytes.path()));
    } catch (const CatalogError& error) {
        require_printable_line(error.what());
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const MemoryFile bytes(data, size);
    read(bytes, check_lines);
    read(bytes, check_table);
    return 0;
}
