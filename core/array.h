// SPDX-License-Identifier: BSD-3-Clause

// A growable heap block that counts bytes, and a typed array on top of it.
//
// Units:     ByteArray counts bytes, `length` included; Array<T>::len() and indices count elements.
// Shapes:    elements are contiguous from `data`; growth doubles from 32 bytes.
// Ownership: the block belongs to its array (malloc, realloc, free); copies are deep and exact in
//            size.
// Errors:    StrXception "out of memory (current size … bytes, failed allocation of … bytes)", and
//            the array is unchanged. Indices are not checked.
// Threads:   no shared state; one object belongs to one thread at a time.
#pragma once

#include "core/types.h"

#include <new>

// The block, without elements' types; Array<T> below is what one uses.
class ByteArray {
public:
    char* data;     // the block, null when nothing is allocated
    uword capacity; // bytes allocated
    uword length;   // bytes in use, never more than `capacity`

    ByteArray() : data(nullptr), capacity(0), length(0) {}
    ByteArray(const ByteArray& other);
    ByteArray& operator=(const ByteArray& other);
    ~ByteArray();

    // Sets `capacity` to exactly `n`; 0 frees the block. REQUIRES: n >= length. When `n` is the
    // current capacity, only warns "spurious realloc".
    void realloc(uword n);

    // Grows `capacity` to at least `n`: from 0 to max(n, 32), otherwise by doubling, which is not
    // guarded against overflow. REQUIRES: n > capacity.
    void grow_to_ool(uword n);

    // Shrinks `capacity` to `length`.
    void trim();

protected:
    void swap(ByteArray& other);
};

static_assert(sizeof(ByteArray) == 3 * sizeof(uword), "a block, its capacity and its length");

// A growable array of `T`, contiguous in memory.
//
// REQUIRES: a `T` may be moved bitwise, as growing moves the elements with realloc.
template <class T>
class Array : public ByteArray {
public:
    Array() {}
    Array(const Array& other);
    Array& operator=(const Array& other);
    ~Array() { clear(); }

    uword len() const { return length / sizeof(T); }

    T& operator[](uword i) { return elements()[i]; }
    const T& operator[](uword i) const { return elements()[i]; }

    // Adds a copy of `value`, which may be an element of this array, after the last element.
    void append(const T& value);

    // Destroys the elements, the last one first, and keeps the block.
    void clear();

private:
    T* elements() const { return reinterpret_cast<T*>(data); }
    void append_grown(const T& value);
};

template <class T>
Array<T>::Array(const Array& other) : Array() {
    if (other.length == 0)
        return;
    ByteArray::realloc(other.length);
    for (uword i = 0; i < other.len(); i++)
        append(other[i]);
}

template <class T>
Array<T>& Array<T>::operator=(const Array& other) {
    Array copy(other);
    swap(copy);
    return *this;
}

template <class T>
void Array<T>::append(const T& value) {
    if (length + sizeof(T) > capacity) {
        append_grown(value);
        return;
    }
    new (data + length) T(value);
    length += sizeof(T);
}

template <class T>
void Array<T>::append_grown(const T& value) {
    // Growing moves the block, so `value` inside it is remembered by its offset.
    const char* address = reinterpret_cast<const char*>(&value);
    const bool inside = data && address >= data && address < data + length;
    const uword offset = inside ? uword(address - data) : 0;
    grow_to_ool(length + sizeof(T));
    new (data + length) T(inside ? *reinterpret_cast<const T*>(data + offset) : value);
    length += sizeof(T);
}

template <class T>
void Array<T>::clear() {
    while (length > 0) {
        length -= sizeof(T);
        reinterpret_cast<T*>(data + length)->~T();
    }
}
