// SPDX-License-Identifier: BSD-3-Clause
#include "tools/say.h"

#include "osapi/osapi.h"
#include "text/quoted.h"

#include <climits>
#include <unistd.h>

namespace velmora {

namespace {

// One line on its way to standard error, in a block that the system writes in one piece.
class Line {
public:
    void add(std::string_view text) {
        while (!text.empty()) {
            const std::size_t written = take_printable(text, block + used, sizeof block - used);
            used += written;
            if (!text.empty())
                flush();
        }
    }

    // Past the escaping: for our own controls.
    void add_raw(const char* control) {
        for (; *control; control++) {
            if (used == sizeof block)
                flush();
            block[used++] = *control;
        }
    }

    void flush() {
        OSAPI::write_can_fail(STDERR_FILENO, block, used);
        used = 0;
    }

private:
    char block[PIPE_BUF];
    std::size_t used = 0;
};

} // namespace

void say(std::initializer_list<std::string_view> pieces) {
    Line line;
    // A progress line on a terminal is overwritten.
    line.add_raw(OSAPI::stderr_is_console() ? "\r\033[K" : "");
    line.add("velmora: ");
    for (const std::string_view piece : pieces)
        line.add(piece);
    line.add_raw("\n");
    line.flush();
}

} // namespace velmora
