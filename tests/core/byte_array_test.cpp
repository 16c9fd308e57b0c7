// SPDX-License-Identifier: BSD-3-Clause
#include "core/array.h"

#include "tests/core/observed.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>

namespace {

const char spurious[] = "warning: spurious realloc in <void ByteArray::realloc(uword)>\n";

// A block of `capacity` bytes of which the first ones hold `text`.
void fill(ByteArray& array, uword capacity, const std::string& text) {
    array.realloc(capacity);
    std::memcpy(array.data, text.data(), text.size());
    array.length = text.size();
}

std::string text_of(const ByteArray& array) {
    return std::string(array.data, array.length);
}

} // namespace

TEST(ByteArray, IsThreeWordsInOrder) {
    EXPECT_EQ(sizeof(ByteArray), 3 * sizeof(uword));
    ByteArray array;
    const char* base = reinterpret_cast<const char*>(&array);
    EXPECT_EQ(reinterpret_cast<const char*>(&array.data) - base, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&array.capacity) - base, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&array.length) - base, 16);
    EXPECT_FALSE(std::is_polymorphic<ByteArray>::value);
}

TEST(ByteArray, StartsWithNothing) {
    ByteArray array;
    EXPECT_EQ(array.data, nullptr);
    EXPECT_EQ(array.capacity, 0u);
    EXPECT_EQ(array.length, 0u);
}

TEST(ByteArray, ReallocSetsTheExactCapacityAndLeavesTheLength) {
    ByteArray array;
    for (uword n : {5, 1, 33, 1000, 999}) {
        EXPECT_EQ(stderr_of([&] { array.realloc(n); }), "");
        EXPECT_NE(array.data, nullptr);
        EXPECT_EQ(array.capacity, n);
        EXPECT_EQ(array.length, 0u);
    }
}

TEST(ByteArray, ReallocKeepsTheBytesThatFit) {
    ByteArray array;
    fill(array, 6, "abcdef");
    array.realloc(100);
    EXPECT_EQ(text_of(array), "abcdef");
    array.length = 3;
    array.realloc(3);
    EXPECT_EQ(text_of(array), "abc");
}

TEST(ByteArray, ReallocToZeroFreesTheBlock) {
    ByteArray array;
    array.realloc(10);
    EXPECT_EQ(stderr_of([&] { array.realloc(0); }), "");
    EXPECT_EQ(array.data, nullptr);
    EXPECT_EQ(array.capacity, 0u);
}

TEST(ByteArray, ReallocToTheCurrentCapacityOnlyWarns) {
    ByteArray array;
    fill(array, 10, "abc");
    const char* block = array.data;
    EXPECT_EQ(stderr_of([&] { array.realloc(10); }), spurious);
    EXPECT_EQ(array.data, block);
    EXPECT_EQ(array.capacity, 10u);
    EXPECT_EQ(text_of(array), "abc");
}

TEST(ByteArray, ReallocOfNothingToNothingWarnsToo) {
    ByteArray array;
    EXPECT_EQ(stderr_of([&] { array.realloc(0); }), spurious);
    EXPECT_EQ(array.data, nullptr);
}

TEST(ByteArray, GrowsFrom32BytesByDoubling) {
    struct {
        uword capacity, asked, grown;
    } const cases[] = {
        {0, 1, 32},      {0, 31, 32},  {0, 32, 32},   {0, 33, 33},    {0, 1000, 1000},
        {32, 33, 64},    {32, 64, 64}, {32, 65, 128}, {32, 100, 128}, {1, 2, 2},
        {1, 1000, 1024}, {3, 4, 6},    {33, 34, 66},  {33, 67, 132},  {1000, 1001, 2000},
    };
    for (const auto& c : cases) {
        ByteArray array;
        if (c.capacity)
            array.realloc(c.capacity);
        EXPECT_EQ(stderr_of([&] { array.grow_to_ool(c.asked); }), "");
        EXPECT_EQ(array.capacity, c.grown) << c.capacity << " to " << c.asked;
    }
}

TEST(ByteArray, GrowingKeepsTheBytes) {
    ByteArray array;
    fill(array, 4, "abcd");
    array.grow_to_ool(5000);
    EXPECT_EQ(array.capacity, 8192u);
    EXPECT_EQ(text_of(array), "abcd");
}

TEST(ByteArray, GrowingToWhatIsThereWarns) {
    for (uword asked : {1, 63, 64}) {
        ByteArray array;
        array.realloc(64);
        EXPECT_EQ(stderr_of([&] { array.grow_to_ool(asked); }), spurious);
        EXPECT_EQ(array.capacity, 64u);
    }
}

TEST(ByteArray, TrimGivesBackWhatLiesBeyondTheLength) {
    ByteArray array;
    fill(array, 100, "abc");
    EXPECT_EQ(stderr_of([&] { array.trim(); }), "");
    EXPECT_EQ(array.capacity, 3u);
    EXPECT_EQ(text_of(array), "abc");
}

TEST(ByteArray, TrimOfAFullBlockDoesNothing) {
    ByteArray array;
    fill(array, 3, "abc");
    const char* block = array.data;
    EXPECT_EQ(stderr_of([&] { array.trim(); }), "");
    EXPECT_EQ(array.data, block);
    EXPECT_EQ(array.capacity, 3u);
}

TEST(ByteArray, TrimToLengthZeroFreesTheBlock) {
    ByteArray array;
    array.realloc(100);
    EXPECT_EQ(stderr_of([&] { array.trim(); }), "");
    EXPECT_EQ(array.data, nullptr);
    EXPECT_EQ(array.capacity, 0u);
}

TEST(ByteArray, TrimOfNothingIsSilent) {
    ByteArray array;
    EXPECT_EQ(stderr_of([&] { array.trim(); }), "");
    EXPECT_EQ(array.data, nullptr);
}

TEST(ByteArray, CopyIsExactInSizeAndIndependent) {
    ByteArray array;
    fill(array, 100, "abc");
    ByteArray copy(array);
    EXPECT_EQ(copy.capacity, 3u);
    EXPECT_EQ(text_of(copy), "abc");
    EXPECT_NE(copy.data, array.data);
    copy.data[0] = 'x';
    EXPECT_EQ(text_of(array), "abc");
    EXPECT_EQ(array.capacity, 100u);
}

TEST(ByteArray, CopyOfLengthZeroAllocatesNothingAndIsSilent) {
    ByteArray array;
    array.realloc(100);
    EXPECT_EQ(stderr_of([&] {
                  ByteArray copy(array);
                  EXPECT_EQ(copy.data, nullptr);
                  EXPECT_EQ(copy.capacity, 0u);
                  EXPECT_EQ(copy.length, 0u);
              }),
              "");
}

TEST(ByteArray, CopyHoldsZeroBytesToo) {
    const std::string bytes("a\0b\0", 4);
    ByteArray array;
    fill(array, 4, bytes);
    EXPECT_EQ(text_of(ByteArray(array)), bytes);
}

TEST(ByteArray, AssignmentIsDeep) {
    ByteArray array, target;
    fill(array, 100, "abc");
    fill(target, 10, "something");
    target = array;
    EXPECT_EQ(text_of(target), "abc");
    EXPECT_NE(target.data, array.data);
    array.data[0] = 'x';
    EXPECT_EQ(text_of(target), "abc");
}

// As a copy is: what the target had allocated is not what it has now.
TEST(ByteArray, AssignmentIsExactInSize) {
    for (const uword allocated : {0, 2, 64}) {
        ByteArray array, target;
        fill(array, 100, "abc");
        if (allocated)
            fill(target, allocated, "x");
        target = array;
        EXPECT_EQ(target.capacity, 3u) << allocated;
        EXPECT_EQ(target.length, 3u) << allocated;
        EXPECT_EQ(array.capacity, 100u) << allocated;
    }
}

TEST(ByteArray, MayBeAssignedToItself) {
    ByteArray array;
    fill(array, 10, "abc");
    ByteArray& same = array;
    array = same;
    EXPECT_EQ(text_of(array), "abc");
}
