// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/database_file.h"

#include "catalog/catalog_error.h"
#include "catalog/database_record.h"

#include <cerrno>
#include <filesystem>

namespace velmora {

// Opening a pipe would wait for a writer, and a device has no size: both are refused unopened.
static void check_kind(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (error)
        throw CatalogError(path, OSAPI::error_text(error.value()));
    if (std::filesystem::is_directory(status))
        throw CatalogError(path, "is a directory, not a star database");
    if (!std::filesystem::is_regular_file(status))
        throw CatalogError(path, "is not a regular file");
}

// At least a header, and no more records than a reader can count.
static void check_size(const std::string& path, u64 size) {
    if (size < record_size)
        throw CatalogError(path, "is too short for a star database: " + std::to_string(size) +
                                     " bytes, the header alone takes 32");
    if (records_in(size) > most_records)
        throw CatalogError(path, "has " + std::to_string(records_in(size)) +
                                     " records, and at most " + std::to_string(most_records) +
                                     " can be read");
}

void throw_shortened(const std::string& path) {
    throw CatalogError(path, "got shorter while it was read");
}

OSAPI::fd_t open_star_database(const std::string& path) {
    // The kind of file is checked before it is opened and again after that.
    check_kind(path);
    OSAPI::FileDescriptor file(
        OSAPI::open_can_fail(path.c_str(), OSAPI::OPEN_READ | OSAPI::OPEN_NOWAIT));
    if (!file.is_open())
        throw CatalogError(path, OSAPI::error_text(errno));
    const OSAPI::FileStamp stamp = OSAPI::get_stamp(file.fd);
    if (!stamp.is_regular) // replaced since it was checked
        throw CatalogError(path, "is not a regular file");
    check_size(path, stamp.size);

    // The magic makes it a database.
    unsigned char header[record_size];
    read_star_database(file.fd, path, header, record_size);
    if (version_of_magic(header) == 0)
        throw CatalogError(path, "is not a star database: it begins with neither VELMORA1 nor "
                                 "VELMORA2");
    // Hand the descriptor over to the caller.
    const OSAPI::fd_t opened = file.fd;
    file.fd = -1;
    return opened;
}

void read_star_database(OSAPI::fd_t file, const std::string& path, unsigned char* bytes, uword n) {
    uword got = 0;
    while (got < n) {
        const sword count = OSAPI::read_short(file, reinterpret_cast<char*>(bytes) + got, n - got);
        if (count == 0)
            throw_shortened(path);
        got += uword(count);
    }
}

u64 stars_in_database(const std::string& path) {
    const OSAPI::FileDescriptor file(open_star_database(path));
    const u64 records = records_in(OSAPI::getsize(file.fd));
    if (records == 0)
        throw_shortened(path);
    return records - 1;
}

} // namespace velmora
