// SPDX-License-Identifier: BSD-3-Clause
#include "tests/core/allocator.h"

#include <cstdarg>
#include <cstdint>

extern "C" {
void* __real_malloc(std::size_t bytes);
void* __real_realloc(void* block, std::size_t bytes);
void __real_free(void* block);
int __real_vsnprintf(char* buffer, std::size_t bytes, const char* format, va_list args);
}

namespace {

Allocator* active = nullptr;

} // namespace

// The lists have room from the start, so that writing a call down makes none.
Allocator::Allocator()
    : prints(0), refused_call(0), refused_for_good(false), largest(SIZE_MAX),
      largest_real(SIZE_MAX), calls(0), misprinted(0), misprint_result(-1), left_over(nullptr) {
    mallocs.reserve(1000);
    reallocs.reserve(1000);
    active = this;
}

Allocator::~Allocator() {
    active = nullptr;
    __real_free(left_over);
}

void Allocator::refuse(int n, bool for_good) {
    calls = 0;
    refused_call = n;
    refused_for_good = for_good;
}

void Allocator::refuse_above(std::size_t bytes) {
    largest = bytes;
}

void Allocator::pretend_above(std::size_t bytes) {
    largest_real = bytes;
}

void Allocator::misprint(int n, int result) {
    misprinted = n;
    misprint_result = result;
}

void* Allocator::answer(void* block, std::size_t bytes, bool reallocating) {
    (reallocating ? reallocs : mallocs).push_back(bytes);
    ++calls;
    const bool refused =
        calls == refused_call || (refused_for_good && calls > refused_call) || bytes > largest;
    if (!refused && block && bytes > largest_real)
        return block;
    if (!refused) {
        freed(block);
        return reallocating ? __real_realloc(block, bytes) : __real_malloc(bytes);
    }
    if (block)
        left_over = block;
    return nullptr;
}

bool Allocator::misprints(int& result) {
    ++prints;
    result = misprint_result;
    return misprinted > 0 && misprinted-- > 0;
}

void Allocator::freed(void* block) {
    if (block == left_over)
        left_over = nullptr;
}

extern "C" {

void* __wrap_malloc(std::size_t bytes) {
    return active ? active->answer(nullptr, bytes, false) : __real_malloc(bytes);
}

void* __wrap_realloc(void* block, std::size_t bytes) {
    return active ? active->answer(block, bytes, true) : __real_realloc(block, bytes);
}

void __wrap_free(void* block) {
    if (active)
        active->freed(block);
    __real_free(block);
}

int __wrap_vsnprintf(char* buffer, std::size_t bytes, const char* format, va_list args) {
    int result;
    if (active && active->misprints(result))
        return result;
    return __real_vsnprintf(buffer, bytes, format, args);
}
}
