// SPDX-License-Identifier: BSD-3-Clause
#include "tests/core/heap_watch.h"

#include <cstdlib>
#include <new>

extern "C" {
void* __real_malloc(std::size_t bytes);
void* __real_realloc(void* block, std::size_t bytes);
void __real_free(void* block);
}

// Plain arrays: watching must not ask for memory itself.
namespace {

const int most = 20000;

HeapWatch::Request request_list[most];
int request_count;
const void* live_list[most];
int live_count;
const void* freed_list[most];
int freed_count;
int older_count;

bool watching;
int until_refused; // 0 when none will be
void (*call_before)();

void check_room(int count) {
    if (count >= most)
        abort();
}

// Writes a request down; whether it is to be granted.
bool grants(HeapWatch::Way way, std::size_t bytes) {
    if (!watching)
        return true;
    if (void (*function)() = call_before) {
        call_before = nullptr;
        function();
    }
    check_room(request_count);
    request_list[request_count++] = {way, bytes};
    return until_refused == 0 || --until_refused != 0;
}

void* made(void* block) {
    if (watching && block) {
        check_room(live_count);
        live_list[live_count++] = block;
    }
    return block;
}

bool forget_live(const void* block) {
    for (int i = live_count - 1; i >= 0; i--) {
        if (live_list[i] == block) {
            live_list[i] = live_list[--live_count];
            return true;
        }
    }
    return false;
}

void gone(const void* block) {
    if (!block)
        return;
    const bool ours = forget_live(block);
    if (watching) {
        check_room(freed_count);
        freed_list[freed_count++] = block;
        older_count += !ours;
    }
}

void* new_block(std::size_t bytes) {
    void* block = grants(HeapWatch::NEW, bytes) ? made(__real_malloc(bytes ? bytes : 1)) : nullptr;
    if (!block)
        throw std::bad_alloc();
    return block;
}

void delete_block(void* block) {
    gone(block);
    __real_free(block);
}

} // namespace

HeapWatch::HeapWatch() {
    request_count = live_count = freed_count = older_count = until_refused = 0;
    call_before = nullptr;
    watching = true;
}

HeapWatch::~HeapWatch() {
    stop();
}

void HeapWatch::stop() {
    watching = false;
}

void HeapWatch::refuse(int n) {
    until_refused = n;
}

void HeapWatch::call(void (*function)()) {
    call_before = function;
}

int HeapWatch::requests() const {
    return request_count;
}

const HeapWatch::Request& HeapWatch::request(int i) const {
    return request_list[i];
}

int HeapWatch::live() const {
    return live_count;
}

int HeapWatch::freed() const {
    return freed_count;
}

const void* HeapWatch::freed(int i) const {
    return freed_list[i];
}

int HeapWatch::older_freed() const {
    return older_count;
}

// ---- In front of the allocator ---------------------------------------------------------------

extern "C" {

void* __wrap_malloc(std::size_t bytes) {
    return grants(HeapWatch::MALLOC, bytes) ? made(__real_malloc(bytes)) : nullptr;
}

// A block that moves stays the block that it was: older than the watch, or made under it.
void* __wrap_realloc(void* block, std::size_t bytes) {
    if (!grants(HeapWatch::REALLOC, bytes))
        return nullptr;
    const bool ours = !block || forget_live(block);
    void* moved = __real_realloc(block, bytes);
    return ours ? made(moved) : moved;
}

void __wrap_free(void* block) {
    delete_block(block);
}
}

void* operator new(std::size_t bytes) {
    return new_block(bytes);
}
void* operator new[](std::size_t bytes) {
    return new_block(bytes);
}
void operator delete(void* block) noexcept {
    delete_block(block);
}
void operator delete[](void* block) noexcept {
    delete_block(block);
}
void operator delete(void* block, std::size_t) noexcept {
    delete_block(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    delete_block(block);
}
