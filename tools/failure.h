// SPDX-License-Identifier: BSD-3-Clause

// How a command fails: one line, "velmora: <what>: <why>", and an exit status.
#pragma once

#include "core/xception.h"

#include <functional>
#include <stdexcept>
#include <string>

namespace velmora {

enum ExitStatus {
    EXIT_DONE = 0,
    EXIT_FAILED = 1, // the work failed
    EXIT_USAGE = 2,  // the arguments are wrong
};

// Carries "<what>: <why>", without the program's name.
class Failure : public std::runtime_error {
public:
    const ExitStatus status;
    const std::string why;

    Failure(ExitStatus status, const std::string& what, const std::string& why)
        : std::runtime_error(what + ": " + why), status(status), why(why) {}
};

// The work failed.
class WorkFailure : public Failure {
public:
    WorkFailure(const std::string& what, const std::string& why)
        : Failure(EXIT_FAILED, what, why) {}
};

// An argument is wrong.
class UsageFailure : public Failure {
public:
    UsageFailure(const std::string& what, const std::string& why)
        : Failure(EXIT_USAGE, what, why) {}
};

// The exception's message without the source location.
std::string reason_of(const Xception& exception);

// Only the system's reason, such as "No space left on device": the call and its arguments may name
// temporary files, which the user did not.
std::string system_reason_of(const Xception& exception);

// Runs `work`, reports what it throws, and returns the exit status. Reporting needs no memory.
ExitStatus exit_status_of(const std::function<void()>& work);

} // namespace velmora
