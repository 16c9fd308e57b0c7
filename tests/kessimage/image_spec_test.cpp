// SPDX-License-Identifier: BSD-3-Clause

// Image descriptions: layout, copies, equality and printing.

#include "kessimage/image.h"

#include "tests/core/captured.h"
#include "tests/core/observed.h"
#include "tests/kessimage/metadata_tools.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

typedef Kess::ImageSpec Spec;

namespace {

Spec plain_spec() {
    return Spec(640, 480, 2560, Spec::BGRA_U8);
}

Spec spec_with_metadata() {
    Spec spec = plain_spec();
    spec.set_meta("float", "gain", 1.5f);
    spec.set_meta("string", "label", String("two words"));
    spec.set_meta("m44f", "camera", counting_matrix(1, 0.25f));
    return spec;
}

float gain_of(const Spec& spec) {
    float value = -1;
    EXPECT_EQ(spec.get_meta("float", "gain", value), 0);
    return value;
}

} // namespace

// ---- What it is made of ----------------------------------------------------------------------

TEST(ImageSpec, HasItsFieldsInOrder) {
    const Spec spec = plain_spec();
    const char* base = reinterpret_cast<const char*>(&spec);
    EXPECT_EQ(reinterpret_cast<const char*>(&spec.width) - base, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&spec.height) - base, 4);
    EXPECT_EQ(reinterpret_cast<const char*>(&spec.stride) - base, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&spec.format) - base, 12);
    EXPECT_EQ(reinterpret_cast<const char*>(&spec.meta) - base, 16);
    EXPECT_EQ(sizeof spec, 24u);
    EXPECT_TRUE((std::is_same<decltype(spec.width), s32>::value));
    EXPECT_TRUE((std::is_same<decltype(spec.height), s32>::value));
    EXPECT_TRUE((std::is_same<decltype(spec.stride), u32>::value));
    EXPECT_TRUE((std::is_same<decltype(spec.meta), Spec::MetaData*>::value));
    EXPECT_FALSE(std::is_polymorphic<Spec>::value);
}

TEST(ImageSpec, DefaultConstructedHasNoMetadataWhateverWasThereBefore) {
    alignas(Spec) char buffer[sizeof(Spec)];
    std::memset(buffer, 0xff, sizeof buffer);
    Spec* spec = new (buffer) Spec;
    EXPECT_EQ(spec->meta, nullptr);
    spec->~Spec();
}

TEST(ImageSpec, TakesTheStrideThatItIsGiven) {
    const Spec spec(640, 480, 7, Spec::BGRA_U8);
    EXPECT_EQ(spec.width, 640);
    EXPECT_EQ(spec.height, 480);
    EXPECT_EQ(spec.stride, 7u);
    EXPECT_EQ(spec.format, Spec::BGRA_U8);
    EXPECT_EQ(spec.meta, nullptr);
}

TEST(ImageSpec, WithoutAStrideHasTheNaturalOne) {
    const Spec spec(721, 4, Spec::YCBCR_422_10);
    EXPECT_EQ(spec.width, 721);
    EXPECT_EQ(spec.height, 4);
    EXPECT_EQ(spec.stride, 2048u);
    EXPECT_EQ(spec.format, Spec::YCBCR_422_10);
    EXPECT_EQ(spec.meta, nullptr);
    EXPECT_EQ(assertion_of([] { Spec(721, 4, Spec::DV_NTSC); }),
              "'width == 720' in <static u32 Kess::ImageSpec::natural_stride(s32, PixelFormat)> "
              "(image:LINE)");
}

// ---- Copies ----------------------------------------------------------------------------------

TEST(ImageSpec, CopiesHaveMetadataOfTheirOwn) {
    Spec spec = spec_with_metadata();
    Spec copy(spec);
    EXPECT_EQ(copy.width, 640);
    EXPECT_EQ(copy.height, 480);
    EXPECT_EQ(copy.stride, 2560u);
    EXPECT_EQ(copy.format, Spec::BGRA_U8);
    ASSERT_NE(copy.meta, nullptr);
    EXPECT_NE(copy.meta, spec.meta);
    EXPECT_EQ(copy.meta->buckets(), spec.meta->buckets());
    EXPECT_EQ(visits_of(copy).names(), visits_of(spec).names());

    copy.set_meta("float", "gain", 2.0f);
    spec.set_meta("float", "more", 3.0f);
    EXPECT_EQ(gain_of(spec), 1.5f);
    EXPECT_EQ(gain_of(copy), 2.0f);
    float value;
    EXPECT_EQ(copy.get_meta("float", "more", value), 1);
}

TEST(ImageSpec, CopiesOfNoMetadataHaveNone) {
    EXPECT_EQ(Spec(plain_spec()).meta, nullptr);
    Spec target = spec_with_metadata();
    target = plain_spec();
    EXPECT_EQ(target.meta, nullptr);
}

TEST(ImageSpec, CopiesOfAnEmptySetHaveAnEmptySet) {
    Spec spec = plain_spec();
    spec.meta = new Spec::MetaData;
    const Spec copy(spec);
    ASSERT_NE(copy.meta, nullptr);
    EXPECT_TRUE(copy.meta->empty());
}

TEST(ImageSpec, CopiesStartAsNotWritten) {
    Spec spec = spec_with_metadata();
    write_all_at(spec, 1000);
    Spec copy(spec), assigned;
    assigned = spec;
    for (const Spec* s : {&copy, &assigned})
        for (const Visits::Visit& visit : visits_of(*s).seen)
            EXPECT_EQ(visit.file_position, 0) << visit.name;
    copy.set_meta("float", "gain", 2.0f);
    assigned.set_meta("float", "gain", 2.0f);
    EXPECT_EQ(gain_of(copy), 2.0f);
    EXPECT_EQ(gain_of(assigned), 2.0f);
    EXPECT_EQ(visits_of(spec).of("gain").file_position, 1000);
}

TEST(ImageSpec, AssignmentReplacesEverything) {
    const Spec spec = spec_with_metadata();
    Spec target(1, 2, 3, Spec::G_U8);
    target.set_meta("float", "old", 1.0f);
    Spec& result = target = spec;
    EXPECT_EQ(&result, &target);
    EXPECT_EQ(target.width, 640);
    EXPECT_EQ(target.height, 480);
    EXPECT_EQ(target.stride, 2560u);
    EXPECT_EQ(target.format, Spec::BGRA_U8);
    EXPECT_NE(target.meta, spec.meta);
    float value;
    EXPECT_EQ(target.get_meta("float", "old", value), 1);
    EXPECT_EQ(gain_of(target), 1.5f);
    EXPECT_TRUE(target == spec);
    EXPECT_TRUE(spec == target);
}

TEST(ImageSpec, MayBeAssignedToItself) {
    for (Spec spec : {spec_with_metadata(), plain_spec()}) {
        const Spec copy(spec);
        const Spec& same = spec;
        spec = same;
        EXPECT_EQ(spec.width, 640);
        EXPECT_EQ(spec.height, 480);
        EXPECT_EQ(spec.stride, 2560u);
        EXPECT_EQ(spec.format, Spec::BGRA_U8);
        EXPECT_TRUE(spec == copy);
        EXPECT_TRUE(copy == spec);
    }
}

// ---- Equality --------------------------------------------------------------------------------

TEST(ImageSpec, EqualityComparesSizeStrideAndFormat) {
    const Spec spec = plain_spec();
    EXPECT_TRUE(spec == plain_spec());
    EXPECT_FALSE(spec != plain_spec());
    for (const Spec& other :
         {Spec(641, 480, 2560, Spec::BGRA_U8), Spec(640, 481, 2560, Spec::BGRA_U8),
          Spec(640, 480, 2561, Spec::BGRA_U8), Spec(640, 480, 2560, Spec::CINEON)}) {
        EXPECT_FALSE(spec == other);
        EXPECT_TRUE(spec != other);
    }
}

TEST(ImageSpec, WithMetadataIsUnequalToOneWithout) {
    const Spec with = spec_with_metadata(), without = plain_spec();
    EXPECT_FALSE(with == without);
    EXPECT_FALSE(without == with);
    Spec with_empty_set = plain_spec();
    with_empty_set.meta = new Spec::MetaData;
    EXPECT_FALSE(with_empty_set == without);
    EXPECT_FALSE(without == with_empty_set);
}

TEST(ImageSpec, EqualityOfMetadataLooksAtTheLeftSideOnly) {
    const Spec fewer = spec_with_metadata();
    Spec more = spec_with_metadata();
    more.set_meta("float", "more", 1.0f);
    EXPECT_TRUE(fewer == more);
    EXPECT_FALSE(more == fewer);
    more.set_meta("float", "gain", 2.0f);
    EXPECT_FALSE(fewer == more);
}

// ---- Metadata through an ImageSpec
// ---------------------------------------------------------------

TEST(ImageSpec, WithoutMetadataKnowsNoTagAndShowsNone) {
    const Spec spec = plain_spec();
    float number = 7;
    String text("kept");
    EXPECT_EQ(spec.get_meta("float", "x", number), 1);
    EXPECT_EQ(spec.get_meta("string", "x", text), 1);
    EXPECT_EQ(number, 7);
    EXPECT_STREQ(text.str, "kept");
    EXPECT_TRUE(visits_of(spec).seen.empty());
}

TEST(ImageSpec, MakesItsMetadataOnFirstUse) {
    Spec spec = plain_spec();
    spec.set_meta("float", "gain", 1.5f);
    Spec::MetaData* meta = spec.meta;
    ASSERT_NE(meta, nullptr);
    EXPECT_EQ(meta->buckets(), 4u);
    spec.set_meta("float", "more", 1.5f);
    EXPECT_EQ(spec.meta, meta);
    Spec other = plain_spec();
    other.set_meta("string", "s", String("t"));
    EXPECT_NE(other.meta, nullptr);
    Spec third = plain_spec();
    third.set_meta("m44f", "m", counting_matrix(0, 1));
    EXPECT_NE(third.meta, nullptr);
}

TEST(ImageSpec, ForwardsToItsMetadata) {
    const Spec spec = spec_with_metadata();
    String label;
    EXPECT_EQ(gain_of(spec), 1.5f);
    EXPECT_EQ(spec.get_meta("string", "label", label), 0);
    EXPECT_STREQ(label.str, "two words");
    const Visits visits = visits_of(spec);
    EXPECT_EQ(visits.names(), in_map_order({"gain", "label", "camera"}));
    EXPECT_TRUE(same_bits(visits.of("camera").matrix, counting_matrix(1, 0.25f)));
}

TEST(ImageSpec, ARefusedFirstTagLeavesItAsItWas) {
    Spec spec = plain_spec();
    EXPECT_THROW(spec.set_meta("string", "gain", 1.5f), AssertXception);
    float value;
    EXPECT_EQ(spec.get_meta("float", "gain", value), 1);
    EXPECT_TRUE(visits_of(spec).seen.empty());
}

// ---- Printing --------------------------------------------------------------------------------

TEST(ImageSpec, PrintsFormatAndSizeWithoutALineEnd) {
    EXPECT_EQ(stdout_of([] { plain_spec().print(); }), "BGRA_U8        \t640 x 480");
    EXPECT_EQ(stdout_of([] { Spec(-1, 0, 0, Spec::YCBCR_444_FLOAT).print(); }),
              "YCBCR_444_FLOAT\t-1 x 0");
    EXPECT_EQ(stdout_of([] { Spec(1920, 1080, 0, Spec::DNXHD_1080i60_10BIT).print(); }),
              "DNXHD_1080i60_10BIT\t1920 x 1080");
    EXPECT_EQ(stdout_of([] { Spec(1, 2, 0, Spec::INVALID_FORMAT).print(); }),
              "INVALID_FORMAT \t1 x 2");
}

TEST(ImageSpec, PrintsEachTypeOfTag) {
    Spec number = plain_spec(), text = plain_spec(), null = plain_spec(), matrix = plain_spec();
    number.set_meta("float", "gain", 1.5f);
    text.set_meta("string", "label", String("a \"b\" %s"));
    null.set_meta("string", "nothing", String());
    matrix.set_meta("m44f", "camera", counting_matrix(-1, 0.5f));
    EXPECT_EQ(stdout_of([&] { number.print(); }),
              "BGRA_U8        \t640 x 480 \"float gain\" [1.500000]");
    EXPECT_EQ(stdout_of([&] { text.print(); }),
              "BGRA_U8        \t640 x 480 \"string label\" [\"a \"b\" %s\"]");
    EXPECT_EQ(stdout_of([&] { null.print(); }),
              "BGRA_U8        \t640 x 480 \"string nothing\" [\"\"]");
    EXPECT_EQ(stdout_of([&] { matrix.print(); }),
              "BGRA_U8        \t640 x 480 \"m44f camera\" ["
              "-1.000000000e+00 -5.000000000e-01 0.000000000e+00 5.000000000e-01 "
              "1.000000000e+00 1.500000000e+00 2.000000000e+00 2.500000000e+00 "
              "3.000000000e+00 3.500000000e+00 4.000000000e+00 4.500000000e+00 "
              "5.000000000e+00 5.500000000e+00 6.000000000e+00 6.500000000e+00]");
}

TEST(ImageSpec, PrintsTagsInMapOrder) {
    std::vector<std::string> names;
    Spec spec = plain_spec();
    for (int i = 0; i < 20; i++) {
        names.push_back("tag " + std::to_string(i));
        spec.set_meta("string", names.back().c_str(), String("x"));
    }
    std::string expected = "BGRA_U8        \t640 x 480";
    for (const std::string& name : in_map_order(names))
        expected += " \"string " + name + "\" [\"x\"]";
    EXPECT_EQ(stdout_of([&] { spec.print(); }), expected);
}

TEST(ImageSpec, OfAnUnassignedFormatCannotBePrinted) {
    const Spec spec(1, 2, 3, Spec::PixelFormat(2));
    std::string message;
    EXPECT_EQ(stdout_of([&] { message = message_without_line_of([&] { spec.print(); }); }), "");
    EXPECT_EQ(message, "unknown format in <static const char* "
                       "Kess::ImageSpec::pixel_format_str(PixelFormat)> (image:LINE)");
}
