// SPDX-License-Identifier: BSD-3-Clause

// A 64-bit hash of what an op's output depends on: a cyclic redundancy check.
//
// Source:    CRC-64/ECMA-182, polynomial 0x42F0E1EBA9EA3693, most significant bit first, from 0.
// Shapes:    numbers are hashed as their bytes in memory, texts with their final NUL, so that "ab",
//            "c" and "a", "bc" differ.
// Threads:   a value; newvalue() from any.
#pragma once

#include <DDImage/DDImage_API.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace DD::Image {

typedef std::uint64_t U64;

class DDImage_API Hash {
public:
    Hash() : value_(0) {}
    explicit Hash(U64 value) : value_(value) {}

    void append(const void* bytes, std::size_t count);
    void append(const char* text); // null counts as empty
    void append(const std::string& text) { append(text.c_str()); }
    void append(bool value) { append(&value, sizeof value); }
    void append(int value) { append(&value, sizeof value); }
    void append(unsigned value) { append(&value, sizeof value); }
    void append(float value) { append(&value, sizeof value); }
    void append(double value) { append(&value, sizeof value); }
    void append(U64 value) { append(&value, sizeof value); }
    void append(const Hash& hash) { append(hash.value_); }
    void append(const std::set<int>& values);
    void append(const std::map<int, int>& values);

    template <class T>
    void append(const std::vector<T>& values) {
        append(U64(values.size()));
        for (const T& value : values)
            append(value);
    }

    void reset() { value_ = 0; }
    U64 value() const { return value_; }
    U64 getHash() const { return value_; }

    // Becomes a hash that is unique in this process.
    void newvalue();

    bool operator==(const Hash& other) const { return value_ == other.value_; }
    bool operator!=(const Hash& other) const { return value_ != other.value_; }
    bool operator<(const Hash& other) const { return value_ < other.value_; }

private:
    U64 value_;
};

DDImage_API std::ostream& operator<<(std::ostream& out, const Hash& hash);

} // namespace DD::Image
