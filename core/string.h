// SPDX-License-Identifier: BSD-3-Clause

// A heap-allocated, NUL-terminated 8-bit text that is one pointer wide.
//
// Shapes:    null is the empty text; no length or capacity is kept, so len() walks the text and
//            every append reallocates. A String may be moved bitwise, as Array<String> does.
// Ownership: each String owns its text (malloc, realloc, free); copying duplicates it.
// Errors:    formatting throws StrXception "out of memory"; constructors, assignment and += do not
//            check their allocations.
// Threads:   no shared state; one object belongs to one thread at a time.
#pragma once

#include "core/types.h"

#include <cstdarg>

template <class T>
class Array;

class String {
public:
    char* str; // the text, or null for the empty one

    String() : str(nullptr) {}

    // Copies `s`; null or "" gives the empty text.
    String(const char* s);

    // Copies at most `n` characters of `s`, stopping early at its NUL, into `n` + 1 bytes, of which
    // the rest is filled with NULs. With `n` 0 the text is empty and `s` is not read.
    String(const char* s, unsigned n);

    // Always allocates two bytes, `ch` and NUL, even when `ch` is NUL.
    String(char ch);

    String(const String& other);
    ~String();

    // The source is duplicated before the old text is freed, so self-assignment is safe.
    String& operator=(const String& other);
    String& operator=(const char* s);

    // Frees the text; the result is null.
    void clear();

    uword len() const;

    // h = (h + (b >> 4) + (b << 4)) * 11 modulo 2^32 over the text's bytes b, which are taken as
    // signed; 0 for the empty text.
    u32 hash() const;

    // As strtol in base 10 and strtod; 0 for the empty text.
    long atoi() const;
    double atof() const;

    // Index of the first (`findr`: last) occurrence, or u32(-1).
    u32 find(char ch) const;
    u32 find(const char* s) const;
    u32 findr(char ch) const;

    String& operator+=(const String& other);
    String& operator+=(const char* s); // REQUIRES: `s` is not null and does not point into `str`
    String& operator+=(char ch);

    // Replace the text by the formatted result; `str` is then not null, even for "".
    [[gnu::format(printf, 2, 0)]] void vsprintf(const char* format, va_list args);
    [[gnu::format(printf, 2, 3)]] void sprintf(const char* format, ...);

    [[gnu::format(printf, 1, 0)]] static String vfmt(const char* format, va_list args);
    [[gnu::format(printf, 1, 2)]] static String fmt(const char* format, ...);

    // The text before the first CR or LF.
    static String chop(const char* s);
    static String chop(const String& s);

    // Appends the non-empty parts of `s` between characters of `seps` to `out`.
    static void split_by(const char* s, const char* seps, Array<String>& out);
    static void split_by(const String& s, const char* seps, Array<String>& out);

    // split_by at space, tab, newline and carriage return.
    static void split(const char* s, Array<String>& out);
    static void split(const String& s, Array<String>& out);
};

static_assert(sizeof(String) == sizeof(char*), "a String is one pointer");

// The two texts joined; `b` may be empty, but a `const char*` is not null.
String operator+(const String& a, const String& b);
String operator+(const String& a, const char* b);

namespace velmora {

// The characters of `s` for functions that take no null: "" for the empty text.
inline const char* text_of(const String& s) {
    return s.str ? s.str : "";
}

} // namespace velmora

// Compare texts; null equals only null, so a String made from '\0' differs from an empty one.
bool operator==(const String& a, const String& b);
bool operator!=(const String& a, const String& b);

// Bytewise order of two non-null texts. Otherwise true when exactly one of them is null: the empty
// text is not <= itself, and any other text is <= the empty one.
bool operator<=(const String& a, const String& b);
