// The bytes of a file, unpacked where they are packed with gzip: the first two bytes tell.
//
// Shapes:    several gzip members one after the other are one text; zeros may follow the last, as on
//            tapes, and nothing else. Pipes can be read too: nothing is read twice.
// Errors:    UnpackError for what is wrong in the data or when the system does not read them,
//            StrXception when it does not open or close the file, std::bad_alloc. The bytes are all
//            there or it is an error.
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

    // Up to `room` bytes, which is above 0; gives how many, 0 only at the end.
    uword read(char* out, uword room);

private:
    struct Ender {
        void operator()(z_stream_s* stream) const;
    };

    OSAPI::FileDescriptor file;
    std::vector<unsigned char> block;             // as the file has it
    uword begin = 0, end = 0;                     // of the bytes in `block` that are still to go
    std::unique_ptr<z_stream_s, Ender> unpacking; // null for plain bytes
    bool recognised = false, between_members = false;

    bool refill();
    void recognise();
    bool begin_member();
    uword unpack(char* out, uword room);
};

} // namespace velmora
