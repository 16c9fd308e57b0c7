// SPDX-License-Identifier: BSD-3-Clause
#include "tests/tools/process_heap.h"

#include <cerrno>
#include <cstddef>

extern "C" {
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* block, std::size_t bytes);
void* __libc_memalign(std::size_t alignment, std::size_t bytes);
}

static bool counting;
static int count, first_refused, last_refused;

static bool grants() {
    if (!counting)
        return true;
    count++;
    if (count < first_refused || count > last_refused)
        return true;
    errno = ENOMEM;
    return false;
}

ProcessHeap::ProcessHeap() {
    count = first_refused = last_refused = 0;
    counting = true;
}

ProcessHeap::~ProcessHeap() {
    counting = false;
}

void ProcessHeap::refuse(int first, int more) {
    first_refused = first > 0 ? count + first : 0;
    last_refused = first > 0 ? first_refused + more : 0;
}

int ProcessHeap::requests() const {
    return count;
}

// ---- In the C library's place ----------------------------------------------------------------

extern "C" {

void* malloc(std::size_t bytes) {
    return grants() ? __libc_malloc(bytes) : nullptr;
}

void* calloc(std::size_t number, std::size_t bytes) {
    return grants() ? __libc_calloc(number, bytes) : nullptr;
}

void* realloc(void* block, std::size_t bytes) {
    return grants() ? __libc_realloc(block, bytes) : nullptr;
}

void* aligned_alloc(std::size_t alignment, std::size_t bytes) {
    return grants() ? __libc_memalign(alignment, bytes) : nullptr;
}

int posix_memalign(void** block, std::size_t alignment, std::size_t bytes) {
    if (!grants())
        return ENOMEM;
    *block = __libc_memalign(alignment, bytes);
    return *block ? 0 : ENOMEM;
}
}
