// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "stars"

#include "stars/starfile.h"
#include "core/xception.h"

#include <cstring>

int velmora::version_of_magic(const void* bytes) {
    if (memcmp(bytes, magic_1, magic_size) == 0)
        return 1;
    return memcmp(bytes, magic_2, magic_size) == 0 ? 2 : 0;
}

StarInput::~StarInput() noexcept(false) {}

bool StarInput::is_valid() {
    char magic[velmora::magic_size];
    if (OSAPI::copy_can_fail(magic, next(), sizeof magic) != sizeof magic)
        throw velmora::StarsLost(__PRETTY_FUNCTION__, __LINE__);
    const int version = velmora::version_of_magic(magic);
    if (version == 2)
        version2 = 1;
    return version != 0;
}

velmora::StarsLost::StarsLost(const char* function, int line)
    : StrXception(XSOURCE, function, line, "star database file got shorter while it was read") {}

// ---- Mapped files ----------------------------------------------------------------------------

struct MMAPStarFile::Opened {
    OSAPI::FileDescriptor file;
    OSAPI::FileStamp stamp;

    explicit Opened(const char* path);
};

// Opening a pipe would wait for a writer, opening some devices does something: neither is opened.
// Another file may have taken the path by the time it is opened, so the type is checked again.
MMAPStarFile::Opened::Opened(const char* path) {
    OSAPI::FileStamp found;
    if (OSAPI::get_stamp_can_fail(path, found) && !found.is_regular)
        XTHROW("star database file \"%s\" is not a regular file", path);
    file.init(OSAPI::open(path, OSAPI::OPEN_READ | OSAPI::OPEN_NOWAIT));
    stamp = OSAPI::get_stamp(file.fd);
    if (!stamp.is_regular)
        XTHROW("star database file \"%s\" is not a regular file", path);
    if (velmora::records_in(stamp.size) > velmora::most_records)
        XTHROW("star database file \"%s\" has %lu records, and at most %lu can be read", path,
               velmora::records_in(stamp.size), velmora::most_records);
}

MMAPStarFile::MMAPStarFile(const char* path) : MMAPStarFile(path, Opened(path)) {}

MMAPStarFile::MMAPStarFile(const char* path, Opened&& opened)
    : cursor(nullptr), mapping(opened.file.fd, opened.stamp.size, OSAPI::OPEN_READ), path(path),
      stamp(opened.stamp) {
    opened.file.close();
    if (mapping.size < velmora::magic_size)
        XTHROW("star database file \"%s\" is too short: %lu bytes, the magic alone takes %lu", path,
               mapping.size, velmora::magic_size);
    count = u32(velmora::records_in(mapping.size));
    cursor = static_cast<const star*>(mapping.data);
}

const star* MMAPStarFile::next() {
    return cursor++;
}

void MMAPStarFile::reset() {
    cursor = static_cast<const star*>(mapping.data);
}

velmora::SinceOpened MMAPStarFile::since_opened() const {
    OSAPI::FileStamp now;
    if (!OSAPI::get_stamp_can_fail(path.str, now))
        return velmora::SinceOpened::unchanged;
    if (!now.is_same_file(stamp))
        return velmora::SinceOpened::replaced;
    return now == stamp ? velmora::SinceOpened::unchanged : velmora::SinceOpened::changed;
}

StarInput* op_stars_file_input(const char* path) {
    return new MMAPStarFile(path);
}
