// SPDX-License-Identifier: BSD-3-Clause
#include "core/array.h"

#include "core/string.h"
#include "core/xception.h"
#include "tests/core/observed.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace {

// Writes "+n" when made from a number, "=n" when copied and "-n" when destroyed.
struct Witness {
    static std::string log;

    explicit Witness(int number) : number(number) { log += "+" + std::to_string(number); }
    Witness(const Witness& other) : number(other.number) { log += "=" + std::to_string(number); }
    ~Witness() { log += "-" + std::to_string(number); }

    int number;
};
std::string Witness::log;

// Can be copied until `copies_left` is used up.
struct Fragile {
    static int alive, copies_left;

    Fragile() { ++alive; }
    Fragile(const Fragile&) {
        if (copies_left == 0)
            throw AssertXception("copies_left > 0", "array_test", "Fragile", 1);
        --copies_left;
        ++alive;
    }
    ~Fragile() { --alive; }
};
int Fragile::alive = 0;
int Fragile::copies_left = 0;

struct Forty {
    char bytes[40];
};

Array<String> array_of(const std::vector<const char*>& texts) {
    Array<String> array;
    for (const char* text : texts)
        array.append(text);
    return array;
}

std::vector<std::string> texts_of(const Array<String>& array) {
    std::vector<std::string> texts;
    for (uword i = 0; i < array.len(); i++)
        texts.push_back(array[i].str ? array[i].str : "(null)");
    return texts;
}

typedef std::vector<std::string> Texts;

} // namespace

TEST(Array, IsAByteArrayAndNothingMore) {
    EXPECT_TRUE((std::is_base_of<ByteArray, Array<String>>::value));
    EXPECT_EQ(sizeof(Array<String>), sizeof(ByteArray));
    EXPECT_EQ(sizeof(Array<char>), sizeof(ByteArray));
}

TEST(Array, StartsWithNothing) {
    Array<int> array;
    EXPECT_EQ(array.len(), 0u);
    EXPECT_EQ(array.data, nullptr);
    EXPECT_EQ(array.capacity, 0u);
}

TEST(Array, LengthCountsBytesAndLenElements) {
    Array<int> array;
    for (int i = 0; i < 5; i++)
        array.append(i * 10);
    EXPECT_EQ(array.length, 20u);
    EXPECT_EQ(array.len(), 5u);
    array.length += 3;
    EXPECT_EQ(array.len(), 5u);
    array.length -= 3;
}

TEST(Array, ElementsStandBackToBackFromData) {
    Array<int> array;
    for (int i = 0; i < 100; i++)
        array.append(i * i);
    for (uword i = 0; i < 100; i++) {
        EXPECT_EQ(reinterpret_cast<char*>(&array[i]), array.data + i * sizeof(int));
        EXPECT_EQ(array[i], int(i * i));
    }
}

TEST(Array, ElementsCanBeWritten) {
    Array<int> array;
    array.append(1);
    array[0] = 7;
    const Array<int>& same = array;
    EXPECT_EQ(same[0], 7);
}

TEST(Array, AppendGrowsByTheRuleAndNeverNeedlessly) {
    Array<int> ints;
    Array<Forty> forties;
    EXPECT_EQ(stderr_of([&] {
                  for (uword n = 1; n <= 1000; n++) {
                      ints.append(0);
                      uword expected = 32;
                      while (expected < n * sizeof(int))
                          expected *= 2;
                      ASSERT_EQ(ints.capacity, expected) << n;
                  }
                  for (uword expected : {40, 80, 160, 160, 320}) {
                      forties.append(Forty());
                      ASSERT_EQ(forties.capacity, expected);
                  }
              }),
              "");
}

TEST(Array, AppendCopiesTheElementOnce) {
    {
        Witness one(1);
        Array<Witness> array;
        Witness::log.clear();
        array.append(one);
        EXPECT_EQ(Witness::log, "=1");
        EXPECT_EQ(array[0].number, 1);
    }
    Witness::log.clear();
}

TEST(Array, GrowingMovesTheElementsWithoutCopyingThem) {
    {
        Array<Witness> array;
        for (int i = 0; i < 8; i++)
            array.append(Witness(i));
        ASSERT_EQ(array.length, array.capacity);
        Witness nine(9);
        Witness::log.clear();
        array.append(nine);
        EXPECT_EQ(Witness::log, "=9");
    }
    Witness::log.clear();
}

TEST(Array, DestroysItsElementsFromTheLastToTheFirst) {
    {
        Array<Witness> array;
        for (int i = 1; i <= 3; i++)
            array.append(Witness(i));
        Witness::log.clear();
    }
    EXPECT_EQ(Witness::log, "-3-2-1");
    Witness::log.clear();
}

TEST(Array, ClearDestroysFromTheLastAndKeepsTheBlock) {
    Array<Witness> array;
    for (int i = 1; i <= 3; i++)
        array.append(Witness(i));
    const char* block = array.data;
    Witness::log.clear();
    array.clear();
    EXPECT_EQ(Witness::log, "-3-2-1");
    EXPECT_EQ(array.len(), 0u);
    EXPECT_EQ(array.length, 0u);
    EXPECT_EQ(array.data, block);
    EXPECT_EQ(array.capacity, 32u);
    Witness::log.clear();
}

TEST(Array, CanBeFilledAgainAfterClear) {
    Array<String> array = array_of({"a", "b"});
    array.clear();
    array.append("c");
    EXPECT_EQ(texts_of(array), Texts({"c"}));
}

TEST(Array, ClearOfNothingDoesNothing) {
    Array<String> array;
    array.clear();
    EXPECT_EQ(array.data, nullptr);
}

TEST(Array, CopiesAreDeepAndExactInSize) {
    Array<String> array = array_of({"a", "b", "c"});
    Array<String> copy(array);
    EXPECT_EQ(copy.capacity, 3 * sizeof(String));
    EXPECT_EQ(copy.length, 3 * sizeof(String));
    EXPECT_NE(copy[0].str, array[0].str);
    array[0] = "x";
    EXPECT_EQ(texts_of(copy), Texts({"a", "b", "c"}));
    EXPECT_EQ(texts_of(array), Texts({"x", "b", "c"}));
}

TEST(Array, CopyOfNothingIsNothing) {
    Array<String> array = array_of({"a"});
    array.clear();
    EXPECT_EQ(stderr_of([&] {
                  Array<String> copy(array);
                  EXPECT_EQ(copy.data, nullptr);
                  EXPECT_EQ(copy.capacity, 0u);
              }),
              "");
}

TEST(Array, AssignmentReplacesAndIsDeep) {
    Array<String> array = array_of({"a", "b"});
    Array<String> target = array_of({"x", "y", "z"});
    target = array;
    array[0] = "changed";
    EXPECT_EQ(texts_of(target), Texts({"a", "b"}));
}

TEST(Array, AssignmentDestroysWhatWasThere) {
    {
        Array<Witness> array, target;
        array.append(Witness(1));
        target.append(Witness(8));
        target.append(Witness(9));
        Witness::log.clear();
        target = array;
        EXPECT_EQ(Witness::log, "=1-9-8");
    }
    Witness::log.clear();
}

TEST(Array, MayBeAssignedToItself) {
    Array<String> array = array_of({"a", "b"});
    Array<String>& same = array;
    array = same;
    EXPECT_EQ(texts_of(array), Texts({"a", "b"}));
}

TEST(Array, MayAppendItsOwnElements) {
    Array<String> array = array_of({"a"});
    for (int i = 0; i < 100; i++)
        array.append(array[0]);
    EXPECT_EQ(array.len(), 101u);
    for (const std::string& text : texts_of(array))
        EXPECT_EQ(text, "a");
}

TEST(Array, IsAsItWasWhenAnElementCannotBeCopied) {
    {
        const Fragile one;
        Array<Fragile> array;
        Fragile::copies_left = 2;
        array.append(one);
        array.append(one);
        EXPECT_THROW(array.append(one), Xception);
        EXPECT_EQ(array.len(), 2u);
    }
    EXPECT_EQ(Fragile::alive, 0);
}

TEST(Array, AHalfMadeCopyDestroysItsElements) {
    {
        const Fragile one;
        Array<Fragile> array;
        Fragile::copies_left = 5;
        array.append(one);
        array.append(one);
        array.append(one);
        EXPECT_THROW(Array<Fragile> copy(array), Xception);
        EXPECT_EQ(Fragile::alive, 4);
    }
    EXPECT_EQ(Fragile::alive, 0);
    Fragile::alive = 0;
}

TEST(Array, OwnsTheStringsItHolds) {
    Array<String> array;
    String text("abc");
    array.append(text);
    text = "changed";
    EXPECT_EQ(texts_of(array), Texts({"abc"}));
}

TEST(Array, TrimKeepsTheElements) {
    Array<String> array = array_of({"a", "b", "c"});
    array.trim();
    EXPECT_EQ(array.capacity, 3 * sizeof(String));
    EXPECT_EQ(texts_of(array), Texts({"a", "b", "c"}));
    array.append("d");
    EXPECT_EQ(array.capacity, 6 * sizeof(String));
    EXPECT_EQ(texts_of(array), Texts({"a", "b", "c", "d"}));
}
