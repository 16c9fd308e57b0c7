// SPDX-License-Identifier: BSD-3-Clause
#include "core/xception.h"

#include <cstdio>

Xception::~Xception() {}

void Xception::display_error(const char* title, const char* text) {
    fprintf(stderr, "%s: %s\n", title, text);
}

void Xception::warning(const char* function, const char* format, ...) {
    fputs("warning: ", stderr);
    va_list args;
    va_start(args, format);
    vfprintf(stderr, format, args);
    va_end(args);
    fprintf(stderr, " in <%s>\n", function);
}

AssertXception::AssertXception(const char* expr, const char* file, const char* function, int line)
    : expr(expr), file(file), function(function), line(line) {}

AssertXception::~AssertXception() {}

void AssertXception::print() const {
    char buffer[4096];
    snprintf(buffer, sizeof buffer, "'%s' in <%s> (%s:%d)", expr, function, file, line);
    display_error("Assertion Failed", buffer);
}

// The message ends with the place in the source that raised it.
StrXception::StrXception(const char* file, const char* function, int line, const char* format,
                         ...) {
    va_list args;
    va_start(args, format);
    message.vsprintf(format, args);
    va_end(args);
    message += String::fmt(" in <%s> (%s:%d)", function, file, line);
}

StrXception::~StrXception() {}

void StrXception::print() const {
    display_error("Error", velmora::text_of(message));
}
