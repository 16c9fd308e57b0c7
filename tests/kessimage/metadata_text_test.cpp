// SPDX-License-Identifier: BSD-3-Clause

// The metadata's line of text: what is written, byte by byte, and what is read and refused.

#include "kessimage/image.h"

#include "tests/core/captured.h"
#include "tests/core/observed.h"
#include "tests/kessimage/metadata_tools.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

const std::string in_from_string =
    " in <void Kess::ImageSpec::MetaData::from_string(const char*)> (metadata:LINE)";

std::string line_of(const MetaData& set) {
    return text_of(set.stringify());
}

template <class T>
std::string line_of(const char* type, const char* name, const T& value) {
    MetaData set;
    set.set_meta(type, name, value);
    return line_of(set);
}

MetaData read(const std::string& line) {
    MetaData set;
    set.from_string(line.c_str());
    return set;
}

float float_of(const std::string& value) {
    return visits_of(read("KESSMETA1 float:x=" + value + " float:end=1")).of("x").number;
}

// The text of an only item, and of one in the middle of a line.
std::string string_of(const std::string& value) {
    const Visits::Visit only = visits_of(read("KESSMETA1 string:x=" + value)).of("x");
    const Visits::Visit middle =
        visits_of(read("KESSMETA1 float:a=1 string:x=" + value + " float:b=2")).of("x");
    EXPECT_EQ(only.type, "string");
    EXPECT_EQ(middle.type, "string");
    EXPECT_EQ(middle.text, only.text);
    return only.text;
}

// What reading `line` throws, with the names of the tags that it set before.
struct Refusal {
    std::string message;
    std::vector<std::string> names;
};

Refusal refusal_of(const std::string& line) {
    MetaData set;
    const std::string message = message_without_line_of([&] { set.from_string(line.c_str()); });
    return {message, visits_of(set).names()};
}

Refusal assertion_in(const std::string& line) {
    MetaData set;
    const std::string assertion = assertion_of([&] { set.from_string(line.c_str()); });
    return {assertion, visits_of(set).names()};
}

typedef std::vector<std::string> Names;

} // namespace

// ---- Writing ---------------------------------------------------------------------------------

TEST(MetadataText, OfAnEmptySetIsTheIntroduction) {
    EXPECT_EQ(line_of(MetaData()), "KESSMETA1");
}

TEST(MetadataText, FloatsHaveSixSignificantDigits) {
    const struct {
        float value;
        const char* text;
    } cases[] = {
        {1.5f, "1.5"},
        {0.0f, "0"},
        {-0.0f, "-0"},
        {-2.0f, "-2"},
        {0.1234567f, "0.123457"},
        {1 / 3.0f, "0.333333"},
        {100000.0f, "100000"},
        {123456.0f, "123456"},
        {1000000.0f, "1e+06"},
        {16777216.0f, "1.67772e+07"},
        {0.0001f, "0.0001"},
        {0.00001f, "1e-05"},
        {FLT_MAX, "3.40282e+38"},
        {FLT_MIN, "1.17549e-38"},
        {std::numeric_limits<float>::denorm_min(), "1.4013e-45"},
        {INFINITY, "inf"},
        {-INFINITY, "-inf"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(text_of(Kess::TypedInfo<float>(c.value).stringify()), c.text);
        EXPECT_EQ(line_of("float", "x", c.value), std::string("KESSMETA1 float:x=") + c.text);
    }
}

TEST(MetadataText, StringsAreBareWithoutABlankAndQuotedWithOne) {
    const struct {
        const char *value, *text;
    } cases[] = {
        {"word", "word"},
        {"", ""},
        {"\"", "\""},
        {"\"quoted\"", "\"quoted\""},
        {"back\\slash", "back\\slash"},
        {"a=b:c", "a=b:c"},
        {"tab\tand\nline", "tab\tand\nline"},
        {"\xc3\xa9\xff", "\xc3\xa9\xff"},
        {"two words", "\"two words\""},
        {" ", "\" \""},
        {" a", "\" a\""},
        {"a  b ", "\"a  b \""},
        {"the \"big\" one", "\"the \\\"big\\\" one\""},
        {"\" ", "\"\\\" \""},
        {"c:\\my sky", "\"c:\\my sky\""},
        {"my sky\\", "\"my sky\\\""},
        {"a \\\" b", "\"a \\\\\" b\""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(text_of(Kess::TypedInfo<String>(c.value).stringify()), c.text);
        EXPECT_EQ(line_of("string", "x", String(c.value)),
                  std::string("KESSMETA1 string:x=") + c.text);
    }
}

TEST(MetadataText, MatricesAreSixteenQuotedNumbers) {
    Matrix4<float> m = counting_matrix(-1, 0.5f);
    m.e[15] = 1e10f;
    const std::string text = "\"-1.000000000e+00 -5.000000000e-01 0.000000000e+00 "
                             "5.000000000e-01 1.000000000e+00 1.500000000e+00 "
                             "2.000000000e+00 2.500000000e+00 3.000000000e+00 "
                             "3.500000000e+00 4.000000000e+00 4.500000000e+00 "
                             "5.000000000e+00 5.500000000e+00 6.000000000e+00 "
                             "1.000000000e+10\"";
    EXPECT_EQ(text_of(Kess::TypedInfo<Matrix4<float>>(m).stringify()), text);
    EXPECT_EQ(line_of("m44f", "camera", m), "KESSMETA1 m44f:camera=" + text);
}

// 2^-149 and 0.1 widened to double, to ten digits.
TEST(MetadataText, MatrixElementsHaveTenDigits) {
    Matrix4<float> m = counting_matrix(0, 0);
    m.e[0] = 0.1f;
    m.e[1] = std::numeric_limits<float>::denorm_min();
    m.e[2] = -INFINITY;
    std::string text = "\"1.000000015e-01 1.401298464e-45 -inf";
    for (int i = 3; i < 16; i++)
        text += " 0.000000000e+00";
    EXPECT_EQ(text_of(Kess::TypedInfo<Matrix4<float>>(m).stringify()), text + "\"");
}

TEST(MetadataText, ItemsStandInMapOrder) {
    MetaData set;
    set.set_meta("float", "gain", 1.5f);
    set.set_meta("string", "label", String("two words"));
    const bool gain_first = in_map_order({"gain", "label"})[0] == "gain";
    EXPECT_EQ(line_of(set), gain_first ? "KESSMETA1 float:gain=1.5 string:label=\"two words\""
                                       : "KESSMETA1 string:label=\"two words\" float:gain=1.5");

    MetaData many;
    Names names;
    for (int i = 0; i < 30; i++) {
        names.push_back("n" + std::to_string(i));
        many.set_meta("string", names.back().c_str(), String("x"));
    }
    std::string expected = "KESSMETA1";
    for (const std::string& name : in_map_order(names))
        expected += " string:" + name + "=x";
    EXPECT_EQ(line_of(many), expected);
}

TEST(MetadataText, EmptyValuesAndNamesAreWrittenAsNothing) {
    EXPECT_EQ(line_of("string", "x", String()), "KESSMETA1 string:x=");
    EXPECT_EQ(line_of("float", "", 1.0f), "KESSMETA1 float:=1");
}

TEST(MetadataText, NamesWithABlankOrAnEqualsSignCannotBeWritten) {
    for (const char* name : {"a b", " ", "a ", " a", "a=b", "=", "a="}) {
        MetaData set;
        set.set_meta("float", name, 1.0f);
        EXPECT_EQ(message_without_line_of([&] { set.stringify(); }),
                  "can't handle quoting yet in "
                  "<String Kess::ImageSpec::MetaData::stringify() const> (metadata:LINE)")
            << name;
        EXPECT_EQ(visits_of(set).of(name).number, 1.0f);
    }
}

TEST(MetadataText, OtherNamesAreWrittenAsTheyAre) {
    for (const char* name : {"a:b", ":", "\"a\"", "a\\", "a\tb", "\xc3\xa9", "a\nb"})
        EXPECT_EQ(line_of("float", name, 1.0f), std::string("KESSMETA1 float:") + name + "=1");
}

// ---- Is it one? ------------------------------------------------------------------------------

TEST(MetadataText, IsRecognisedByItsFirstNineBytes) {
    for (const char* text : {"KESSMETA1", "KESSMETA1 ", "KESSMETA1x", "KESSMETA12", "KESSMETA1\n"})
        EXPECT_TRUE(MetaData::string_valid(text)) << text;
    for (const char* text :
         {"", "K", "KESSMETA", "KESSMETA2", "kessmeta1", " KESSMETA1", "KESSMETa1", "KESS META1"})
        EXPECT_FALSE(MetaData::string_valid(text)) << text;
}

TEST(MetadataText, ThatIsNoneIsRefused) {
    for (const char* text : {"", "KESSMETA", "KESSMETA2 float:x=1", " KESSMETA1"}) {
        const Refusal refusal = refusal_of(text);
        EXPECT_EQ(refusal.message, "invalid metadata string" + in_from_string);
        EXPECT_EQ(refusal.names, Names());
    }
}

// ---- Reading ---------------------------------------------------------------------------------

TEST(MetadataText, OfTheIntroductionAloneAddsNothing) {
    EXPECT_TRUE(read("KESSMETA1").empty());
    MetaData set;
    set.set_meta("float", "x", 1.0f);
    set.from_string("KESSMETA1");
    EXPECT_EQ(visits_of(set).names(), Names{"x"});
}

TEST(MetadataText, AddsToWhatIsThere) {
    MetaData set;
    set.set_meta("float", "old", 1.0f);
    set.set_meta("float", "both", 1.0f);
    set.from_string("KESSMETA1 float:both=2 string:new=text");
    const Visits visits = visits_of(set);
    EXPECT_EQ(visits.seen.size(), 3u);
    EXPECT_EQ(visits.of("old").number, 1.0f);
    EXPECT_EQ(visits.of("both").number, 2.0f);
    EXPECT_EQ(visits.of("new").text, "text");
}

TEST(MetadataText, ItemsAreTakenInTheLinesOrder) {
    const Visits visits = visits_of(read("KESSMETA1 float:x=1 float:y=5 float:x=2 float:x=3"));
    EXPECT_EQ(visits.seen.size(), 2u);
    EXPECT_EQ(visits.of("x").number, 3.0f);
    EXPECT_EQ(visits.of("y").number, 5.0f);
}

TEST(MetadataText, ValuesReadAreNotWrittenToAFile) {
    EXPECT_EQ(visits_of(read("KESSMETA1 float:x=1")).of("x").file_position, 0);
}

TEST(MetadataText, FloatsAreReadAsStrtodDoes) {
    EXPECT_EQ(float_of("1.5"), 1.5f);
    EXPECT_EQ(float_of("-1e-07"), -1e-07f);
    EXPECT_EQ(float_of("0.123457"), 0.123457f);
    EXPECT_EQ(float_of("1.5mm"), 1.5f);
    EXPECT_EQ(float_of("much"), 0.0f);
    EXPECT_EQ(float_of(""), 0.0f);
    EXPECT_EQ(float_of("\"\""), 0.0f);
    EXPECT_EQ(float_of("\"  2.5 m\""), 2.5f);
    EXPECT_EQ(float_of("\t3"), 3.0f);
    EXPECT_EQ(float_of("0x10"), 16.0f);
    EXPECT_EQ(float_of("1e999"), INFINITY);
    EXPECT_EQ(float_of("-inf"), -INFINITY);
    EXPECT_TRUE(std::isnan(float_of("nan")));
    EXPECT_TRUE(std::signbit(float_of("-0")));
}

// A hair below the middle of two floats, which a double does not see: rounded to the even one.
TEST(MetadataText, FloatsAreRoundedToDoubleFirst) {
    EXPECT_EQ(float_of("1.00000017881393432617187499"), 1.0f + 2 * FLT_EPSILON);
}

TEST(MetadataText, BareStringsGoToTheNextBlank) {
    EXPECT_EQ(string_of("word"), "word");
    EXPECT_EQ(string_of("a\"b\\c=d:e"), "a\"b\\c=d:e");
    EXPECT_EQ(string_of("tab\tand\nline"), "tab\tand\nline");
    EXPECT_EQ(string_of("\xff"), "\xff");
    EXPECT_EQ(string_of("\\\"a\""), "\\\"a\"");
}

TEST(MetadataText, QuotedStringsGoToTheNextQuoteThatIsNotEscaped) {
    EXPECT_EQ(string_of("\"two words\""), "two words");
    EXPECT_EQ(string_of("\"\""), "");
    EXPECT_EQ(string_of("\" \""), " ");
    EXPECT_EQ(string_of("\"the \\\"big\\\" one\""), "the \"big\" one");
    EXPECT_EQ(string_of("\"\\\\\""), "\\");
    EXPECT_EQ(string_of("\"\\n\\x\\ \\\t\""), "nx \t"); // whatever it is
    EXPECT_EQ(string_of("\"float:y=1\""), "float:y=1");
}

TEST(MetadataText, EmptyStringsAreReadInTheMiddleOfALine) {
    const Visits visits = visits_of(read("KESSMETA1 string:a= float:b=2"));
    EXPECT_EQ(visits.of("a").type, "string");
    EXPECT_EQ(visits.of("a").text, "");
    EXPECT_EQ(visits.of("b").number, 2.0f);
}

TEST(MetadataText, NamesGoToTheEqualsSign) {
    EXPECT_EQ(visits_of(read("KESSMETA1 float:a:b=1")).of("a:b").number, 1.0f);
    EXPECT_EQ(visits_of(read("KESSMETA1 float::=1")).of(":").number, 1.0f);
    EXPECT_EQ(visits_of(read("KESSMETA1 float:=1")).of("").number, 1.0f);
    EXPECT_EQ(visits_of(read("KESSMETA1 float:a b=1")).of("a b").number, 1.0f);
    EXPECT_EQ(visits_of(read("KESSMETA1 float:\"a=1")).of("\"a").number, 1.0f);
    EXPECT_EQ(visits_of(read("KESSMETA1 string:a==")).of("a").text, "=");
}

TEST(MetadataText, MatricesAreSixteenNumbersAsScanfReadsThem) {
    const Matrix4<float> m = counting_matrix(0, 1);
    const std::string numbers = "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15";
    for (const std::string& value :
         {"\"" + numbers + "\"", "\"  " + numbers + "  \"", "\"" + numbers + " and more\"",
          "\"" + numbers + " 16\"",
          std::string("\"0.0 1e0 2. 3 4 5 6 7 8\t9\n10 11 12 13 14 15.\""),
          std::string("0\t1\t2\t3\t4\t5\t6\t7\t8\t9\t10\t11\t12\t13\t14\t15")}) {
        const Visits::Visit visit =
            visits_of(read("KESSMETA1 m44f:camera=" + value + " float:b=1")).of("camera");
        EXPECT_EQ(visit.type, "m44f");
        EXPECT_TRUE(same_bits(visit.matrix, m)) << value;
    }
}

// ---- Refusals --------------------------------------------------------------------------------

TEST(MetadataText, NeedsABlankAfterTheIntroduction) {
    for (const char* line : {"KESSMETA1x", "KESSMETA1float:x=1", "KESSMETA1\tfloat:x=1",
                             "KESSMETA1\n", "KESSMETA12 float:x=1"}) {
        const Refusal refusal = assertion_in(line);
        EXPECT_EQ(refusal.message, "'*p == ' ''" + in_from_string);
        EXPECT_EQ(refusal.names, Names());
    }
}

TEST(MetadataText, NeedsATypeWithAColonAfterABlank) {
    for (const char* line : {"KESSMETA1 ", "KESSMETA1  ", "KESSMETA1 float", "KESSMETA1 float=1"}) {
        const Refusal refusal = assertion_in(line);
        EXPECT_EQ(refusal.message, "'*p == ':''" + in_from_string);
        EXPECT_EQ(refusal.names, Names());
    }
    for (const char* line : {"KESSMETA1 float:x=1 ", "KESSMETA1 float:x=\"1\" float"}) {
        const Refusal refusal = assertion_in(line);
        EXPECT_EQ(refusal.message, "'*p == ':''" + in_from_string);
        EXPECT_EQ(refusal.names, Names{"x"});
    }
}

TEST(MetadataText, ThatEndsInANameIsTruncated) {
    const std::string warning = "warning: image metadata appears to be truncated in "
                                "<void Kess::ImageSpec::MetaData::from_string(const char*)>\n";
    for (const char* line :
         {"KESSMETA1 float:x", "KESSMETA1 float:", "KESSMETA1 what:x y:z", "KESSMETA1 :"}) {
        MetaData set;
        EXPECT_EQ(stderr_of([&] { set.from_string(line); }), warning) << line;
        EXPECT_TRUE(set.empty());
    }
    MetaData set;
    EXPECT_EQ(stderr_of([&] { set.from_string("KESSMETA1 float:a=1 string:b=x float:c"); }),
              warning);
    EXPECT_EQ(visits_of(set).names(), in_map_order({"a", "b"}));
}

TEST(MetadataText, ThatEndsAfterAnEqualsSignMissesAValue) {
    for (const char* type : {"float", "string", "m44f", "what", ""}) {
        const Refusal refusal = refusal_of(std::string("KESSMETA1 float:a=1 ") + type + ":x=");
        EXPECT_EQ(refusal.message, "metadata x is missing value" + in_from_string);
        EXPECT_EQ(refusal.names, Names{"a"});
    }
    EXPECT_EQ(refusal_of("KESSMETA1 float:=").message,
              "metadata  is missing value" + in_from_string);
}

TEST(MetadataText, NeedsAClosingQuote) {
    for (const char* value :
         {"\"", "\"abc", "\"two words", "\"abc\\\"", "\"a\\\\\\\"", "\"abc float:y=1"}) {
        const Refusal refusal = refusal_of(std::string("KESSMETA1 float:a=1 string:x=") + value);
        EXPECT_EQ(refusal.message, "unterminated quoted string in metadata x" + in_from_string);
        EXPECT_EQ(refusal.names, Names{"a"});
    }
}

TEST(MetadataText, NeedsAByteAfterABackslashInQuotes) {
    for (const char* value : {"\"\\", "\"abc\\", "\"a\\\\\\"}) {
        const Refusal refusal = refusal_of(std::string("KESSMETA1 float:a=1 string:x=") + value);
        EXPECT_EQ(refusal.message, "unterminated \\ in metadata x" + in_from_string);
        EXPECT_EQ(refusal.names, Names{"a"});
    }
}

TEST(MetadataText, NeedsABlankAfterAClosingQuoteAndKeepsTheItem) {
    for (const char* rest : {"y", "\"", "\t", "=1", "\"\""}) {
        const Refusal refusal = assertion_in(std::string("KESSMETA1 string:x=\"a\"") + rest);
        EXPECT_EQ(refusal.message, "'*p == ' ''" + in_from_string);
        EXPECT_EQ(refusal.names, Names{"x"});
    }
}

TEST(MetadataText, NeedsSixteenNumbersForAMatrix) {
    for (const char* value :
         {"\"1 2 3 4 5 6 7 8 9 10 11 12 13 14 15\"", "\"\"", "1", "\" \"",
          "\"1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 x\"", "x",
          "\"1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16\"", "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16"}) {
        const Refusal refusal = refusal_of(std::string("KESSMETA1 float:a=1 m44f:x=") + value);
        EXPECT_EQ(refusal.message, "error reading m44f metadata 'x'" + in_from_string) << value;
        EXPECT_EQ(refusal.names, Names{"a"});
    }
    EXPECT_EQ(refusal_of("KESSMETA1 m44f:x= float:a=1").message,
              "error reading m44f metadata 'x'" + in_from_string);
}

TEST(MetadataText, TakesNoOtherType) {
    const struct {
        const char *item, *type;
    } cases[] = {
        {"what:x=1", "what"},     {"Float:x=1", "Float"},         {":x=1", ""},
        {" float:x=1", " float"}, {"b=1 float:x=1", "b=1 float"}, {"what:x=\"1\"", "what"},
        {"float :x=1", "float "}, {"m44d:x=1", "m44d"},
    };
    for (const auto& c : cases) {
        const Refusal refusal = refusal_of(std::string("KESSMETA1 float:a=1 ") + c.item);
        EXPECT_EQ(refusal.message, std::string("unhandled type '") + c.type + "'" + in_from_string);
        EXPECT_EQ(refusal.names, Names{"a"});
    }
}

// The value is read to its end before the type is looked at.
TEST(MetadataText, ComplainsOfTheQuoteBeforeTheType) {
    EXPECT_EQ(refusal_of("KESSMETA1 what:x=\"1").message,
              "unterminated quoted string in metadata x" + in_from_string);
    EXPECT_EQ(refusal_of("KESSMETA1 what:x=\"1\"y").message,
              "unhandled type 'what'" + in_from_string);
}

TEST(MetadataText, PassesTheSetsRefusalsOn) {
    MetaData set;
    set.set_meta("string", "text", String("old"));
    set.set_meta("float", "written", 1.0f);
    Visits writing;
    writing.new_position = 8;
    set.for_each_meta(writing);
    const auto text_of_refusal = [&set](const char* line) {
        const std::string message = message_of([&] { set.from_string(line); });
        return message.substr(0, message.find(" in <"));
    };
    EXPECT_EQ(text_of_refusal("KESSMETA1 float:new=1 float:text=2 float:behind=3"),
              "metadata tag 'text' already present but with type 'string' not 'float'");
    EXPECT_EQ(text_of_refusal("KESSMETA1 float:new=4 float:written=2 float:behind=3"),
              "no updates allowed after writing to file, use update_meta");
    EXPECT_EQ(text_of_refusal("KESSMETA1 float:twice=4 string:twice=2"),
              "metadata tag 'twice' already present but with type 'float' not 'string'");
    const Visits visits = visits_of(set);
    EXPECT_EQ(visits.seen.size(), 4u);
    EXPECT_EQ(visits.of("text").text, "old");
    EXPECT_EQ(visits.of("written").number, 1.0f);
    EXPECT_EQ(visits.of("new").number, 4.0f);
    EXPECT_EQ(visits.of("twice").number, 4.0f);
}

// ---- Known gaps ------------------------------------------------------------------------------

TEST(MetadataText, AnEmptyLastStringDoesNotReadBack) {
    EXPECT_EQ(refusal_of(line_of("string", "x", String())).message,
              "metadata x is missing value" + in_from_string);
}

TEST(MetadataText, ABareStringBeginningWithAQuoteDoesNotReadBack) {
    EXPECT_EQ(refusal_of(line_of("string", "x", String("\"sky"))).message,
              "unterminated quoted string in metadata x" + in_from_string);
    EXPECT_EQ(visits_of(read(line_of("string", "x", String("\"sky\"")))).of("x").text, "sky");
}

TEST(MetadataText, ABackslashInAStringWithBlanksDoesNotReadBack) {
    EXPECT_EQ(visits_of(read(line_of("string", "x", String("c:\\my sky")))).of("x").text,
              "c:my sky");
    EXPECT_EQ(refusal_of(line_of("string", "x", String("my sky\\"))).message,
              "unterminated quoted string in metadata x" + in_from_string);
}

TEST(MetadataText, AFloatComesBackToSixDigits) {
    EXPECT_EQ(visits_of(read(line_of("float", "x", 0.1234567f))).of("x").number, 0.123457f);
}
