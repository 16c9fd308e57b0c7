// SPDX-License-Identifier: BSD-3-Clause
#include "tools/files/text_file.h"

#include "osapi/osapi.h"
#include "tools/failure.h"

#include <filesystem>

namespace velmora {

static const uword largest_file = uword(1) << 30;
static const uword block_size = 65536;

// Reading a pipe would wait for its writer, and a device may have no end.
static void check_is_regular(const std::string& path) {
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(path, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_directory(status) &&
        !std::filesystem::is_regular_file(status))
        throw WorkFailure(path, "is not a regular file");
}

static void check_size(const std::string& path, uword size) {
    if (size > largest_file)
        throw WorkFailure(path, "is larger than 1 GiB");
}

// Reads until a read returns nothing: a short read is not the end of the file. The size alone is not
// enough, as some file systems report 0 for files that they generate.
static void read_all(OSAPI::fd_t fd, const std::string& path, std::string& text) {
    const uword size = OSAPI::getsize(fd);
    check_size(path, size);
    text.reserve(size);
    char block[block_size];
    while (const sword count = OSAPI::read_short(fd, block, block_size)) {
        text.append(block, uword(count));
        check_size(path, text.size());
    }
    if (text.size() < size)
        throw WorkFailure(path, "became shorter while it was read");
}

std::string read_text_file(const std::string& path) {
    check_is_regular(path);
    std::string text;
    try {
        OSAPI::FileDescriptor file(OSAPI::open(path.c_str(), OSAPI::OPEN_READ));
        read_all(file.fd, path, text);
        file.close(); // not left to the destructor, which would throw past a value being returned
    } catch (const Xception& exception) {
        throw WorkFailure(path, system_reason_of(exception));
    }
    return text;
}

} // namespace velmora
