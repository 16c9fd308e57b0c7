// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "string"

#include "core/string.h"
#include "core/array.h"
#include "core/xception.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

using velmora::text_of;

// A copy of the text; null for null and "". Does not check its allocation.
static char* my_strdup(const char* s) {
    if (!s || !*s)
        return nullptr;
    const uword size = strlen(s) + 1;
    return static_cast<char*>(memcpy(malloc(size), s, size));
}

// Set while an "out of memory" is being raised: formatting its message needs memory too, so without
// this the raising would recurse for ever when there is none at all.
static thread_local bool raising_out_of_memory = false;

namespace {
struct RaisingOutOfMemory {
    RaisingOutOfMemory() {
        if (raising_out_of_memory)
            throw std::bad_alloc();
        raising_out_of_memory = true;
    }
    ~RaisingOutOfMemory() { raising_out_of_memory = false; }
};
} // namespace

// Formats into a block that is enlarged until the text fits; the caller frees it.
[[gnu::format(printf, 1, 0)]] static char* my_vsnprintf(const char* format, va_list args) {
    uword size = 100;
    char* buffer = static_cast<char*>(malloc(size));
    for (;;) {
        if (!buffer) {
            RaisingOutOfMemory guard;
            XTHROW("out of memory");
        }

        // Each attempt consumes its arguments, so it gets a copy.
        va_list copy;
        va_copy(copy, args);
        const int result = vsnprintf(buffer, size, format, copy);
        va_end(copy);
        if (result >= 0 && uword(result) < size)
            return buffer;

        // Too small: the result is the length needed, or negative, in C libraries before C99, when
        // the length is not known.
        size = result >= 0 ? uword(result) + 1 : size * 2;
        buffer = static_cast<char*>(realloc(buffer, size));
    }
}

String::String(const char* s) : str(my_strdup(s)) {}

// All `n` + 1 bytes are allocated and set, however short the text is.
String::String(const char* s, unsigned n) : str(nullptr) {
    if (n == 0)
        return;
    const uword used = strnlen(s, n);
    str = static_cast<char*>(malloc(uword(n) + 1));
    memcpy(str, s, used);
    memset(str + used, 0, uword(n) + 1 - used);
}

String::String(char ch) : str(static_cast<char*>(malloc(2))) {
    str[0] = ch;
    str[1] = 0;
}

String::String(const String& other) : str(my_strdup(other.str)) {}

String::~String() {
    free(str);
}

String& String::operator=(const String& other) {
    return *this = other.str;
}

// Copy first, then free: `s` may point into the old text.
String& String::operator=(const char* s) {
    char* copy = my_strdup(s);
    free(str);
    str = copy;
    return *this;
}

void String::clear() {
    free(str);
    str = nullptr;
}

uword String::len() const {
    return str ? strlen(str) : 0;
}

// The shifts are of the signed byte, and the sum is taken modulo 2^32, on every machine.
u32 String::hash() const {
    u32 h = 0;
    for (const char* p = text_of(*this); *p; p++) {
        const s32 b = static_cast<signed char>(*p);
        h = (h + u32(b >> 4) + (u32(b) << 4)) * 11;
    }
    return h;
}

long String::atoi() const {
    return strtol(text_of(*this), nullptr, 10);
}

double String::atof() const {
    return strtod(text_of(*this), nullptr);
}

static u32 index_of(const String& s, const char* found) {
    return found ? u32(found - text_of(s)) : u32(-1);
}

// strchr would also find the terminator, which is not a character of the text.
u32 String::find(char ch) const {
    return ch ? index_of(*this, strchr(text_of(*this), ch)) : u32(-1);
}

u32 String::findr(char ch) const {
    return ch ? index_of(*this, strrchr(text_of(*this), ch)) : u32(-1);
}

u32 String::find(const char* s) const {
    return index_of(*this, strstr(text_of(*this), s));
}

// Appends `n` bytes from `s` to the `length` bytes of `text`, and terminates the result.
static char* appended(char* text, uword length, const char* s, uword n) {
    char* grown = static_cast<char*>(realloc(text, length + n + 1));
    memcpy(grown + length, s, n);
    grown[length + n] = 0;
    return grown;
}

// Appending a text to itself goes through a copy, as growing moves the text.
String& String::operator+=(const String& other) {
    if (!str)
        return *this = other;
    if (&other == this)
        return *this += String(other);
    str = appended(str, len(), text_of(other), other.len());
    return *this;
}

String& String::operator+=(const char* s) {
    if (!str)
        return *this = s;
    str = appended(str, len(), s, strlen(s));
    return *this;
}

String& String::operator+=(char ch) {
    str = appended(str, len(), &ch, 1);
    return *this;
}

void String::vsprintf(const char* format, va_list args) {
    char* text = my_vsnprintf(format, args);
    free(str);
    str = text;
}

void String::sprintf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    vsprintf(format, args);
    va_end(args);
}

String String::vfmt(const char* format, va_list args) {
    String s;
    s.vsprintf(format, args);
    return s;
}

String String::fmt(const char* format, ...) {
    va_list args;
    va_start(args, format);
    String s = vfmt(format, args);
    va_end(args);
    return s;
}

String String::chop(const char* s) {
    String line;
    for (; *s && *s != '\r' && *s != '\n'; s++)
        line += *s;
    return line;
}

String String::chop(const String& s) {
    return chop(text_of(s));
}

void String::split_by(const char* s, const char* seps, Array<String>& out) {
    // Collect characters up to a separator or the end, then append what is not empty.
    String token;
    for (;; s++) {
        if (*s && !strchr(seps, *s)) {
            token += *s;
            continue;
        }
        if (token.len() > 0) {
            out.append(token);
            token.clear();
        }
        if (!*s)
            return;
    }
}

void String::split_by(const String& s, const char* seps, Array<String>& out) {
    split_by(text_of(s), seps, out);
}

void String::split(const char* s, Array<String>& out) {
    split_by(s, " \t\n\r", out);
}

void String::split(const String& s, Array<String>& out) {
    split(text_of(s), out);
}

String operator+(const String& a, const String& b) {
    String sum(a);
    sum += b;
    return sum;
}

String operator+(const String& a, const char* b) {
    String sum(a);
    sum += b;
    return sum;
}

bool operator==(const String& a, const String& b) {
    if (a.str && b.str)
        return strcmp(a.str, b.str) == 0;
    return !a.str && !b.str;
}

bool operator!=(const String& a, const String& b) {
    return !(a == b);
}

bool operator<=(const String& a, const String& b) {
    if (a.str && b.str)
        return strcmp(a.str, b.str) <= 0;
    return a.str != b.str;
}
