// SPDX-License-Identifier: BSD-3-Clause
#include <array>
#include <atomic>
#include <cstring>
#include <DDImage/Hash.h>
#include <iomanip>
#include <ostream>

namespace DD::Image {

// What to add to the remainder when a byte is shifted out of its top eight bits.
static const std::array<U64, 256>& crc_table() {
    static const std::array<U64, 256> table = [] {
        std::array<U64, 256> made;
        for (U64 byte = 0; byte < 256; byte++) {
            U64 remainder = byte << 56;
            for (int bit = 0; bit < 8; bit++)
                remainder = (remainder << 1) ^ (remainder >> 63 ? 0x42F0E1EBA9EA3693u : 0);
            made[byte] = remainder;
        }
        return made;
    }();
    return table;
}

void Hash::append(const void* bytes, std::size_t count) {
    // Shift in zeros and add the bytes at the top: the usual table-driven division.
    const std::array<U64, 256>& table = crc_table();
    const unsigned char* byte = static_cast<const unsigned char*>(bytes);
    for (std::size_t i = 0; i < count; i++)
        value_ = (value_ << 8) ^ table[(value_ >> 56) ^ byte[i]];
}

void Hash::append(const char* text) {
    const char* const shown = text ? text : "";
    append(shown, std::strlen(shown) + 1);
}

void Hash::append(const std::set<int>& values) {
    append(U64(values.size()));
    for (const int value : values)
        append(value);
}

void Hash::append(const std::map<int, int>& values) {
    append(U64(values.size()));
    for (const auto& [key, value] : values) {
        append(key);
        append(value);
    }
}

void Hash::newvalue() {
    static std::atomic<U64> count{0};
    append("new value");
    append(U64(++count));
}

std::ostream& operator<<(std::ostream& out, const Hash& hash) {
    const std::ios_base::fmtflags flags = out.flags();
    out << std::hex << std::setw(16) << std::setfill('0') << hash.value() << std::setfill(' ');
    out.flags(flags);
    return out;
}

} // namespace DD::Image
