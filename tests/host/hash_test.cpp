// SPDX-License-Identifier: BSD-3-Clause
#include <cstring>
#include <DDImage/Hash.h>
#include <gtest/gtest.h>
#include <sstream>
#include <thread>

using DD::Image::Hash;
using DD::Image::U64;

// The remainder bit by bit, as on paper.
static U64 remainder_of(const std::string& bytes) {
    U64 remainder = 0;
    for (const char c : bytes) {
        for (int bit = 7; bit >= 0; bit--) {
            const bool out = (remainder >> 63) != 0, in = (c >> bit & 1) != 0;
            remainder = remainder << 1 ^ (out != in ? 0x42F0E1EBA9EA3693u : 0);
        }
    }
    return remainder;
}

template <class T>
static std::string bytes_of(T value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

template <class T>
static U64 hash_of(const T& value) {
    Hash hash;
    hash.append(value);
    return hash.value();
}

TEST(Hash, IsTheCyclicRedundancyCheckOfEcma182) {
    Hash hash;
    hash.append("123456789", 9);
    EXPECT_EQ(hash.value(), 0x6C40DF5F0B497347u); // the polynomial's published check value
    EXPECT_EQ(hash.getHash(), hash.value());
    EXPECT_EQ(remainder_of("123456789"), 0x6C40DF5F0B497347u);
}

TEST(Hash, GoesOnWhereItStopped) {
    Hash hash;
    hash.append("1234", 4);
    hash.append("", std::size_t(0));
    hash.append("56789", 5);
    EXPECT_EQ(hash.value(), 0x6C40DF5F0B497347u);
    Hash second(hash.value());
    hash.append("x", 1);
    second.append("x", 1);
    EXPECT_EQ(hash, second);
}

TEST(Hash, CountsNumbersByTheirBytes) {
    EXPECT_EQ(hash_of(true), remainder_of("\x01"));
    EXPECT_EQ(hash_of(-7), remainder_of(bytes_of(-7)));
    EXPECT_EQ(hash_of(7u), remainder_of(bytes_of(7u)));
    EXPECT_EQ(hash_of(0.1f), remainder_of(bytes_of(0.1f)));
    EXPECT_EQ(hash_of(0.1), remainder_of(bytes_of(0.1)));
    EXPECT_EQ(hash_of(U64(1) << 40), remainder_of(bytes_of(U64(1) << 40)));
    EXPECT_EQ(hash_of(Hash(99)), remainder_of(bytes_of(U64(99))));
}

TEST(Hash, CountsTheEndOfATextToo) {
    const std::string ab_and_nul("ab\0", 3);
    EXPECT_EQ(hash_of("ab"), remainder_of(ab_and_nul));
    EXPECT_EQ(hash_of(std::string("ab")), remainder_of(ab_and_nul));
    Hash one, other;
    one.append("ab");
    one.append("c");
    other.append("a");
    other.append("bc");
    EXPECT_NE(one, other);

    Hash null(1), empty(1);
    null.append(static_cast<const char*>(nullptr));
    empty.append("");
    EXPECT_EQ(null, empty);
}

TEST(Hash, TellsLongerContainersFromShorterOnes) {
    EXPECT_EQ(hash_of(std::vector<int>{3, 4}),
              remainder_of(bytes_of(U64(2)) + bytes_of(3) + bytes_of(4)));
    EXPECT_EQ(hash_of(std::set<int>{4, 3}),
              remainder_of(bytes_of(U64(2)) + bytes_of(3) + bytes_of(4)));
    EXPECT_EQ(hash_of(std::map<int, int>{{3, 4}}),
              remainder_of(bytes_of(U64(1)) + bytes_of(3) + bytes_of(4)));
    Hash one, other;
    one.append(std::vector<int>{0, 0});
    one.append(std::vector<int>{0});
    other.append(std::vector<int>{0});
    other.append(std::vector<int>{0, 0});
    EXPECT_NE(one, other);
}

TEST(Hash, MakesValuesThatNoOtherHasHad) {
    std::set<U64> seen;
    Hash hash;
    for (int i = 0; i < 1000; i++) {
        hash.newvalue();
        EXPECT_TRUE(seen.insert(hash.value()).second);
        Hash fresh;
        fresh.newvalue();
        EXPECT_TRUE(seen.insert(fresh.value()).second);
    }
}

TEST(Hash, MakesNewValuesInSeveralThreads) {
    Hash hashes[4];
    std::vector<std::thread> threads;
    for (Hash& hash : hashes)
        threads.emplace_back([&hash] { hash.newvalue(); });
    for (std::thread& thread : threads)
        thread.join();
    std::set<U64> values;
    for (const Hash& hash : hashes)
        values.insert(hash.value());
    EXPECT_EQ(values.size(), 4u);
}

TEST(Hash, IsEmptyAgainAfterAReset) {
    Hash hash(5);
    hash.reset();
    EXPECT_EQ(hash, Hash());
    EXPECT_EQ(hash.value(), 0u);
    EXPECT_LT(Hash(4), Hash(5));
    EXPECT_FALSE(Hash(5) < Hash(5));
}

TEST(Hash, PrintsSixteenDigitsAndLeavesTheStreamAsItWas) {
    std::ostringstream out;
    out << Hash(0xABCDEF) << ' ' << 255;
    EXPECT_EQ(out.str(), "0000000000abcdef 255");
}
