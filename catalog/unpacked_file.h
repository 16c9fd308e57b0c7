// SPDX-License-Identifier: BSD-3-Clause

// The bytes of a file, unpacked if its first two bytes say that it is compressed with gzip.
//
// Shapes:    the members of a gzip file are joined into one text; zeros may follow the last, as on
//            tapes, and nothing else. Nothing is read twice, so pipes can be read too.
// Errors:    UnpackError for damaged or incomplete data and when reading fails, StrXception when
//            the file cannot be opened, std::bad_alloc. An end that is not reported is the true
//            end.
// Threads:   one object belongs to one thread at a time.
#pragma once

#include "osapi/osapi.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

struct z_stream_s;

namespace velmora {

class UnpackError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class UnpackedFile {
public:
    explicit UnpackedFile(const std::string& path);

    // Reads up to `room` bytes and returns how many; 0 only at the end. REQUIRES: room > 0.
    uword read(char* out, uword room);

private:
    struct Ender {
        void operator()(z_stream_s* stream) const;
    };

    OSAPI::FileDescriptor file;
    std::vector<unsigned char> block;             // bytes of the file, not unpacked
    uword begin = 0, end = 0;                     // the bytes of `block` that are not used yet
    std::unique_ptr<z_stream_s, Ender> unpacking; // null for a plain file
    bool recognised = false, between_members = false;

    bool refill();
    void recognise();
    bool begin_member();
    uword unpack(char* out, uword room);
};

} // namespace velmora
