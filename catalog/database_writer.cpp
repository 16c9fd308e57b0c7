// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/database_writer.h"
#include "catalog/catalog_error.h"
#include "catalog/database_record.h"
#include "osapi/whole_file.h"

#include <algorithm>
#include <cmath>

namespace velmora {

void check_star_count(const std::string& path, u64 stars) {
    if (stars > most_stars)
        throw CatalogError(path, std::to_string(stars) + " stars are too many: a database holds " +
                                     std::to_string(most_stars));
}

// The name of the first field that is infinite or NaN, or null.
static const char* field_that_is_not_finite(const star& record) {
    if (!std::isfinite(record.ra))
        return "ra";
    if (!std::isfinite(record.dec))
        return "dec";
    if (!std::isfinite(record.flux))
        return "flux";
    return std::isfinite(record.distance) ? nullptr : "distance";
}

static void check_fields(const std::string& path, const std::vector<star>& stars) {
    for (uword i = 0; i < stars.size(); i++)
        if (const char* field = field_that_is_not_finite(stars[i]))
            throw CatalogError(path, std::string(field) + " of star " + std::to_string(i + 1) +
                                         " is not finite");
}

// The header and the records, in blocks large enough to make few calls.
static void write_records(OSAPI::fd_t fd, const std::vector<star>& stars) {
    const uword block_size = 4096 * record_size;
    std::vector<unsigned char> block(record_size);
    encode_header(block.data());
    for (const star& record : stars) {
        block.resize(block.size() + record_size);
        encode_record(record, &block[block.size() - record_size]);
        // A full block goes out; the rest follows after the last star.
        if (block.size() == block_size) {
            OSAPI::write(fd, reinterpret_cast<const char*>(block.data()), block.size());
            block.clear();
        }
    }
    OSAPI::write(fd, reinterpret_cast<const char*>(block.data()), block.size());
}

void write_star_database(const std::string& path, std::vector<star> stars) {
    // Check everything before the first byte is written, then sort; stable, so that the same stars
    // always give the same file.
    check_star_count(path, stars.size());
    check_fields(path, stars);
    std::stable_sort(stars.begin(), stars.end(),
                     [](const star& a, const star& b) { return a.flux > b.flux; });

    write_whole_file(path.c_str(), [&](OSAPI::fd_t fd) { write_records(fd, stars); });
}

} // namespace velmora
