// SPDX-License-Identifier: BSD-3-Clause

// How a failed system call becomes an exception: the one place that turns errno into a message.
//
// Errors:    XTHROW_ERRNO("kill(%d,%d)", pid, sig) throws a StrXception with the message
//            "kill(1,9): Operation not permitted in <signature> (osapi-unix:line)". It takes errno
//            first of all, so its other arguments may be anything that leaves errno alone.
// Threads:   errno is the calling thread's own.
#pragma once

namespace OSAPI {

// Fails in the name of `function`, a full signature, at `line`: for helpers that share what several
// public functions do, and whose own names would mean nothing to a reader of the message.
[[noreturn, gnu::format(printf, 3, 4)]] void throw_errno(const char* function, int line,
                                                         const char* call, ...);

} // namespace OSAPI

#define XTHROW_ERRNO(...) OSAPI::throw_errno(__PRETTY_FUNCTION__, __LINE__, __VA_ARGS__)
