#define XSOURCE "array"

#include "core/array.h"
#include "core/xception.h"

#include <cstdlib>
#include <cstring>
#include <utility>

static const uword smallest_block = 32;

ByteArray::ByteArray(const ByteArray& other) : ByteArray() {
    if (other.length == 0)
        return;
    realloc(other.length);
    memcpy(data, other.data, other.length);
    length = other.length;
}

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
    void* block = ::realloc(data, n);
    if (!block && n != 0)
        XTHROW("out of memory (current size %lu bytes, failed allocation of %lu bytes)", capacity,
               n);
    data = static_cast<char*>(block);
    capacity = n;
}

void ByteArray::grow_to_ool(uword n) {
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
