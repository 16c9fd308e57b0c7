// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/unpacked_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <zlib.h>

namespace velmora {

static const uword block_size = 1 << 16;
static const int gzip_window = 15 + 16; // the largest, and a gzip header

void UnpackedFile::Ender::operator()(z_stream_s* stream) const {
    inflateEnd(stream);
    delete stream;
}

UnpackedFile::UnpackedFile(const std::string& path)
    : file(OSAPI::open(path.c_str(), OSAPI::OPEN_READ)), block(block_size) {}

// Reads more bytes after the unused ones, which move to the front; false at the end of the file.
bool UnpackedFile::refill() {
    std::copy(block.begin() + sword(begin), block.begin() + sword(end), block.begin());
    end -= begin;
    begin = 0;
    const sword count = OSAPI::read_can_fail(file.fd, reinterpret_cast<char*>(block.data()) + end,
                                             block.size() - end);
    if (count == -1)
        throw UnpackError(std::string("reading: ") + OSAPI::error_text(errno));
    end += uword(count);
    return count > 0;
}

// The two bytes with which gzip begins decide; a shorter file is plain.
void UnpackedFile::recognise() {
    while (end - begin < 2 && refill()) {
    }
    if (end - begin < 2 || block[0] != 0x1f || block[1] != 0x8b)
        return;
    auto stream = std::make_unique<z_stream>();
    if (inflateInit2(stream.get(), gzip_window) != Z_OK)
        throw std::bad_alloc();
    unpacking.reset(stream.release());
}

// Skips the zeros after a member, and returns whether another one follows.
bool UnpackedFile::begin_member() {
    bool padded = false;
    do {
        for (; begin < end && block[begin] == 0; begin++)
            padded = true;
    } while (begin == end && refill());
    if (begin == end)
        return false;
    // After zeros nothing else may follow.
    if (padded)
        throw UnpackError("the gzip data are damaged");
    inflateReset(unpacking.get());
    return true;
}

uword UnpackedFile::unpack(char* out, uword room) {
    z_stream& stream = *unpacking;
    stream.next_out = reinterpret_cast<Bytef*>(out);
    stream.avail_out = uInt(room);
    // Until at least one byte has come out.
    while (stream.avail_out == room) {
        if (between_members && !begin_member())
            return 0;
        if (begin == end && !refill())
            throw UnpackError("the gzip data end too early");

        // Unpack what is in the block; zlib says how much it used.
        stream.next_in = block.data() + begin;
        stream.avail_in = uInt(end - begin);
        const int status = inflate(&stream, Z_NO_FLUSH);
        begin = end - stream.avail_in;
        if (status == Z_MEM_ERROR)
            throw std::bad_alloc();
        if (status != Z_OK && status != Z_STREAM_END)
            throw UnpackError("the gzip data are damaged");
        between_members = status == Z_STREAM_END;
    }
    return room - stream.avail_out;
}

uword UnpackedFile::read(char* out, uword room) {
    // The first call finds out what kind of file it is.
    if (!recognised)
        recognise();
    recognised = true;
    if (unpacking)
        return unpack(out, room);
    if (begin == end && !refill())
        return 0;
    // A plain file: hand out what is in the block.
    const uword count = std::min(room, end - begin);
    memcpy(out, block.data() + begin, count);
    begin += count;
    return count;
}

} // namespace velmora
