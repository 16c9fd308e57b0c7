// SPDX-License-Identifier: BSD-3-Clause
#include "core/types.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

template <class T>
constexpr bool is_signed_of(std::size_t bytes) {
    return std::is_integral<T>::value && std::is_signed<T>::value && sizeof(T) == bytes;
}

template <class T>
constexpr bool is_unsigned_of(std::size_t bytes) {
    return std::is_integral<T>::value && std::is_unsigned<T>::value && sizeof(T) == bytes;
}

} // namespace

TEST(Types, HaveTheWidthAndSignOfTheirNames) {
    EXPECT_TRUE(is_signed_of<s32>(4));
    EXPECT_TRUE(is_unsigned_of<u32>(4));
    EXPECT_TRUE(is_signed_of<s64>(8));
    EXPECT_TRUE(is_unsigned_of<u64>(8));
}

TEST(Types, TheMachineWordHas64Bits) {
    EXPECT_TRUE(is_signed_of<sword>(8));
    EXPECT_TRUE(is_unsigned_of<uword>(8));
}

TEST(Types, MinusOneWrapsToTheLargestUnsignedValue) {
    EXPECT_EQ(u32(-1), 4294967295u);
    EXPECT_EQ(u64(-1), 18446744073709551615u);
    EXPECT_EQ(uword(-1), 18446744073709551615u);
}
