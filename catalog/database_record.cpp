// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/database_record.h"

#include <cstring>
#include <limits>

namespace velmora {

static_assert(std::numeric_limits<double>::is_iec559 && sizeof(double) == 8 &&
                  std::numeric_limits<float>::is_iec559 && sizeof(float) == 4,
              "numbers have the file's form");

// Writes a number's bits, least significant byte first.
template <class Bits, class Number>
static void put(Number number, unsigned char* bytes) {
    static_assert(sizeof(Bits) == sizeof(Number), "as many bits as the number has");
    Bits bits;
    memcpy(&bits, &number, sizeof bits);
    for (uword i = 0; i < sizeof bits; i++)
        bytes[i] = static_cast<unsigned char>(bits >> (8 * i));
}

// Reads what put() wrote; every pattern of bits is a number.
template <class Bits, class Number>
static void get(const unsigned char* bytes, Number& number) {
    static_assert(sizeof(Bits) == sizeof(Number), "as many bits as the number has");
    Bits bits = 0;
    for (uword i = 0; i < sizeof bits; i++)
        bits |= Bits(bytes[i]) << (8 * i);
    memcpy(&number, &bits, sizeof bits);
}

void encode_header(unsigned char* bytes) {
    memset(bytes, 0, record_size);
    memcpy(bytes, magic_2, magic_size);
}

void encode_record(const star& record, unsigned char* bytes) {
    put<u64>(record.ra, bytes);
    put<u64>(record.dec, bytes + 8);
    put<u32>(record.flux, bytes + 16);
    bytes[20] = record.red;
    bytes[21] = record.green;
    bytes[22] = record.blue;
    bytes[23] = 0;
    put<u64>(record.distance, bytes + 24);
}

star decode_record(const unsigned char* bytes) {
    star record;
    get<u64>(bytes, record.ra);
    get<u64>(bytes + 8, record.dec);
    get<u32>(bytes + 16, record.flux);
    record.red = bytes[20];
    record.green = bytes[21];
    record.blue = bytes[22];
    record.reserved = bytes[23];
    get<u64>(bytes + 24, record.distance);
    return record;
}

} // namespace velmora
