// SPDX-License-Identifier: BSD-3-Clause
#include "tests/failing_memory.h"

#include <cstdlib>
#include <new>

static int until_failure = 0; // requests, the failing one among them; 0 while none is to fail
static int failures_left = 0;
static bool failed = false;

FailingMemory::FailingMemory(int nth, int count) {
    failed = false;
    failures_left = count;
    until_failure = nth;
}

FailingMemory::~FailingMemory() {
    until_failure = failures_left = 0;
}

bool FailingMemory::has_failed() {
    return failed;
}

static void* requested(std::size_t size) {
    if (until_failure > 1) {
        until_failure--;
    } else if (failures_left > 0) {
        failures_left--;
        failed = true;
        return nullptr;
    }
    return std::malloc(size > 0 ? size : 1);
}

void* operator new(std::size_t size) {
    if (void* const block = requested(size))
        return block;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return requested(size);
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
