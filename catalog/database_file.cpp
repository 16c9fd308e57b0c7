#include "catalog/database_file.h"

#include "catalog/catalog_error.h"
#include "catalog/database_record.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace velmora {

// A pipe would be waited for, a device has no size: both are refused before they are opened.
static void check_kind(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (error)
        throw CatalogError(path, strerror(error.value()));
    if (std::filesystem::is_directory(status))
        throw CatalogError(path, "is a directory, not a star database");
    if (!std::filesystem::is_regular_file(status))
        throw CatalogError(path, "is not a regular file");
}

OSAPI::fd_t open_star_database(const std::string& path) {
    check_kind(path);
    OSAPI::FileDescriptor file(OSAPI::open_can_fail(path.c_str(), OSAPI::OPEN_READ));
    if (!file.is_open())
        throw CatalogError(path, strerror(errno));
    const u64 size = OSAPI::getsize(file.fd);
    if (size < record_size)
        throw CatalogError(path, "is too short for a star database: " + std::to_string(size) +
                                     " bytes, the header alone takes 32");

    const OSAPI::FileMapping header(file.fd, record_size, OSAPI::OPEN_READ);
    if (version_of_header(static_cast<const unsigned char*>(header.data)) == 0)
        throw CatalogError(path, "is not a star database: it begins with neither VELMORA1 nor "
                                 "VELMORA2");
    const OSAPI::fd_t opened = file.fd;
    file.fd = -1;
    return opened;
}

void check_star_database(const std::string& path) {
    const OSAPI::FileDescriptor file(open_star_database(path));
}

} // namespace velmora
