// SPDX-License-Identifier: BSD-3-Clause

// The exceptions of the library, and the macros that raise them with their location.
//
// Errors:    a broken invariant is an AssertXception, any other failure a StrXception; thrown by
//            value, caught as Xception&. Assertions are never compiled out.
// Threads:   no shared state; lines written to standard error by several threads may interleave.
//
//     #define XSOURCE "stars"     // before the first include of the source
//
//     XASSERT(count > 0);         // throws AssertXception: 'count > 0' in <signature> (stars:line)
//     XTHROW("no \"%s\"", name);  // throws StrXception:    no "x" in <signature> (stars:line)
#pragma once

#include "core/string.h"

// The order of the virtual functions is part of the interface.
class Xception {
public:
    virtual ~Xception();

    // Writes the failure to standard error as one line.
    virtual void print() const = 0;

    // Writes "title: text" and a newline to standard error.
    static void display_error(const char* title, const char* text);

    // Writes "warning: ", then the formatted text, then " in <function>" and a newline to standard
    // error, in three writes.
    [[gnu::format(printf, 2, 3)]] static void warning(const char* function, const char* format,
                                                      ...);
};

// An internal check that failed. The three texts are literals and are never copied.
class AssertXception : public Xception {
public:
    const char* expr;     // as written in the source
    const char* file;     // the source's name, see XSOURCE
    const char* function; // full signature of the enclosing function
    s32 line;

    AssertXception(const char* expr, const char* file, const char* function, int line);
    ~AssertXception() override;

    // "Assertion Failed: 'expr' in <function> (file:line)", of which at most 4,095 bytes after the
    // ": ".
    void print() const override;
};

// A failure with a formatted message, which ends in " in <function> (file:line)".
class StrXception : public Xception {
public:
    String message;

    [[gnu::format(printf, 5, 6)]] StrXception(const char* file, const char* function, int line,
                                              const char* format, ...);
    ~StrXception() override;

    void print() const override;
};

// A source that uses these macros defines XSOURCE, its name in messages, before its first include.
// The …_AT forms take the location from their arguments: for messages whose function and line are
// fixed wherever the code is today, and for helpers that fail in their caller's name.
#define XASSERT_AT(condition, expression, function, line)                                          \
    do {                                                                                           \
        if (!(condition))                                                                          \
            throw AssertXception(expression, XSOURCE, function, line);                             \
    } while (0)
#define XASSERT(condition) XASSERT_AT(condition, #condition, __PRETTY_FUNCTION__, __LINE__)

#define XTHROW_AT(function, line, ...) throw StrXception(XSOURCE, function, line, __VA_ARGS__)
#define XTHROW(...) XTHROW_AT(__PRETTY_FUNCTION__, __LINE__, __VA_ARGS__)
