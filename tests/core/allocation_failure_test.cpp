// SPDX-License-Identifier: BSD-3-Clause

// Strings, arrays and exceptions when the allocator is empty.

#include "core/array.h"
#include "core/string.h"
#include "core/xception.h"
#include "tests/core/allocator.h"
#include "tests/core/observed.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <new>
#include <string>

namespace {

std::string out_of_memory(uword current, uword asked) {
    return "out of memory (current size " + std::to_string(current) +
           " bytes, failed allocation of " + std::to_string(asked) +
           " bytes) in <void ByteArray::realloc(uword)> (array:LINE)";
}

// A formatting failure: how a function local to its file is spelled is the compiler's affair.
void expect_formatting_failure(const std::string& message) {
    const std::string start = "out of memory in <", end = "> (string:LINE)";
    EXPECT_EQ(message.compare(0, start.size(), start), 0) << message;
    EXPECT_EQ(message.find(end), message.size() - end.size()) << message;
    EXPECT_NE(message.find("my_vsnprintf("), std::string::npos) << message;
}

} // namespace

// ---- Arrays ----------------------------------------------------------------------------------

TEST(AllocationFailure, LeavesAByteArrayAsItWas) {
    struct {
        uword capacity, asked;
    } const cases[] = {{0, 64}, {0, 1}, {32, 64}, {32, 16}, {5, 1000000}};
    for (const auto& c : cases) {
        ByteArray array;
        if (c.capacity) {
            array.realloc(c.capacity);
            std::memcpy(array.data, "abc", 3);
            array.length = 3;
        }
        const char* block = array.data;
        {
            Allocator allocator;
            allocator.refuse(1);
            EXPECT_EQ(message_without_line_of([&] { array.realloc(c.asked); }),
                      out_of_memory(c.capacity, c.asked));
            allocator.freed(array.data); // still the array's
        }
        EXPECT_EQ(array.data, block);
        EXPECT_EQ(array.capacity, c.capacity);
        ASSERT_EQ(array.length, c.capacity ? 3u : 0u);
        EXPECT_EQ(std::string(array.data ? array.data : "", array.length), c.capacity ? "abc" : "");
    }
}

TEST(AllocationFailure, MessageHoldsSizesOfAnyMagnitude) {
    ByteArray array;
    Allocator allocator;
    allocator.refuse_above(1000000);
    EXPECT_EQ(message_without_line_of([&] { array.realloc(18446744073709551615ul); }),
              out_of_memory(0, 18446744073709551615ul));
}

TEST(AllocationFailure, FreeingIsNoFailure) {
    ByteArray array;
    array.realloc(10);
    EXPECT_NO_THROW(array.realloc(0)); // the system's realloc gives null here
    EXPECT_EQ(array.data, nullptr);
}

TEST(AllocationFailure, OfGrowingNamesTheDoubledSize) {
    ByteArray array;
    array.realloc(32);
    Allocator allocator;
    allocator.refuse(1);
    EXPECT_EQ(message_without_line_of([&] { array.grow_to_ool(33); }), out_of_memory(32, 64));
    allocator.freed(array.data);
    EXPECT_EQ(array.capacity, 32u);
}

TEST(AllocationFailure, LeavesATypedArrayAsItWas) {
    Array<String> array;
    for (const char* text : {"a", "b", "c", "d"})
        array.append(text);
    const String more("e");
    Allocator allocator;
    allocator.refuse(1);
    EXPECT_EQ(message_without_line_of([&] { array.append(more); }), out_of_memory(32, 64));
    allocator.freed(array.data);
    ASSERT_EQ(array.len(), 4u);
    EXPECT_STREQ(array[3].str, "d");
    array.append(more);
    EXPECT_STREQ(array[4].str, "e");
}

TEST(AllocationFailure, OfACopyThrowsAndLeavesTheSource) {
    Array<String> array;
    array.append("a");
    ByteArray& block = array;
    Allocator allocator;
    allocator.refuse(1);
    EXPECT_EQ(message_without_line_of([&] { Array<String> copy(array); }), out_of_memory(0, 8));
    allocator.refuse(1);
    EXPECT_EQ(message_without_line_of([&] { ByteArray copy(block); }), out_of_memory(0, 8));
    EXPECT_STREQ(array[0].str, "a");
}

TEST(AllocationFailure, OfAnAssignmentLeavesTheTarget) {
    Array<String> array, target;
    array.append("a");
    target.append("b");
    Allocator allocator;
    allocator.refuse(1);
    EXPECT_EQ(message_without_line_of([&] { target = array; }), out_of_memory(0, 8));
    ASSERT_EQ(target.len(), 1u);
    EXPECT_STREQ(target[0].str, "b");
}

// ---- Formatting ------------------------------------------------------------------------------

TEST(AllocationFailure, OfTheFirstBufferThrows) {
    Allocator allocator;
    allocator.refuse(1);
    expect_formatting_failure(message_without_line_of([] { String::fmt("%d", 1); }));
}

TEST(AllocationFailure, OfTheBufferForALongResultThrows) {
    const std::string text(500, 'x');
    Allocator allocator;
    allocator.refuse(2);
    expect_formatting_failure(message_without_line_of([&] { String::fmt("%s", text.c_str()); }));
    EXPECT_EQ(allocator.reallocs.front(), 501u);
}

TEST(AllocationFailure, OfEveryDoublingThrows) {
    for (int doubling = 1; doubling <= 3; doubling++) {
        Allocator allocator;
        allocator.misprint(3);
        allocator.refuse(1 + doubling);
        expect_formatting_failure(message_without_line_of([] { String::fmt("%d", 1); }));
    }
}

// The longest text that printf gives a length for; one byte more is beyond an int.
TEST(AllocationFailure, OfTheBufferForTheLongestResultNamesItsSize) {
    Allocator allocator;
    allocator.misprint(1, 2147483647);
    allocator.refuse_above(1000000);
    expect_formatting_failure(message_without_line_of([] { String::fmt("%d", 1); }));
    EXPECT_EQ(allocator.reallocs.front(), 2147483648u);
}

TEST(AllocationFailure, EndsAFormatThatNeverFits) {
    Allocator allocator;
    allocator.misprint(9); // 100 bytes doubled to 51200, then refused
    allocator.refuse_above(50000);
    expect_formatting_failure(message_without_line_of([] { String::fmt("%d", 1); }));
    EXPECT_EQ(allocator.reallocs[8], 51200u);
}

// A format that never fits asks for 100 * 2^k bytes until the allocator has had enough, which may
// be beyond what 32 bits count.
TEST(AllocationFailure, EndsAFormatThatNeverFitsBeyondTwoGigabytes) {
    const std::size_t gigabyte = std::size_t(1) << 30;
    Allocator allocator;
    allocator.pretend_above(1000000);
    allocator.misprint(26);
    allocator.refuse_above(4 * gigabyte);
    expect_formatting_failure(message_without_line_of([] { String::fmt("%d", 1); }));
    ASSERT_GE(allocator.reallocs.size(), 26u); // the last asks for 6.25 gigabytes
    for (std::size_t k = 0; k < 26; k++)
        ASSERT_EQ(allocator.reallocs[k], std::size_t(200) << k);
}

TEST(AllocationFailure, LeavesTheTextThatWasToBeReplaced) {
    String s("old");
    Allocator allocator;
    allocator.refuse(1);
    expect_formatting_failure(message_without_line_of([&] { s.sprintf("%d", 1); }));
    EXPECT_STREQ(s.str, "old");
}

// ---- An allocator that stays empty -----------------------------------------------------------

TEST(AllocationFailure, ForGoodStillEndsInAnException) {
    const std::string text(500, 'x');
    ByteArray array;
    const struct {
        const char* name;
        std::function<void()> action;
    } cases[] = {
        {"a formatted text", [] { String::fmt("%d", 1); }},
        {"a long formatted text", [&] { String::fmt("%s", text.c_str()); }},
        {"a byte array", [&] { array.realloc(64); }},
        {"an exception", [] { StrXception("f", "g", 1, "text"); }},
        {"a long exception", [&] { StrXception("f", "g", 1, "%s", text.c_str()); }},
    };
    for (const auto& c : cases) {
        for (int from = 1; from <= 2; from++) {
            bool thrown = false, finished = false;
            {
                Allocator allocator;
                allocator.refuse(from, true);
                try {
                    c.action();
                    finished = true;
                } catch (Xception&) {
                    thrown = true;
                } catch (std::bad_alloc&) {
                    thrown = true;
                }
                // From the second call on, a short text of one allocation may well succeed.
                EXPECT_TRUE(thrown || (finished && from == 2)) << c.name << ' ' << from;
            }
            if (array.capacity)
                array.realloc(0);
        }
    }
}

TEST(AllocationFailure, WhileAnExceptionIsBuiltPropagates) {
    for (int n = 1; n <= 2; n++) {
        const std::string text(500, 'x');
        Allocator allocator;
        allocator.refuse(n);
        expect_formatting_failure(
            message_without_line_of([&] { throw StrXception("f", "g", 1, "%s", text.c_str()); }));
    }
}

TEST(AllocationFailure, AssertionsAllocateNothing) {
    Allocator allocator;
    allocator.refuse(1, true);
    try {
        throw AssertXception("a", "b", "c", 1);
    } catch (Xception&) {
    }
    EXPECT_TRUE(allocator.mallocs.empty());
    EXPECT_TRUE(allocator.reallocs.empty());
}
