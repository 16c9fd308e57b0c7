// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/database_record.h"

#include <cstring>
#include <gtest/gtest.h>

namespace velmora {

// 1.5 is 3ff8..., -2 is c000..., 0.25f is 3e800000, 10 is 4024...
static const unsigned char bytes_by_hand[record_size] = {
    0, 0, 0,    0,    0, 0, 0xf8, 0x3f, 0, 0, 0, 0, 0, 0, 0,    0xc0,
    0, 0, 0x80, 0x3e, 1, 2, 3,    0,    0, 0, 0, 0, 0, 0, 0x24, 0x40,
};

static const star star_by_hand = {1.5, -2, 0.25f, 1, 2, 3, 0xff, 10};

TEST(DatabaseRecord, HasTheBytesWorkedByHand) {
    unsigned char bytes[record_size];
    memset(bytes, 0xaa, sizeof bytes);
    encode_record(star_by_hand, bytes);
    EXPECT_EQ(memcmp(bytes, bytes_by_hand, record_size), 0);
}

TEST(DatabaseRecord, ComesBackFromItsBytes) {
    const star record = decode_record(bytes_by_hand);
    EXPECT_EQ(record.ra, 1.5);
    EXPECT_EQ(record.dec, -2);
    EXPECT_EQ(record.flux, 0.25f);
    EXPECT_EQ(record.red, 1);
    EXPECT_EQ(record.green, 2);
    EXPECT_EQ(record.blue, 3);
    EXPECT_EQ(record.reserved, 0);
    EXPECT_EQ(record.distance, 10);
}

// Every bit of a number comes through: sign, all of the exponent, all of the fraction.
TEST(DatabaseRecord, KeepsEveryBit) {
    const star record = {
        -1.2345678901234567e-300, 9.876543210987654e+300, -1.23456789e-30f, 255, 128, 127, 0, -0.0};
    unsigned char bytes[record_size];
    encode_record(record, bytes);
    const star back = decode_record(bytes);
    EXPECT_EQ(memcmp(&back, &record, sizeof record), 0);
}

TEST(DatabaseHeader, IsTheMagicOfVersion2AndZeros) {
    unsigned char bytes[record_size];
    memset(bytes, 0xaa, sizeof bytes);
    encode_header(bytes);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes), record_size),
              std::string("VELMORA2") + std::string(24, '\0'));
}

TEST(DatabaseHeader, ShowsTheVersionByItsMagic) {
    EXPECT_EQ(version_of_magic("VELMORA1"), 1);
    EXPECT_EQ(version_of_magic("VELMORA2"), 2);
    EXPECT_EQ(version_of_magic("VELMORA3"), 0);
    EXPECT_EQ(version_of_magic("velmora2"), 0);
}

} // namespace velmora
