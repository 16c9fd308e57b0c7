// SPDX-License-Identifier: BSD-3-Clause

// Packs bytes as gzip does.
#pragma once

#include <stdexcept>
#include <string>
#include <zlib.h>

namespace velmora {

inline std::string gzip(const std::string& bytes) {
    z_stream stream = {};
    const int gzip_window = 15 + 16;
    if (deflateInit2(&stream, 9, Z_DEFLATED, gzip_window, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::runtime_error("deflateInit2");
    std::string packed(deflateBound(&stream, bytes.size()), '\0');
    std::string input = bytes;
    stream.next_in = reinterpret_cast<Bytef*>(&input[0]);
    stream.avail_in = uInt(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(&packed[0]);
    stream.avail_out = uInt(packed.size());
    const int status = deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    if (status != Z_STREAM_END)
        throw std::runtime_error("deflate");
    return packed;
}

} // namespace velmora
