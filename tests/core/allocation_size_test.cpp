// SPDX-License-Identifier: BSD-3-Clause

// What strings and arrays ask the allocator for.

#include "core/array.h"
#include "core/string.h"
#include "tests/core/allocator.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

typedef std::vector<std::size_t> Sizes;

} // namespace

TEST(AllocationSizes, OfByteArraysAreExact) {
    ByteArray array;
    Allocator allocator;
    array.realloc(10);
    array.grow_to_ool(11);
    EXPECT_EQ(allocator.reallocs, Sizes({10, 20}));
    array.length = 3;
    ByteArray copy(array);
    EXPECT_EQ(allocator.reallocs.size() + allocator.mallocs.size(), 3u);
    EXPECT_EQ((allocator.mallocs.empty() ? allocator.reallocs : allocator.mallocs).back(), 3u);
}

TEST(AllocationSizes, ANeedlessReallocReachesNoAllocator) {
    ByteArray array;
    array.realloc(10);
    Allocator allocator;
    testing::internal::CaptureStderr();
    array.realloc(10);
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(allocator.reallocs.empty());
}

TEST(AllocationSizes, OfStringsAreOneMoreThanTheText) {
    const String three("abc");
    const String counted_source("abcdef");
    struct {
        const char* name;
        std::function<void()> make;
        Sizes mallocs;
    } const cases[] = {
        {"default", [] { String s; }, {}},
        {"text", [] { String s("abc"); }, {4}},
        {"empty text", [] { String s(""); }, {}},
        {"counted", [] { String s("abc", 2); }, {3}},
        {"counted beyond the text", [] { String s("abc", 9); }, {10}},
        {"counted none", [] { String s("abc", 0); }, {}},
        {"character", [] { String s('a'); }, {2}},
        {"NUL character", [] { String s('\0'); }, {2}},
        {"copy", [&] { String s(three); }, {4}},
    };
    for (const auto& c : cases) {
        Allocator allocator;
        c.make();
        EXPECT_EQ(allocator.mallocs, c.mallocs) << c.name;
        EXPECT_TRUE(allocator.reallocs.empty()) << c.name;
    }
}

TEST(AllocationSizes, EveryAppendReallocates) {
    String s("abc");
    const String four("wxyz");
    Allocator allocator;
    s += four;
    s += "12";
    s += 'a';
    s += 'b';
    EXPECT_EQ(allocator.reallocs, Sizes({8, 10, 11, 12}));
    EXPECT_TRUE(allocator.mallocs.empty());
    EXPECT_STREQ(s.str, "abcwxyz12ab");
}

TEST(AllocationSizes, ACharacterAppendedToNothingTakesTwoBytes) {
    String s;
    Allocator allocator;
    s += 'a';
    Sizes asked(allocator.mallocs);
    asked.insert(asked.end(), allocator.reallocs.begin(), allocator.reallocs.end());
    EXPECT_EQ(asked, Sizes({2}));
}

TEST(AllocationSizes, FormattingStartsWith100BytesAndReallocatesOnce) {
    struct {
        std::size_t length;
        Sizes reallocs;
    } const cases[] = {
        {0, {}}, {99, {}}, {100, {101}}, {101, {102}}, {5000, {5001}},
    };
    for (const auto& c : cases) {
        const std::string text(c.length, 'x');
        String s;
        Allocator allocator;
        s.sprintf("%s", text.c_str());
        EXPECT_EQ(allocator.mallocs, Sizes({100})) << c.length;
        EXPECT_EQ(allocator.reallocs, c.reallocs) << c.length;
        EXPECT_EQ(allocator.prints, int(1 + c.reallocs.size())) << c.length;
        EXPECT_EQ(s.str, text);
    }
}

TEST(AllocationSizes, FormattingDoublesWhileTheLengthIsUnknown) {
    const std::string text(150, 'x');
    Allocator allocator;
    allocator.misprint(3);
    const String s(String::fmt("%s", text.c_str()));
    EXPECT_EQ(allocator.reallocs, Sizes({200, 400, 800}));
    EXPECT_EQ(s.str, text);
}
