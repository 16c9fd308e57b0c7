// SPDX-License-Identifier: BSD-3-Clause
#include "core/string.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <string>
#include <type_traits>

namespace {

const char* const no_text = nullptr;

// A String that holds no characters but is not null.
String allocated_empty() {
    return String('\0');
}

std::string bytes(const String& s, std::size_t n) {
    return std::string(s.str, n);
}

} // namespace

// ---- Making, copying, clearing ---------------------------------------------------------------

TEST(String, IsOnePointer) {
    EXPECT_EQ(sizeof(String), sizeof(char*));
    EXPECT_FALSE(std::is_polymorphic<String>::value);
}

TEST(String, EmptyIsNull) {
    EXPECT_EQ(String().str, nullptr);
    EXPECT_EQ(String("").str, nullptr);
    EXPECT_EQ(String(no_text).str, nullptr);
    EXPECT_EQ(String("abc", 0).str, nullptr);
    EXPECT_EQ(String(no_text, 0).str, nullptr);
}

TEST(String, CopiesTheTextItIsMadeFrom) {
    char text[] = "abc";
    String s(text);
    text[0] = 'x';
    EXPECT_STREQ(s.str, "abc");
}

TEST(String, ConvertsFromTextsAndCharacters) {
    String from_text = "abc";
    String from_char = 'a';
    EXPECT_STREQ(from_text.str, "abc");
    EXPECT_STREQ(from_char.str, "a");
}

TEST(String, CountedTextIsFilledWithNulsAndTerminated) {
    struct {
        const char* text;
        unsigned count;
        std::string stored;
    } const cases[] = {
        {"abc", 1, std::string("a\0", 2)},         {"abc", 2, std::string("ab\0", 3)},
        {"abc", 3, std::string("abc\0", 4)},       {"abc", 6, std::string("abc\0\0\0\0", 7)},
        {"a\0bc", 4, std::string("a\0\0\0\0", 5)}, {"", 2, std::string("\0\0\0", 3)},
    };
    for (const auto& c : cases) {
        String s(c.text, c.count);
        ASSERT_NE(s.str, nullptr) << c.text << ' ' << c.count;
        EXPECT_EQ(bytes(s, c.count + 1), c.stored) << c.text << ' ' << c.count;
    }
}

TEST(String, CountedTextReadsNoFurtherThanItsCount) {
    const char unterminated[3] = {'a', 'b', 'c'};
    EXPECT_STREQ(String(unterminated, 3).str, "abc");
    EXPECT_STREQ(String(unterminated, 2).str, "ab");
}

TEST(String, ASingleCharacterIsAlwaysAllocated) {
    EXPECT_EQ(bytes(String('a'), 2), std::string("a\0", 2));
    String nul('\0');
    ASSERT_NE(nul.str, nullptr);
    EXPECT_EQ(bytes(nul, 2), std::string("\0\0", 2));
    EXPECT_EQ(nul.len(), 0u);
}

TEST(String, CopyDuplicates) {
    String a("abc");
    String b(a);
    EXPECT_NE(a.str, b.str);
    b.str[0] = 'x';
    EXPECT_STREQ(a.str, "abc");
}

TEST(String, CopyOfAnEmptyTextIsNull) {
    const String null, allocated(allocated_empty());
    EXPECT_EQ(String(null).str, nullptr);
    EXPECT_EQ(String(allocated).str, nullptr);
}

TEST(String, AssignmentDuplicates) {
    String a("abc"), b("longer than that");
    b = a;
    EXPECT_STREQ(b.str, "abc");
    EXPECT_NE(a.str, b.str);
    b = "text";
    EXPECT_STREQ(b.str, "text");
    EXPECT_STREQ(a.str, "abc");
}

TEST(String, AssigningAnEmptyTextGivesNull) {
    String s("abc");
    s = "";
    EXPECT_EQ(s.str, nullptr);
    s = "abc";
    s = no_text;
    EXPECT_EQ(s.str, nullptr);
    s = "abc";
    s = String();
    EXPECT_EQ(s.str, nullptr);
    s = "abc";
    const String allocated(allocated_empty());
    s = allocated;
    EXPECT_EQ(s.str, nullptr);
}

TEST(String, MayBeAssignedToItself) {
    String s("abc");
    String& same = s;
    s = same;
    EXPECT_STREQ(s.str, "abc");
    s = s.str;
    EXPECT_STREQ(s.str, "abc");
    s = s.str + 1;
    EXPECT_STREQ(s.str, "bc");
}

TEST(String, AssignmentChains) {
    String a, b, c("abc");
    a = b = c;
    EXPECT_STREQ(a.str, "abc");
    (a = "x") = "y";
    EXPECT_STREQ(a.str, "y");
}

TEST(String, ClearGivesNull) {
    String s("abc");
    s.clear();
    EXPECT_EQ(s.str, nullptr);
    s.clear();
    EXPECT_EQ(s.str, nullptr);
}

// ---- Reading ---------------------------------------------------------------------------------

TEST(String, LengthIsThatOfTheText) {
    EXPECT_EQ(String().len(), 0u);
    EXPECT_EQ(String("a").len(), 1u);
    EXPECT_EQ(String("abc").len(), 3u);
    EXPECT_EQ(String("a\0bc", 4).len(), 1u);
    EXPECT_EQ(String(std::string(100000, 'x').c_str()).len(), 100000u);
    EXPECT_TRUE((std::is_same<decltype(String().len()), uword>::value));
}

TEST(String, HashHasTheseValues) {
    struct {
        const char* text;
        u32 hash;
    } const cases[] = {
        {"", 0},
        {"a", 17138},                 // (6 + 1552) * 11
        {"ab", 205832},               // (17138 + 6 + 1568) * 11
        {"\x80", 4294967296 - 22616}, // (-8 - 2048) * 11
        {"\xff", 4294967296 - 187},   // (-1 - 16) * 11
        {"a\xe9"
         "b",
         2046242},                   // (((17138 - 2 - 368) * 11) + 6 + 1568) * 11
        {"perspective", 3937769014}, // more than 32 bits of products
        {"The quick brown fox jumps over the lazy dog", 2273351684},
    };
    for (const auto& c : cases)
        EXPECT_EQ(String(c.text).hash(), c.hash) << c.text;
    EXPECT_EQ(allocated_empty().hash(), 0u);
    EXPECT_TRUE((std::is_same<decltype(String().hash()), u32>::value));
}

TEST(String, HashFollowsItsFormulaForEveryByte) {
    for (int b = 1; b < 256; b++) {
        const s64 value = b < 128 ? b : b - 256;
        const s64 high = (value - (((value % 16) + 16) % 16)) / 16; // rounded down
        const char text[] = {char(b), 0};
        EXPECT_EQ(String(text).hash(), u32((high + 16 * value) * 11)) << b;
    }
}

TEST(String, AtoiReadsADecimalNumberAsFarAsItGoes) {
    struct {
        const char* text;
        long value;
    } const cases[] = {
        {"", 0},
        {"0", 0},
        {"42", 42},
        {"-7", -7},
        {"  +13", 13},
        {"12abc", 12},
        {"abc", 0},
        {"0x10", 0},
        {"010", 10},
        {"1e3", 1},
        {"5000000000", 5000000000},
        {"9223372036854775807", LONG_MAX},
        {"9223372036854775808", LONG_MAX},
        {"-99999999999999999999", LONG_MIN},
    };
    for (const auto& c : cases)
        EXPECT_EQ(String(c.text).atoi(), c.value) << c.text;
    EXPECT_TRUE((std::is_same<decltype(String().atoi()), long>::value));
}

TEST(String, AtofReadsANumberAsFarAsItGoes) {
    struct {
        const char* text;
        double value;
    } const cases[] = {
        {"", 0.0},    {"1.5", 1.5},   {"-2.25e2x", -225.0}, {" .5", 0.5},
        {"abc", 0.0}, {"0x10", 16.0}, {"1e400", HUGE_VAL},  {"3 4", 3.0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(String(c.text).atof(), c.value) << c.text;
}

TEST(String, FindsTheFirstAndTheLastCharacter) {
    const u32 none = 4294967295u;
    struct {
        const char* text;
        char ch;
        u32 first, last;
    } const cases[] = {
        {"", 'a', none, none},
        {"abc", 'x', none, none},
        {"abc", 'a', 0, 0},
        {"abc", 'c', 2, 2},
        {"banana", 'a', 1, 5},
        {"a\xff"
         "b\xff",
         '\xff', 1, 3},
        {"aaaa", 'a', 0, 3},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(String(c.text).find(c.ch), c.first) << c.text;
        EXPECT_EQ(String(c.text).findr(c.ch), c.last) << c.text;
    }
    EXPECT_TRUE((std::is_same<decltype(String().find('a')), u32>::value));
    EXPECT_TRUE((std::is_same<decltype(String().findr('a')), u32>::value));
}

// The terminator is not a character of the text.
TEST(String, NeverFindsANul) {
    for (const String& text : {String(), String("abc"), String('\0'), String("ab", 9)}) {
        EXPECT_EQ(text.find('\0'), 4294967295u);
        EXPECT_EQ(text.findr('\0'), 4294967295u);
    }
}

TEST(String, FindsTheFirstOccurrenceOfAText) {
    const u32 none = 4294967295u;
    struct {
        const char* text;
        const char* part;
        u32 index;
    } const cases[] = {
        {"", "a", none},     {"", "", 0},           {"abc", "", 0},
        {"abc", "abc", 0},   {"abc", "abcd", none}, {"banana", "an", 1},
        {"banana", "na", 2}, {"banana", "nan", 2},  {"banana", "nb", none},
    };
    for (const auto& c : cases)
        EXPECT_EQ(String(c.text).find(c.part), c.index) << c.text << ' ' << c.part;
    EXPECT_TRUE((std::is_same<decltype(String().find("a")), u32>::value));
}

TEST(String, AbsenceWidensToTheLargest32BitValue) {
    const u64 widened = String("abc").find('x');
    EXPECT_EQ(widened, 4294967295u);
}

// ---- Appending -------------------------------------------------------------------------------

TEST(String, AppendsTextsOfEitherKind) {
    struct {
        const char *left, *right, *result;
    } const cases[] = {
        {"", "", nullptr},    {"", "abc", "abc"},       {"abc", "", "abc"},
        {"abc", "d", "abcd"}, {"a", "bcdef", "abcdef"},
    };
    for (const auto& c : cases) {
        String from_string(c.left), from_text(c.left);
        from_string += String(c.right);
        from_text += c.right;
        EXPECT_STREQ(from_string.str, c.result);
        EXPECT_STREQ(from_text.str, c.result);
        EXPECT_STREQ((String(c.left) + String(c.right)).str, c.result);
        EXPECT_STREQ((String(c.left) + c.right).str, c.result);
    }
}

TEST(String, AppendsToAnAllocatedEmptyText) {
    String a(allocated_empty()), b(allocated_empty()), c(allocated_empty());
    a += String("abc");
    b += "abc";
    c += 'a';
    EXPECT_STREQ(a.str, "abc");
    EXPECT_STREQ(b.str, "abc");
    EXPECT_STREQ(c.str, "a");
}

TEST(String, AppendingDoesNotShareTheText) {
    const String source("abc");
    String s;
    s += source;
    EXPECT_NE(s.str, source.str);
}

TEST(String, AppendsCharacters) {
    String s;
    std::string expected;
    for (int i = 0; i < 1000; i++) {
        s += char('a' + i % 26);
        expected += char('a' + i % 26);
        ASSERT_EQ(s.len(), uword(i + 1));
    }
    EXPECT_EQ(s.str, expected);
}

TEST(String, AppendingANulCharacterAllocatesButAddsNoLength) {
    String empty, text("ab");
    empty += '\0';
    text += '\0';
    ASSERT_NE(empty.str, nullptr);
    EXPECT_EQ(bytes(empty, 2), std::string("\0\0", 2));
    EXPECT_EQ(bytes(text, 4), std::string("ab\0\0", 4));
    EXPECT_EQ(text.len(), 2u);
}

TEST(String, MayBeAppendedToItself) {
    String s("ab");
    String& same = s;
    s += same;
    EXPECT_STREQ(s.str, "abab");
    String empty;
    String& same_empty = empty;
    empty += same_empty;
    EXPECT_EQ(empty.str, nullptr);
}

TEST(String, AppendingChains) {
    String s;
    ((s += "a") += String("b")) += 'c';
    EXPECT_STREQ(s.str, "abc");
}

TEST(String, PlusLeavesItsSidesAlone) {
    const String a("a"), b("b");
    const String sum = a + b + "c";
    EXPECT_STREQ(sum.str, "abc");
    EXPECT_STREQ(a.str, "a");
    EXPECT_STREQ(b.str, "b");
}

// ---- Comparing -------------------------------------------------------------------------------

TEST(String, ComparesAsTheTableSays) {
    const String null, nul('\0'), abc("abc"), abd("abd"), ab("ab"), high("\x80");
    struct {
        const String &a, &b;
        bool equal, not_above;
    } const cases[] = {
        {null, null, true, false}, // neither equal nor less under <=
        {null, nul, false, true},  // one side null, the other not
        {nul, null, false, true},  {nul, nul, true, true},   {null, abc, false, true},
        {abc, null, false, true}, // any text is <= the empty one
        {nul, abc, false, true},   {abc, nul, false, false}, {abc, abc, true, true},
        {abc, abd, false, true},   {abd, abc, false, false}, {ab, abc, false, true},
        {abc, ab, false, false},   {abc, high, false, true}, // bytes order as unsigned values
        {high, abc, false, false},
    };
    for (const auto& c : cases) {
        const int row = int(&c - cases);
        EXPECT_EQ(c.a == c.b, c.equal) << row;
        EXPECT_EQ(c.a != c.b, !c.equal) << row;
        EXPECT_EQ(c.a <= c.b, c.not_above) << row;
    }
}

TEST(String, EmptyTextsAreNotOrdered) {
    EXPECT_FALSE(String() <= String());
    EXPECT_FALSE(String("") <= String(no_text));
    EXPECT_TRUE(String("a") <= String());
    EXPECT_TRUE(String() <= String("a"));
}

TEST(String, EqualTextsMayStandAtDifferentAddresses) {
    EXPECT_TRUE(String("abc") == String("abc"));
    EXPECT_FALSE(String("abc") != String("abc"));
    EXPECT_TRUE(String("abc") == String("abcd", 3));
    EXPECT_TRUE(String("a") == String('a'));
}

namespace {

template <class T, class = void>
struct HasLess : std::false_type {};
template <class T>
struct HasLess<T, decltype(void(std::declval<T>() < std::declval<T>()))> : std::true_type {};
template <class T, class = void>
struct HasGreater : std::false_type {};
template <class T>
struct HasGreater<T, decltype(void(std::declval<T>() > std::declval<T>()))> : std::true_type {};
template <class T, class = void>
struct HasNotBelow : std::false_type {};
template <class T>
struct HasNotBelow<T, decltype(void(std::declval<T>() >= std::declval<T>()))> : std::true_type {};

} // namespace

TEST(String, OffersNoOtherComparison) {
    EXPECT_FALSE(HasLess<String>::value);
    EXPECT_FALSE(HasGreater<String>::value);
    EXPECT_FALSE(HasNotBelow<String>::value);
}
