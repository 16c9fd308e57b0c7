// SPDX-License-Identifier: BSD-3-Clause

// The star database file, mapped and read record by record.
//
//     record 0, the header:  offset 0  8 bytes   "VELMORA1" or "VELMORA2", no terminator
//                                   8  24 bytes  reserved, never read
//     records 1 to N, stars: see `star`; N = file size / 32 - 1, bytes after the last whole record
//                            are ignored. Little-endian throughout.
//
// Units:     angles in degrees (J2000 in what our importers write), `flux` linear with magnitude 0
//            at 1 by convention, colours sRGB-encoded, distance in scene units.
// Errors:    a file that cannot be opened or mapped, is not a regular file, is shorter than its
//            magic or has more records than `count` can say throws StrXception. Nothing else about
//            its contents is checked here. Others may shorten the file while it is mapped: what
//            next() returns must then not be touched, and is_valid() throws velmora::StarsLost.
// Ownership: a reader owns its mapping; records are valid while it lives.
// Threads:   one reader belongs to one thread at a time; several readers may share a file.
#pragma once

#include "core/string.h"
#include "core/types.h"
#include "core/xception.h"
#include "osapi/osapi.h"

#include <cstddef>

struct star {
    double ra;  // right ascension, degrees
    double dec; // declination, degrees
    float flux;
    unsigned char red, green, blue;
    unsigned char reserved; // never read
    double distance;        // version 2 only; <= 0 is unknown, that is infinitely far
};

static_assert(sizeof(star) == 32, "a record takes 32 bytes");
static_assert(offsetof(star, ra) == 0 && offsetof(star, dec) == 8 && offsetof(star, flux) == 16 &&
                  offsetof(star, red) == 20 && offsetof(star, green) == 21 &&
                  offsetof(star, blue) == 22 && offsetof(star, distance) == 24,
              "the fields are where the file has them");

// Where star records come from. One render takes the header with is_valid(), each star with next(),
// and calls reset() for the render after it.
// The order of the virtual functions is part of the interface.
class StarInput {
public:
    u32 count;              // records in the source, header included
    unsigned char version2; // 1 once is_valid() has seen "VELMORA2"

    StarInput() : count(0), version2(0) {}
    virtual ~StarInput() noexcept(false); // what releases the records may fail

    // The next record, valid while this input lives. Never checks the end: the caller counts.
    virtual const star* next() = 0;

    // Goes back to the header.
    virtual void reset() = 0;

    // Takes one record. Whether it starts with either magic; sets version2 by it.
    bool is_valid();
};

namespace velmora {

const uword magic_size = 8;
inline constexpr char magic_1[] = "VELMORA1"; // `magic_size` bytes and a terminator
inline constexpr char magic_2[] = "VELMORA2";

// The version, 1 or 2, that the `magic_size` bytes at `bytes` say; 0 for no star database.
int version_of_magic(const void* bytes);

const u64 most_records = 0xffffffff; // of a database, its header included

// The whole records, header included, in a file of `bytes` bytes.
inline u64 records_in(u64 bytes) {
    return bytes / sizeof(star);
}

// Thrown when a star database got shorter while it was read: records that it had are gone.
class StarsLost : public StrXception {
public:
    StarsLost(const char* function, int line);
};

// What has become of a file since it was opened.
enum class SinceOpened {
    unchanged, // or removed, which a mapping survives
    replaced,  // another file has its name; what was mapped is still the old one
    changed,   // somebody wrote to it or cut it
};

} // namespace velmora

// A whole file, mapped read-only for as long as the reader lives.
class MMAPStarFile : public StarInput {
public:
    explicit MMAPStarFile(const char* path);

    const star* next() override;
    void reset() override;

    // Compares the file at the path now with the one that was opened.
    velmora::SinceOpened since_opened() const;

    const star* cursor; // the next record to hand out
    OSAPI::FileMapping mapping;

private:
    struct Opened;
    MMAPStarFile(const char* path, Opened&& opened);

    String path;
    OSAPI::FileStamp stamp; // as the file was opened
};

// Opens the database at `path`; the caller owns the reader. Looks at its length, not its contents.
StarInput* op_stars_file_input(const char* path);
