// SPDX-License-Identifier: BSD-3-Clause

// How a call is put in front of libc's, for the sources that do.
#pragma once

#include "tests/osapi/system_calls.h"

#include <cstdarg>
#include <cstdio>
#include <string>

// The one that writes calls down, or null.
extern SystemCalls* active_system_calls;

[[gnu::format(printf, 1, 2)]] inline std::string arguments_text(const char* format, ...) {
    char buffer[1000];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    return buffer;
}

// Defines __wrap_<name>, which answers for the active SystemCalls or passes the call on. The rest
// are the arguments as they are written down. WRAPPED_OUT puts an answer's output at `out`.
#define WRAPPED_OUT(type, name, parameters, arguments, out, room, ...)                             \
    extern "C" type __real_##name parameters;                                                      \
    extern "C" type __wrap_##name parameters {                                                     \
        long result = 0;                                                                           \
        if (active_system_calls &&                                                                 \
            active_system_calls->answers(#name, arguments_text(__VA_ARGS__), result, out, room))   \
            return static_cast<type>(result);                                                      \
        return __real_##name arguments;                                                            \
    }
#define WRAPPED(type, name, parameters, arguments, ...)                                            \
    WRAPPED_OUT(type, name, parameters, arguments, nullptr, 0, __VA_ARGS__)

// The same for a call that moves up to `n` of `bytes`, which may be shortened.
#define WRAPPED_MOVE(name, parameters, arguments, out, ...)                                        \
    extern "C" ssize_t __real_##name parameters;                                                   \
    extern "C" ssize_t __wrap_##name parameters {                                                  \
        long result = 0;                                                                           \
        if (active_system_calls &&                                                                 \
            active_system_calls->answers(#name, arguments_text(__VA_ARGS__), result, out, n))      \
            return result;                                                                         \
        if (active_system_calls)                                                                   \
            n = active_system_calls->moved(#name, n);                                              \
        return __real_##name arguments;                                                            \
    }

// The same for a call that returns a pointer: null when it is answered.
#define WRAPPED_POINTER(type, name, parameters, arguments, ...)                                    \
    extern "C" type __real_##name parameters;                                                      \
    extern "C" type __wrap_##name parameters {                                                     \
        long result = 0;                                                                           \
        if (active_system_calls &&                                                                 \
            active_system_calls->answers(#name, arguments_text(__VA_ARGS__), result))              \
            return nullptr;                                                                        \
        return __real_##name arguments;                                                            \
    }
