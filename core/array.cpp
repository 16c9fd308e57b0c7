// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "array"

#include "core/array.h"
#include "core/xception.h"

#include <cstdlib>
#include <cstring>
#include <utility>

static const uword smallest_block = 32; // bytes, of a block that is allocated by growing

ByteArray::ByteArray(const ByteArray& other) : ByteArray() {
    if (other.length == 0)
        return;
    realloc(other.length);
    memcpy(data, other.data, other.length);
    length = other.length;
}

// By copy and swap: when the copy fails, this array is unchanged.
ByteArray& ByteArray::operator=(const ByteArray& other) {
    ByteArray copy(other);
    swap(copy);
    return *this;
}

ByteArray::~ByteArray() {
    free(data);
}

void ByteArray::realloc(uword n) {
    if (n == capacity) {
        Xception::warning("void ByteArray::realloc(uword)", "spurious realloc");
        return;
    }
    // A null block is a failure, except that freeing (n = 0) may return null as well.
    void* block = ::realloc(data, n);
    if (!block && n != 0)
        XTHROW("out of memory (current size %lu bytes, failed allocation of %lu bytes)", capacity,
               n);
    data = static_cast<char*>(block);
    capacity = n;
}

void ByteArray::grow_to_ool(uword n) {
    // Doubling keeps the cost of an append constant on average.
    uword grown = capacity;
    if (grown == 0) {
        grown = n < smallest_block ? smallest_block : n;
    } else {
        while (grown < n)
            grown *= 2;
    }
    realloc(grown);
}

void ByteArray::trim() {
    if (length < capacity)
        realloc(length);
}

void ByteArray::swap(ByteArray& other) {
    std::swap(data, other.data);
    std::swap(capacity, other.capacity);
    std::swap(length, other.length);
}
