// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/database_info.h"
#include "catalog/catalog_error.h"
#include "catalog/database_file.h"
#include "catalog/database_record.h"
#include "catalog/photometry.h"
#include "core/string.h"
#include "osapi/osapi.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace velmora {

void ValueRange::add(double value) {
    if (!std::isfinite(value))
        return;
    lowest = std::min(lowest, value);
    highest = std::max(highest, value);
}

void Oddity::add(u64 record) {
    if (count++ == 0)
        first = record;
}

// A flux is a float, so magnitude 6 may come back as 5.99999998: a magnitude this close below a
// whole one counts as that.
static const double magnitude_slack = 1e-6;

static int whole_magnitude(double flux) {
    return int(std::floor(magnitude_of_flux(flux) + magnitude_slack));
}

// Only a finite distance above 0 is known.
static void add_distance(DatabaseInfo& info, u64 number, double distance) {
    if (distance <= 0)
        info.distance_unknown.add(number);
    if (!(distance > 0) || std::isinf(distance))
        return;
    info.known_distances++;
    info.distance.add(distance);
}

// Counts what readers accept but a catalogue should not contain.
static void add_oddities(DatabaseInfo& info, u64 number, const star& record) {
    // Version 1 has no distances: whatever is in their bytes is not odd.
    const double distance = info.version == 2 ? record.distance : 0;
    if (std::isnan(record.ra) || std::isnan(record.dec) || std::isnan(record.flux) ||
        std::isnan(distance))
        info.nan.add(number);
    if (std::isinf(record.ra) || std::isinf(record.dec) || std::isinf(record.flux) ||
        std::isinf(distance))
        info.infinite.add(number);
    if (record.ra < 0 || record.ra >= 360)
        info.ra_outside.add(number);
    if (record.dec < -90 || record.dec > 90)
        info.dec_outside.add(number);
    if (record.flux <= 0)
        info.dark.add(number);
}

static void add_star(DatabaseInfo& info, u64 number, const star& record) {
    info.ra.add(record.ra);
    info.dec.add(record.dec);
    info.flux.add(record.flux);
    if (record.flux > 0 && std::isfinite(record.flux))
        info.magnitudes[whole_magnitude(record.flux)]++;
    if (info.version == 2)
        add_distance(info, number, record.distance);
    add_oddities(info, number, record);
}

namespace {

// Adds stars in file order; remembers the flux before, of stars whose flux is a number.
class Inspection {
public:
    DatabaseInfo info;

    void add(const star& record) {
        add_star(info, ++number, record);
        if (record.flux > flux_before)
            info.out_of_order.add(number);
        if (!std::isnan(record.flux))
            flux_before = record.flux;
    }

private:
    u64 number = 0;
    float flux_before = std::numeric_limits<float>::infinity();
};

} // namespace

// Reads the stars, a block of records at a time.
static void add_stars(Inspection& inspection, OSAPI::fd_t file, const std::string& path) {
    std::vector<unsigned char> block(record_size * 4096);
    for (u64 left = inspection.info.stars; left > 0;) {
        const u64 count = std::min<u64>(left, block.size() / record_size);
        read_star_database(file, path, block.data(), count * record_size);
        for (u64 i = 0; i < count; i++)
            inspection.add(decode_record(&block[i * record_size]));
        left -= count;
    }
}

// By reading, not mapping: if another process shortens the file, reading only returns less.
DatabaseInfo inspect_star_database(const std::string& path) {
    OSAPI::FileDescriptor file(open_star_database(path));
    const OSAPI::FileStamp stamp = OSAPI::get_stamp(file.fd);
    if (stamp.size < record_size)
        throw_shortened(path);
    unsigned char header[record_size];
    OSAPI::lseek(file.fd, 0, SEEK_SET);
    read_star_database(file.fd, path, header, record_size);

    // Version and size from the header and the file.
    Inspection inspection;
    DatabaseInfo& info = inspection.info;
    info.version = version_of_magic(header);
    info.stars = records_in(stamp.size) - 1;
    info.trailing_bytes = stamp.size % record_size;
    add_stars(inspection, file.fd, path);

    // The counts are those of no file if it has changed meanwhile.
    if (OSAPI::get_stamp(file.fd) != stamp)
        throw CatalogError(path, "was written to while it was read");
    file.close();
    return info;
}

// ---- Text ------------------------------------------------------------------------------------

[[gnu::format(printf, 1, 2)]] static std::string format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const String text = String::vfmt(format, args);
    va_end(args);
    return text.str;
}

static std::string range_text(const ValueRange& range) {
    return range.empty() ? "none" : format("%g to %g", range.lowest, range.highest);
}

// One line for each whole magnitude that has stars.
static std::string magnitude_table(const DatabaseInfo& info) {
    std::string text = "magnitude        stars\n";
    for (const auto& [magnitude, stars] : info.magnitudes)
        text += format("%4d to %-4d %10llu\n", magnitude, magnitude + 1,
                       static_cast<unsigned long long>(stars));
    return text;
}

// Empty without an oddity, so that an ordinary database shows none.
static std::string oddity_text(const char* what, const Oddity& oddity) {
    if (oddity.count == 0)
        return "";
    return format("odd        %s: %llu, first in record %llu\n", what,
                  static_cast<unsigned long long>(oddity.count),
                  static_cast<unsigned long long>(oddity.first));
}

std::string describe(const DatabaseInfo& info) {
    std::string text;
    text += format("version    %d\n", info.version);
    text += "stars      " + std::to_string(info.stars) + "\n";
    text += "ra         " + range_text(info.ra) + "\n";
    text += "dec        " + range_text(info.dec) + "\n";
    text += "flux       " + range_text(info.flux) + "\n";
    text += "distance   " + range_text(info.distance) + ", known for " +
            std::to_string(info.known_distances) + "\n";
    text += std::string("order      ") +
            (info.brightest_first() ? "brightest first\n" : "not brightest first\n");
    if (!info.magnitudes.empty())
        text += magnitude_table(info);

    // The oddities, only where there are any.
    text += oddity_text("brighter than the star before", info.out_of_order);
    text += oddity_text("a number that is NaN", info.nan);
    text += oddity_text("a number that is infinite", info.infinite);
    text += oddity_text("ra outside [0, 360)", info.ra_outside);
    text += oddity_text("dec outside [-90, 90]", info.dec_outside);
    text += oddity_text("flux not above 0", info.dark);
    text += oddity_text("distance unknown", info.distance_unknown);
    if (info.trailing_bytes > 0)
        text +=
            "odd        bytes after the last record: " + std::to_string(info.trailing_bytes) + "\n";
    return text;
}

} // namespace velmora
