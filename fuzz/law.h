// What must hold whatever the input.
#pragma once

#include <algorithm>
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

// What readers say about bytes that they quote.
inline void require_plain_line(const std::string& message) {
    require(std::all_of(message.begin(), message.end(),
                        [](char ch) { return ch >= 0x20 && ch < 0x7f; }),
            "a message is one line of plain characters");
}

} // namespace velmora
