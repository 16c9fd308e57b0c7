#include "tools/failure.h"

#include <cstdio>
#include <new>
#include <unistd.h>

namespace velmora {

std::string reason_of(const Xception& exception) {
    if (const auto* failed = dynamic_cast<const AssertXception*>(&exception))
        return std::string("internal check failed: ") + failed->expr;
    const auto* failed = dynamic_cast<const StrXception*>(&exception);
    if (!failed || !failed->message.str)
        return "unknown failure";
    const std::string message = failed->message.str;
    return message.substr(0, message.rfind(" in <"));
}

std::string system_reason_of(const Xception& exception) {
    const std::string reason = reason_of(exception);
    const std::size_t colon = reason.rfind(": ");
    return colon == std::string::npos ? reason : reason.substr(colon + 2);
}

void say(const std::string& line) {
    const char* const clear_line = isatty(STDERR_FILENO) ? "\r\033[K" : "";
    fputs((clear_line + ("velmora: " + line + "\n")).c_str(), stderr);
}

ExitStatus exit_status_of(const std::function<void()>& work) {
    try {
        work();
        return EXIT_DONE;
    } catch (const Failure& failure) {
        say(failure.what());
        return failure.status;
    } catch (const Xception& exception) {
        say("failed: " + reason_of(exception));
    } catch (const std::bad_alloc&) {
        say("failed: out of memory");
    } catch (const std::exception& exception) {
        say(std::string("failed: ") + exception.what());
    }
    return EXIT_FAILED;
}

} // namespace velmora
