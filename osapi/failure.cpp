// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "osapi-unix"

#include "osapi/failure.h"

#include "core/xception.h"
#include "osapi/osapi.h"

#include <cerrno>
#include <cstdarg>
#include <cstring>

namespace OSAPI {

const char* error_text(int error) {
    return strerror(error);
}

void throw_errno(const char* function, int line, const char* call, ...) {
    const int error = errno;
    va_list args;
    va_start(args, call);
    const String called = String::vfmt(call, args);
    va_end(args);
    XTHROW_AT(function, line, "%s: %s", called.str, error_text(error));
}

} // namespace OSAPI
