#define XSOURCE "stars"

#include "stars/starfile.h"
#include "core/xception.h"

#include <cstring>

static const uword magic_size = 8;

StarInput::~StarInput() noexcept(false) {}

bool StarInput::is_valid() {
    const star* header = next();
    if (memcmp(header, "VELMORA1", magic_size) == 0)
        return true;
    if (memcmp(header, "VELMORA2", magic_size) != 0)
        return false;
    version2 = 1;
    return true;
}

MMAPStarFile::MMAPStarFile(const char* path) : cursor(nullptr), mapping(path, OSAPI::OPEN_READ) {
    if (mapping.size < magic_size)
        XTHROW("star database file \"%s\" is too short: %lu bytes, the magic alone takes %lu", path,
               mapping.size, magic_size);
    count = u32(mapping.size / sizeof(star));
    cursor = static_cast<const star*>(mapping.data);
}

const star* MMAPStarFile::next() {
    return cursor++;
}

void MMAPStarFile::reset() {
    cursor = static_cast<const star*>(mapping.data);
}

StarInput* op_stars_file_input(const char* path) {
    return new MMAPStarFile(path);
}
