#include "tools/say.h"

#include "text/quoted.h"

#include <cerrno>
#include <climits>
#include <poll.h>
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
        const char* from = block;
        while (used > 0) {
            const ssize_t count = write(STDERR_FILENO, from, used);
            if (count > 0) {
                from += count;
                used -= std::size_t(count);
            } else if (!may_try_again()) {
                used = 0;
            }
        }
    }

private:
    char block[PIPE_BUF];
    std::size_t used = 0;

    // After a write that moved nothing. Waits where the reader of a pipe that does not block is
    // slow.
    static bool may_try_again() {
        pollfd waiting = {STDERR_FILENO, POLLOUT, 0};
        return errno == EINTR || (errno == EAGAIN && poll(&waiting, 1, -1) == 1);
    }
};

} // namespace

void say(std::initializer_list<std::string_view> pieces) {
    Line line;
    line.add_raw(isatty(STDERR_FILENO) ? "\r\033[K" : "");
    line.add("velmora: ");
    for (const std::string_view piece : pieces)
        line.add(piece);
    line.add_raw("\n");
    line.flush();
}

} // namespace velmora
