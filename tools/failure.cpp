// SPDX-License-Identifier: BSD-3-Clause
#include "tools/failure.h"

#include "tools/say.h"

#include <new>
#include <string_view>

namespace velmora {

namespace {

// What an exception says, as parts of its own texts.
struct Reason {
    std::string_view title, text;
};

} // namespace

// Views into the exception, so that reporting needs no memory.
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
    // "open(\"name\"): reason": what follows the last colon.
    const std::string reason = reason_of(exception);
    const std::size_t colon = reason.rfind(": ");
    return colon == std::string::npos ? reason : reason.substr(colon + 2);
}

ExitStatus exit_status_of(const std::function<void()>& work) {
    // Ours first, from the most specific type on.
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
