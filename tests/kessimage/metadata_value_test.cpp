// SPDX-License-Identifier: BSD-3-Clause

// Single metadata values and their handles.

#include "kessimage/metadata.h"

#include "tests/core/captured.h"
#include "tests/core/observed.h"
#include "tests/kessimage/metadata_tools.h"
#include "tests/special_values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

using Kess::MetaInfo;
using Kess::MetaInfoRef;
using Kess::new_MetaInfo;
using Kess::TypedInfo;
using namespace velmora_test::floats;

namespace {

typedef TypedInfo<float> FloatInfo;
typedef TypedInfo<String> StringInfo;
typedef TypedInfo<Matrix4<float>> MatrixInfo;

// A value of a kind unknown to the library, which records its calls.
class OtherInfo : public MetaInfo {
public:
    explicit OtherInfo(std::vector<std::string>& calls) : calls(calls) {}
    ~OtherInfo() override { calls.push_back("destructor"); }

    const char* type_str() const override {
        calls.push_back("type_str");
        return "other";
    }
    int type() const override {
        calls.push_back("type");
        return 3;
    }
    MetaInfo* copy() const override {
        calls.push_back("copy");
        return new OtherInfo(calls);
    }
    String stringify() const override {
        calls.push_back("stringify");
        return "text";
    }

private:
    std::vector<std::string>& calls;
};

template <class Info>
void* const* slots_of(const Info* info) {
    void* const* slots;
    std::memcpy(&slots, static_cast<const void*>(info), sizeof slots);
    return slots;
}

template <class Info>
void expect_value_after_the_position(const Info& info, std::size_t size) {
    const char* base = reinterpret_cast<const char*>(&info);
    EXPECT_EQ(reinterpret_cast<const char*>(&info.file_position) - base, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&info.value) - base, 16);
    EXPECT_EQ(sizeof info, size);
}

} // namespace

// ---- What it is made of ----------------------------------------------------------------------

TEST(MetaInfo, HasThePositionAfterTheTablePointerAndTheValueAfterThat) {
    expect_value_after_the_position(FloatInfo(1.0f), 24);
    expect_value_after_the_position(StringInfo("x"), 24);
    expect_value_after_the_position(MatrixInfo(counting_matrix(0, 1)), 80);
    EXPECT_TRUE((std::is_same<decltype(MetaInfo::file_position), s64>::value));
    EXPECT_TRUE(std::is_abstract<MetaInfo>::value);
    EXPECT_TRUE(std::has_virtual_destructor<MetaInfo>::value);
    EXPECT_TRUE((std::is_base_of<MetaInfo, FloatInfo>::value));
}

TEST(MetaInfo, VirtualTableHoldsNameCodeCopyTextDestructor) {
    std::vector<std::string> calls;
    auto* info = new OtherInfo(calls);
    void* const* slots = slots_of(info);
    typedef const char* (*TypeStr)(const MetaInfo*);
    typedef int (*Type)(const MetaInfo*);
    typedef MetaInfo* (*Copy)(const MetaInfo*);
    typedef String (*Stringify)(const MetaInfo*);
    typedef void (*Destroy)(MetaInfo*);

    EXPECT_STREQ(reinterpret_cast<TypeStr>(slots[0])(info), "other");
    EXPECT_EQ(reinterpret_cast<Type>(slots[1])(info), 3);
    MetaInfo* copy = reinterpret_cast<Copy>(slots[2])(info);
    EXPECT_STREQ(reinterpret_cast<Stringify>(slots[3])(info).str, "text");
    EXPECT_EQ(calls, (std::vector<std::string>{"type_str", "type", "copy", "stringify"}));
    reinterpret_cast<Destroy>(slots[5])(info); // slot 4 destroys, slot 5 destroys and frees
    reinterpret_cast<Destroy>(slots[5])(copy);
    EXPECT_EQ(calls.size(), 6u);
    EXPECT_EQ(calls.back(), "destructor");
}

TEST(MetaInfo, TypesHaveTheirCodesAndNames) {
    const FloatInfo number(1);
    const StringInfo text("x");
    const MatrixInfo matrix(counting_matrix(0, 1));
    EXPECT_EQ(number.type(), 0);
    EXPECT_STREQ(number.type_str(), "float");
    EXPECT_EQ(text.type(), 1);
    EXPECT_STREQ(text.type_str(), "string");
    EXPECT_EQ(matrix.type(), 2);
    EXPECT_STREQ(matrix.type_str(), "m44f");
}

TEST(MetaInfo, StartsAsNotWritten) {
    EXPECT_EQ(FloatInfo(1).file_position, 0);
    EXPECT_EQ(StringInfo("x").file_position, 0);
    EXPECT_EQ(MatrixInfo(counting_matrix(0, 1)).file_position, 0);
}

// ---- Copies ----------------------------------------------------------------------------------

TEST(MetaInfo, CopiesHaveTypeAndValueButNoPosition) {
    FloatInfo number(1.5f);
    StringInfo text("two words");
    MatrixInfo matrix(counting_matrix(1, 2));
    for (MetaInfo* info : {static_cast<MetaInfo*>(&number), static_cast<MetaInfo*>(&text),
                           static_cast<MetaInfo*>(&matrix)}) {
        info->file_position = 1000;
        const std::unique_ptr<MetaInfo> copy(info->copy());
        EXPECT_NE(copy.get(), info);
        EXPECT_EQ(copy->type(), info->type());
        EXPECT_TRUE(*copy == *info);
        EXPECT_EQ(copy->file_position, 0);
        EXPECT_EQ(info->file_position, 1000);
    }
}

TEST(MetaInfo, CopiesOfTextsHaveTextsOfTheirOwn) {
    const StringInfo text("x");
    const std::unique_ptr<MetaInfo> copy(text.copy());
    const auto& typed = static_cast<const StringInfo&>(*copy);
    EXPECT_STREQ(typed.value.str, "x");
    EXPECT_NE(typed.value.str, text.value.str);
}

// ---- Equality --------------------------------------------------------------------------------

TEST(MetaInfo, EqualityOfFloatsIsThatOfNumbers) {
    EXPECT_TRUE(FloatInfo(1.5f) == FloatInfo(1.5f));
    EXPECT_FALSE(FloatInfo(1.5f) == FloatInfo(std::nextafter(1.5f, 2.0f)));
    EXPECT_TRUE(FloatInfo(0.0f) == FloatInfo(-0.0f));
    EXPECT_TRUE(FloatInfo(INFINITY) == FloatInfo(INFINITY));
    const FloatInfo nan(not_a_number);
    EXPECT_FALSE(nan == nan);
    EXPECT_TRUE(nan != nan);
}

TEST(MetaInfo, EqualityOfTextsIsThatOfStrings) {
    EXPECT_TRUE(StringInfo("a b") == StringInfo("a b"));
    EXPECT_FALSE(StringInfo("a b") == StringInfo("a B"));
    EXPECT_TRUE(StringInfo(String()) == StringInfo(""));
    EXPECT_FALSE(StringInfo(String()) == StringInfo("a"));
    EXPECT_FALSE(StringInfo("a") == StringInfo(String()));
    EXPECT_TRUE(StringInfo("a") != StringInfo(String()));
}

TEST(MetaInfo, EqualityOfMatricesIsThatOfAllSixteenElements) {
    const Matrix4<float> m = counting_matrix(-3, 0.5f);
    EXPECT_TRUE(MatrixInfo(m) == MatrixInfo(m));
    for (int i = 0; i < 16; i++) {
        Matrix4<float> other = m;
        other.e[i] += 0.25f;
        EXPECT_FALSE(MatrixInfo(m) == MatrixInfo(other)) << i;
        other.e[i] = not_a_number;
        EXPECT_FALSE(MatrixInfo(other) == MatrixInfo(other)) << i;
    }
    Matrix4<float> negative_zero = m;
    ASSERT_EQ(m.e[6], 0.0f);
    negative_zero.e[6] = -0.0f;
    EXPECT_TRUE(MatrixInfo(m) == MatrixInfo(negative_zero));
}

TEST(MetaInfo, OfDifferentTypesAreUnequal) {
    EXPECT_FALSE(FloatInfo(1) == StringInfo("1"));
    EXPECT_FALSE(StringInfo("1") == FloatInfo(1));
    EXPECT_FALSE(MatrixInfo(counting_matrix(1, 0)) == FloatInfo(1));
    std::vector<std::string> calls;
    EXPECT_FALSE(OtherInfo(calls) == FloatInfo(1));
    EXPECT_FALSE(FloatInfo(1) == OtherInfo(calls));
}

TEST(MetaInfo, EqualityDoesNotLookAtPositions) {
    FloatInfo written(1), other(1);
    written.file_position = 1000;
    EXPECT_TRUE(written == other);
    EXPECT_TRUE(other == written);
}

TEST(MetaInfo, OfUnknownTypesCannotBeCompared) {
    std::vector<std::string> calls;
    const OtherInfo other(calls);
    EXPECT_EQ(message_without_line_of([&] { (void)(other == other); }),
              "unhandled type 'other' in <bool Kess::operator==(const MetaInfo&, const MetaInfo&)> "
              "(metadata:LINE)");
}

// ---- Making values ---------------------------------------------------------------------------

TEST(NewMetaInfo, HoldsTheValue) {
    const std::unique_ptr<MetaInfo> number(new_MetaInfo("float", 1.5f));
    EXPECT_EQ(dynamic_cast<FloatInfo&>(*number).value, 1.5f);
    EXPECT_EQ(number->file_position, 0);
    const std::unique_ptr<MetaInfo> text(new_MetaInfo("string", String("x")));
    EXPECT_STREQ(dynamic_cast<StringInfo&>(*text).value.str, "x");
    const std::unique_ptr<MetaInfo> matrix(new_MetaInfo("m44f", counting_matrix(1, 2)));
    EXPECT_TRUE(same_bits(dynamic_cast<MatrixInfo&>(*matrix).value, counting_matrix(1, 2)));
}

TEST(NewMetaInfo, AssertsThatTheTypeIsTheValues) {
    const std::string start = "'!strcmp(type, ret->type_str())' in "
                              "<Kess::MetaInfo* Kess::new_MetaInfo(const char*, const T&) "
                              "[with T = ";
    const String text("x");
    for (const char* type : {"string", "m44f", "Float", "float ", "floa", ""})
        EXPECT_EQ(assertion_of([&] { new_MetaInfo(type, 1.5f); }),
                  start + "float]> (metadata:LINE)");
    EXPECT_EQ(assertion_of([&] { new_MetaInfo("float", text); }),
              start + "String]> (metadata:LINE)");
    EXPECT_EQ(assertion_of([&] { new_MetaInfo("float", counting_matrix(0, 1)); }),
              start + "Matrix4<float>]> (metadata:LINE)");
}

// ---- Handles ---------------------------------------------------------------------------------

TEST(MetaInfoRef, HoldsOnePointer) {
    auto* info = new FloatInfo(1);
    const MetaInfoRef ref(info);
    EXPECT_EQ(sizeof ref, sizeof(void*));
    MetaInfo* held;
    std::memcpy(&held, reinterpret_cast<const char*>(&ref), sizeof held);
    EXPECT_EQ(held, info);
}

TEST(MetaInfoRef, TakesOwnershipAndGivesItUpInItsDestructor) {
    std::vector<std::string> calls;
    {
        const MetaInfoRef ref(new OtherInfo(calls));
        EXPECT_TRUE(calls.empty());
    }
    EXPECT_EQ(calls, std::vector<std::string>{"destructor"});
}

TEST(MetaInfoRef, CopiesCloneTheirValue) {
    std::vector<std::string> calls;
    {
        const MetaInfoRef ref(new OtherInfo(calls));
        ref->file_position = 1000;
        const MetaInfoRef copy(ref);
        EXPECT_EQ(calls, std::vector<std::string>{"copy"});
        EXPECT_NE(copy.info, ref.info);
        EXPECT_EQ(copy->file_position, 0);
    }
    EXPECT_EQ(calls, (std::vector<std::string>{"copy", "destructor", "destructor"}));
}

TEST(MetaInfoRef, AssignmentClonesAndFreesTheOldValue) {
    std::vector<std::string> calls;
    MetaInfoRef target(new OtherInfo(calls));
    const MetaInfoRef number(new FloatInfo(2));
    target = number;
    EXPECT_EQ(calls, std::vector<std::string>{"destructor"});
    EXPECT_NE(target.info, number.info);
    EXPECT_TRUE(target == number);
    const MetaInfoRef& same = target;
    target = same;
    EXPECT_TRUE(target == number);
}

TEST(MetaInfoRef, EqualityIsThatOfTheValues) {
    const MetaInfoRef one(new FloatInfo(1)), again(new FloatInfo(1)), two(new FloatInfo(2));
    EXPECT_TRUE(one == again);
    EXPECT_FALSE(one != again);
    EXPECT_FALSE(one == two);
    EXPECT_TRUE(one != two);
}
