#include "tools/failure.h"

#include "text/quoted.h"

#include <cerrno>
#include <climits>
#include <new>
#include <poll.h>
#include <unistd.h>

namespace velmora {

namespace {

// What an exception says, as parts of its own texts.
struct Reason {
    std::string_view title, text;
};

} // namespace

static Reason reason_in(const Xception& exception) {
    if (const auto* failed = dynamic_cast<const AssertXception*>(&exception))
        return {"internal check failed: ", failed->expr};
    const auto* failed = dynamic_cast<const StrXception*>(&exception);
    if (!failed || !failed->message.str)
        return {"", "unknown failure"};
    const std::string_view message = failed->message.str;
    return {"", message.substr(0, message.rfind(" in <"))};
}

std::string reason_of(const Xception& exception) {
    const Reason reason = reason_in(exception);
    return std::string(reason.title).append(reason.text);
}

std::string system_reason_of(const Xception& exception) {
    const std::string reason = reason_of(exception);
    const std::size_t colon = reason.rfind(": ");
    return colon == std::string::npos ? reason : reason.substr(colon + 2);
}

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

ExitStatus exit_status_of(const std::function<void()>& work) {
    try {
        work();
        return EXIT_DONE;
    } catch (const Failure& failure) {
        say(failure.what());
        return failure.status;
    } catch (const Xception& exception) {
        const Reason reason = reason_in(exception);
        say({"failed: ", reason.title, reason.text});
    } catch (const std::bad_alloc&) {
        say("failed: out of memory");
    } catch (const std::exception& exception) {
        say({"failed: ", exception.what()});
    }
    return EXIT_FAILED;
}

} // namespace velmora
