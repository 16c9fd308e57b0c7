// SPDX-License-Identifier: BSD-3-Clause

// Images: their pixels' memory, from the ImageSpec to the poisoned remains.

#include "kessimage/image.h"

#include "tests/core/captured.h"
#include "tests/core/observed.h"
#include "tests/kessimage/hexadecimal.h"
#include "tests/kessimage/metadata_tools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <string>
#include <type_traits>

typedef Kess::Image Image;
typedef Kess::ImageSpec Spec;

namespace {

// The fields after those of ImageSpec, as they are in memory.
struct Remainder {
    char* data;
    char* allocation;
    u64 allocated_size;
};

Remainder remainder_of(const Image& image) {
    Remainder remainder;
    std::memcpy(&remainder, reinterpret_cast<const char*>(&image) + sizeof(Spec), sizeof remainder);
    return remainder;
}

// What the pixel memory's trace says while `action` runs.
std::string trace_of(const std::function<void()>& action) {
    return stderr_of([&] {
        Kess::TRACE_ALLOCATIONS = 1;
        action();
        Kess::TRACE_ALLOCATIONS = 0;
    });
}

const std::string stride_message =
    "ImageSpec stride is too small for width - did you forget set_natural_stride? in "
    "<void Kess::Image::alloc()> (image:LINE)";

} // namespace

// ---- What it is made of ----------------------------------------------------------------------

TEST(Image, HasItsFieldsAfterTheSpec) {
    Image image(Spec(4, 2, Spec::BGRA_FLOAT));
    EXPECT_EQ(sizeof(Image), 48u);
    EXPECT_EQ(reinterpret_cast<char*>(&image.data) - reinterpret_cast<char*>(&image), 24);
    const Remainder remainder = remainder_of(image);
    EXPECT_EQ(remainder.data, image.data);
    EXPECT_EQ(remainder.allocation, image.data);
    EXPECT_EQ(remainder.allocated_size, 128u);
    EXPECT_TRUE((std::is_base_of<Spec, Image>::value));
    EXPECT_TRUE((std::is_same<decltype(image.data), char*>::value));
}

TEST(Image, CopiesTheSpecAndItsMetadata) {
    Spec spec(4, 2, 20, Spec::BGRA_U8);
    spec.set_meta("float", "gain", 1.5f);
    write_all_at(spec, 1000);
    Image image(spec);
    EXPECT_EQ(image.width, 4);
    EXPECT_EQ(image.height, 2);
    EXPECT_EQ(image.stride, 20u);
    EXPECT_EQ(image.format, Spec::BGRA_U8);
    EXPECT_NE(image.meta, spec.meta);
    EXPECT_EQ(visits_of(image).of("gain").file_position, 0);
    image.set_meta("float", "gain", 2.0f);
    EXPECT_EQ(visits_of(spec).of("gain").number, 1.5f);
    EXPECT_EQ(visits_of(image).of("gain").number, 2.0f);
    EXPECT_EQ(remainder_of(image).allocated_size, 40u);
}

TEST(Image, PixelsAreThereToTheLastByte) {
    Image image(Spec(7, 5, 33, Spec::BGRA_U8));
    std::memset(image.data, 0xab, 5 * 33);
    EXPECT_EQ(image.data[5 * 33 - 1], char(0xab));
}

// ---- Refusals --------------------------------------------------------------------------------

TEST(Image, OfTheInvalidFormatFailsItsAssertion) {
    const Spec spec(4, 2, 16, Spec::INVALID_FORMAT);
    try {
        Image image(spec);
        FAIL();
    } catch (AssertXception& x) {
        EXPECT_STREQ(x.expr, "spec.format != ImageSpec::INVALID_FORMAT");
        EXPECT_STREQ(x.file, "image");
        EXPECT_EQ(spelled_by_gcc(x.function), "Kess::Image::Image(const Kess::ImageSpec&)");
        EXPECT_EQ(x.line, 269);
        EXPECT_EQ(stderr_of([&] { x.print(); }),
                  "Assertion Failed: 'spec.format != ImageSpec::INVALID_FORMAT' in "
                  "<Kess::Image::Image(const Kess::ImageSpec&)> (image:269)\n");
    }
}

TEST(Image, OfAnUnassignedFormatFailsInNamingIt) {
    EXPECT_EQ(message_without_line_of([] { Image image(Spec(4, 2, 16, Spec::PixelFormat(2))); }),
              "unknown format in <static const char* "
              "Kess::ImageSpec::pixel_format_str(PixelFormat)> (image:LINE)");
}

TEST(Image, NeedsAStrideThatHoldsARow) {
    for (u32 stride : {0u, 1u, 63u})
        EXPECT_EQ(message_without_line_of([&] { Image(Spec(4, 2, stride, Spec::BGRA_FLOAT)); }),
                  stride_message);
    EXPECT_NO_THROW(Image(Spec(4, 2, 64, Spec::BGRA_FLOAT)));
    EXPECT_NO_THROW(Image(Spec(4, 2, 65, Spec::BGRA_FLOAT)));
}

// 3 bytes per pixel are asked for, though the natural stride is padded to 12.
TEST(Image, NeedsNoPadding) {
    EXPECT_NO_THROW(Image(Spec(5, 2, 15, Spec::YCBCR_422_8)));
    EXPECT_THROW(Image(Spec(5, 2, 14, Spec::YCBCR_422_8)), StrXception);
}

TEST(Image, OfANegativeWidthNeedsAStrideBeyondAnyRow) {
    EXPECT_EQ(message_without_line_of([] { Image(Spec(-1, 2, 4096, Spec::G_U8)); }),
              stride_message);
    EXPECT_NO_THROW(Image(Spec(-1, 0, 4294967295u, Spec::G_U8)));
}

TEST(Image, OfACompressedFormatTakesAnyStrideAndWidth) {
    for (Spec::PixelFormat format : {Spec::DV_NTSC, Spec::YCBCR_422_10, Spec::DV100_1080i60,
                                     Spec::DV50_NTSC, Spec::DNXHD_1080i60_10BIT}) {
        for (u32 stride : {0u, 1u, 850u}) {
            Image image(Spec(123, 6, stride, format));
            EXPECT_EQ(remainder_of(image).allocated_size, 6 * stride);
        }
    }
}

TEST(Image, RefusedAllocatesNothing) {
    EXPECT_EQ(trace_of([] {
                  EXPECT_THROW(Image(Spec(4, 2, 63, Spec::BGRA_FLOAT)), StrXception);
                  EXPECT_THROW(Image(Spec(4, 2, 64, Spec::INVALID_FORMAT)), AssertXception);
                  EXPECT_THROW(Image(Spec(4, 2, 64, Spec::PixelFormat(5))), StrXception);
              }),
              "");
}

// ---- Sizes in 32 bits ------------------------------------------------------------------------

// 2^14 rows of 2^20 bytes are 2^34, which leaves nothing in 32 bits.
TEST(Image, SizeWrapsIn32Bits) {
    Image image(Spec(65536, 16384, Spec::BGRA_FLOAT));
    EXPECT_EQ(image.stride, 1048576u);
    EXPECT_EQ(remainder_of(image).allocated_size, 0u);
    Image little(Spec(4, 65537, 65536, Spec::G_U8)); // 2^32 + 2^16
    EXPECT_EQ(remainder_of(little).allocated_size, 65536u);
    little.make_blank();
}

// 2^28 pixels of 16 bytes: the row needs 0 bytes, so a stride of 0 will do.
TEST(Image, RowWrapsIn32Bits) {
    Image image(Spec(268435456, 3, Spec::BGRA_FLOAT));
    EXPECT_EQ(image.stride, 0u);
    EXPECT_EQ(remainder_of(image).allocated_size, 0u);
    Image one_more(Spec(268435457, 3, Spec::BGRA_FLOAT));
    EXPECT_EQ(one_more.stride, 16u);
    EXPECT_EQ(remainder_of(one_more).allocated_size, 48u);
    EXPECT_THROW(Image(Spec(268435457, 3, 15, Spec::BGRA_FLOAT)), StrXception);
}

TEST(Image, NegativeHeightWraps) {
    Image image(Spec(4, std::numeric_limits<s32>::min(), 64, Spec::BGRA_FLOAT));
    EXPECT_EQ(remainder_of(image).allocated_size, 0u);
}

// ---- Pixels ----------------------------------------------------------------------------------

TEST(Image, BlankIsZeroBytesThroughoutTheAllocation) {
    Image image(Spec(7, 5, 33, Spec::BGRA_U8));
    std::memset(image.data, 0xab, 165);
    image.make_blank();
    EXPECT_TRUE(std::all_of(image.data, image.data + 165, [](char c) { return c == 0; }));
}

TEST(Image, CopiesAllBytesOfAnImageOfItsShape) {
    const Spec spec(7, 5, 33, Spec::BGRA_U8);
    Image from(spec), to(spec);
    for (int i = 0; i < 165; i++)
        from.data[i] = char(i * 7);
    to.make_blank();
    to.copy_from(from);
    EXPECT_EQ(std::memcmp(to.data, from.data, 165), 0);
    EXPECT_NE(to.data, from.data);
    for (int i = 0; i < 165; i++)
        ASSERT_EQ(from.data[i], char(i * 7));
}

TEST(Image, CopiesFromItself) {
    Image image(Spec(2, 1, Spec::G_U8));
    image.data[0] = 5;
    image.data[1] = 6;
    image.copy_from(image);
    EXPECT_EQ(image.data[0], 5);
    EXPECT_EQ(image.data[1], 6);
}

TEST(Image, CopiesFromNoOtherShape) {
    Image image(Spec(8, 4, 64, Spec::BGRA_U8));
    image.make_blank();
    const Spec others[] = {
        Spec(7, 4, 64, Spec::BGRA_U8),
        Spec(8, 5, 64, Spec::BGRA_U8),
        Spec(8, 4, 68, Spec::BGRA_U8),
        Spec(8, 4, 64, Spec::CINEON),
    };
    for (const Spec& spec : others) {
        Image other(spec);
        std::memset(other.data, 1, other.stride * u32(other.height));
        EXPECT_EQ(message_without_line_of([&] { image.copy_from(other); }),
                  "formats don't match\n in <void Kess::Image::copy_from(const Kess::Image&)> "
                  "(image:LINE)");
        EXPECT_TRUE(std::all_of(image.data, image.data + 256, [](char c) { return c == 0; }));
    }
}

TEST(Image, CopyingPixelsLeavesMetadataAlone) {
    Spec one(2, 1, Spec::G_U8), two(2, 1, Spec::G_U8), none(2, 1, Spec::G_U8);
    one.set_meta("float", "gain", 1.0f);
    two.set_meta("string", "gain", String("x"));
    Image first(one), second(two), third(none);
    first.make_blank();
    second.make_blank();
    third.data[0] = 9;
    third.data[1] = 8;
    first.copy_from(third);
    second.copy_from(first);
    third.copy_from(second);
    EXPECT_EQ(second.data[0], 9);
    EXPECT_EQ(second.data[1], 8);
    EXPECT_EQ(visits_of(first).of("gain").type, "float");
    EXPECT_EQ(visits_of(second).of("gain").type, "string");
    EXPECT_EQ(third.meta, nullptr);
}

// ---- Trace and dump --------------------------------------------------------------------------

TEST(Image, TracesOneAllocationAndOneRelease) {
    std::string address;
    const std::string trace = trace_of([&] {
        Image image(Spec(4, 2, Spec::BGRA_FLOAT));
        address = hexadecimal(image.data);
    });
    EXPECT_EQ(trace, "libkessimage: malloc_pixels(128) = " + address +
                         "\nlibkessimage: free_pixels(" + address + ", 128)\n");
}

TEST(Image, MayBeFreedAndAllocatedAgain) {
    Image image(Spec(4, 2, Spec::BGRA_FLOAT));
    const std::string first = hexadecimal(image.data);
    std::string refusal;
    const std::string trace = trace_of([&] {
        image.free();
        image.width = 5; // a row does not fit any more
        refusal = message_without_line_of([&] { image.alloc(); });
        image.set_natural_stride();
        image.alloc();
    });
    EXPECT_EQ(refusal, stride_message);
    EXPECT_EQ(trace, "libkessimage: free_pixels(" + first +
                         ", 128)\nlibkessimage: malloc_pixels(160) = " + hexadecimal(image.data) +
                         "\n");
    EXPECT_EQ(remainder_of(image).allocation, image.data);
    EXPECT_EQ(remainder_of(image).allocated_size, 160u);
}

TEST(Image, HoldsNothingOnceFreed) {
    Image image(Spec(4, 2, Spec::BGRA_FLOAT));
    image.free();
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(remainder_of(image).allocation, nullptr);
    EXPECT_EQ(remainder_of(image).allocated_size, 0u);
    EXPECT_EQ(trace_of([&] { image.free(); }), "libkessimage: free_pixels((nil), 0)\n");
}

TEST(Image, DumpsSizePlaceAndSpec) {
    Spec spec(4, 2, 20, Spec::BGRA_U8);
    spec.set_meta("string", "label", String("two words"));
    const Image image(spec);
    EXPECT_EQ(stdout_of([&] { image.dump(); }),
              "Image (allocated_size 40 at " + hexadecimal(image.data) +
                  ") BGRA_U8        \t4 x 2 \"string label\" [\"two words\"]");
}

TEST(Image, DumpsWhereItsDataPointsTo) {
    Image image(Spec(4, 2, Spec::BGRA_U8));
    char* const allocation = image.data;
    image.data = allocation + 16;
    EXPECT_EQ(stdout_of([&] { image.dump(); }), "Image (allocated_size 32 at " +
                                                    hexadecimal(allocation + 16) +
                                                    ") BGRA_U8        \t4 x 2");
    image.make_blank(); // from the allocation's start
    EXPECT_EQ(allocation[0], 0);
}

// ---- The end ---------------------------------------------------------------------------------

TEST(Image, LeavesASpecThatCannotPassForOne) {
    alignas(Image) static char buffer[sizeof(Image)];
    Spec spec(4, 2, Spec::BGRA_FLOAT);
    spec.set_meta("float", "gain", 1.0f);
    Image* image = new (buffer) Image(spec);
    image->~Image();
    const volatile s32* words = reinterpret_cast<const volatile s32*>(buffer);
    EXPECT_EQ(words[0], -666); // width
    EXPECT_EQ(words[1], -666); // height
    EXPECT_EQ(words[2], 0);    // stride
    EXPECT_EQ(words[3], 9999); // format
}
