// SPDX-License-Identifier: BSD-3-Clause
#include "tests/core/instring_exit_log.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

extern "C" {
void __real_free(void* block);
void __wrap_free(void* block);
}

// All of this exists before the first initialiser runs and after the last exit handler.
namespace {

struct Watched {
    const void* block;
    const char* label;
    bool is_text;
};

Watched watched[64];
int watched_count;
const void* newest;

void add(const void* block, const char* label, bool is_text) {
    for (int i = 0; i < watched_count; i++)
        if (watched[i].block == block)
            return;
    if (watched_count == 64)
        abort();
    watched[watched_count++] = {block, label, is_text};
}

void tell_freed(const void* block) {
    for (int i = 0; i < watched_count; i++)
        if (block && watched[i].block == block)
            tell(watched[i].is_text ? "freed the text of %s%s\n" : "freed %s%s\n",
                 watched[i].label);
}

} // namespace

void tell(const char* format, const char* a, const char* b) {
    char line[200];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length = snprintf(line, sizeof line, format, a, b);
#pragma GCC diagnostic pop
    if (write(STDOUT_FILENO, line, std::size_t(length)) != length)
        abort();
}

void watch_block(const void* block, const char* label) {
    add(block, label, false);
}

void watch_name(const InString& name, const char* label) {
    add(name.record, label, false);
    add(name.text().str, label, true);
}

const void* newest_block() {
    return newest;
}

NamedObject::NamedObject(const char* who, const char* text)
    : who(who), text(text), name(InString::intern(text)) {
    watch_name(name, text);
}

NamedObject::~NamedObject() {
    const bool found = InString::intern(text) == name && !strcmp(name.text().str, text);
    tell("%s reads %s\n", who, found ? text : "something else");
}

void* operator new(std::size_t bytes) {
    void* block = malloc(bytes);
    if (!block)
        throw std::bad_alloc();
    newest = block;
    return block;
}
void operator delete(void* block) noexcept {
    tell_freed(block);
    __real_free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
void __wrap_free(void* block) {
    tell_freed(block);
    __real_free(block);
}
