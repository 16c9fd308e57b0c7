// SPDX-License-Identifier: BSD-3-Clause

// What must hold whatever the input.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace velmora {

// Names a law that does not hold on standard error and ends the program.
inline void require(bool holds, const char* law) {
    if (holds)
        return;
    fprintf(stderr, "broken law: %s\n", law);
    abort();
}

// A reader's message: no ASCII controls, no controls of U+0080 to U+009F, and no separators of lines
// or paragraphs.
inline void require_printable_line(const std::string& message) {
    for (std::size_t i = 0; i < message.size(); i++) {
        const auto byte = static_cast<unsigned char>(message[i]);
        const auto next = static_cast<unsigned char>(i + 1 < message.size() ? message[i + 1] : 0);
        require(byte >= 0x20 && byte != 0x7f, "a message holds no control");
        require(byte != 0xc2 || next >= 0xa0, "a message holds no control of two bytes");
    }
    for (const char* const separator : {"\xe2\x80\xa8", "\xe2\x80\xa9"})
        require(message.find(separator) == std::string::npos, "a message is one line");
}

} // namespace velmora
