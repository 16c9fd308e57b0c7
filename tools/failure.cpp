#include "tools/failure.h"

#include <cstdio>
#include <new>

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

void say(const std::string& line) {
    fputs(("velmora: " + line + "\n").c_str(), stderr);
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
