// SPDX-License-Identifier: BSD-3-Clause
#include "text/quoted.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace velmora {

static const std::size_t escape_length = 4; // \xHH

namespace {

struct CodePoints {
    std::uint32_t first, last;
};

} // namespace

// The characters that must not reach a terminal, as the header lists them.
static const CodePoints hidden[] = {
    {0x0000, 0x001f}, {0x007f, 0x009f}, {0x061c, 0x061c}, {0x200b, 0x200b}, {0x200e, 0x200f},
    {0x2028, 0x202e}, {0x2060, 0x206f}, {0xfeff, 0xfeff}, {0xfff9, 0xfffb}, {0xe0000, 0xe007f},
};

// Whether a byte continues a character: 10xxxxxx.
static bool is_continuation(char ch) {
    return (static_cast<unsigned char>(ch) & 0xc0) == 0x80;
}

// The length of a character by its first byte; 0 for a byte that begins no character. 0xc0 and 0xc1
// could only begin overlong forms, 0xf5 and above would lie beyond U+10FFFF.
static std::size_t length_by_first(unsigned char byte) {
    if (byte < 0x80)
        return 1;
    if (byte < 0xc2 || byte > 0xf4)
        return 0;
    return byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : 4;
}

// Decodes the first character of `text`. Returns its length, or 0 if it is not valid UTF-8.
static std::size_t decode(std::string_view text, std::uint32_t& code) {
    static const std::uint32_t least[] = {0, 0, 0x80, 0x800,
                                          0x10000}; // by length; below is overlong
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = length_by_first(first);
    if (length == 0 || text.size() < length)
        return 0;
    // The first byte's low bits, then six from each byte after it.
    code = length == 1 ? first : first & (0x7fu >> length);
    for (std::size_t k = 1; k < length; k++) {
        if (!is_continuation(text[k]))
            return 0;
        code = code << 6 | (static_cast<unsigned char>(text[k]) & 0x3f);
    }
    // What has a shorter form, or is no character at all, is not valid.
    const bool is_surrogate = code >= 0xd800 && code <= 0xdfff;
    return code < least[length] || is_surrogate || code > 0x10ffff ? 0 : length;
}

// The length of the first character of `text`, or 0 if its first byte must be escaped. The bytes
// after an escaped one begin no character, so that they are escaped as well.
static std::size_t shown_length(std::string_view text) {
    std::uint32_t code = 0;
    const std::size_t length = decode(text, code);
    const bool is_hidden =
        std::any_of(std::begin(hidden), std::end(hidden), [&](const CodePoints& range) {
            return code >= range.first && code <= range.last;
        });
    return is_hidden ? 0 : length;
}

std::size_t take_printable(std::string_view& text, char* out, std::size_t room) {
    static const char digits[] = "0123456789abcdef";
    std::size_t written = 0;
    while (!text.empty()) {
        // A whole character, or one byte as an escape.
        const std::size_t length = shown_length(text);
        const std::size_t needed = length > 0 ? length : escape_length;
        if (needed > room - written)
            break;
        const auto byte = static_cast<unsigned char>(text[0]);
        const char escape[escape_length] = {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
        memcpy(out + written, length > 0 ? text.data() : escape, needed);
        written += needed;
        text.remove_prefix(length > 0 ? length : 1);
    }
    return written;
}

std::string printable(std::string_view text) {
    std::string shown;
    char block[256];
    while (!text.empty())
        shown.append(block, take_printable(text, block, sizeof block));
    return shown;
}

std::string in_quotes(std::string_view text, std::size_t most) {
    if (text.size() <= most)
        return "'" + printable(text) + "'";
    // Back to where a character begins; UTF-8 has at most three bytes after the first.
    std::size_t end = most;
    while (end > 0 && most - end < 3 && is_continuation(text[end]))
        end--;
    return "'" + printable(text.substr(0, end)) + "...'";
}

} // namespace velmora
