// SPDX-License-Identifier: BSD-3-Clause

// Pixel formats: numbers, names, bytes per pixel and natural strides.

#include "kessimage/image.h"

#include "tests/core/captured.h"
#include "tests/core/observed.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>

typedef Kess::ImageSpec Spec;

namespace {

const struct Format {
    int value;
    Spec::PixelFormat format;
    const char* name;
    u32 bytes_per_pixel;
} formats[] = {
    {1, Spec::BGRA_U8, "BGRA_U8", 4},
    {3, Spec::G_U8, "G_U8", 1},
    {4, Spec::BGRA_FLOAT, "BGRA_FLOAT", 16},
    {6, Spec::G_FLOAT, "G_FLOAT", 4},
    {7, Spec::YCBCR_422_8, "YCBCR_422_8", 3},
    {10, Spec::DV_NTSC, "DV_NTSC", 0},
    {11, Spec::YCBCR_422_10, "YCBCR_422_10", 0},
    {12, Spec::YCBCR_444_FLOAT, "YCBCR_444_FLOAT", 12},
    {13, Spec::CINEON, "CINEON", 4},
    {14, Spec::G_U16, "G_U16", 2},
    {15, Spec::DV100_1080i60, "DV100_1080i60", 0},
    {16, Spec::DV50_NTSC, "DV50_NTSC", 0},
    {17, Spec::BGRA_U16, "BGRA_U16", 8},
    {18, Spec::DNXHD_1080i60_10BIT, "DNXHD_1080i60_10BIT", 0},
};

const struct Compressed {
    Spec::PixelFormat format;
    s32 width;
    u32 stride;
    const char* assertion;
} compressed[] = {
    {Spec::DV_NTSC, 720, 250, "width == 720"},
    {Spec::DV50_NTSC, 720, 500, "width == 720"},
    {Spec::DV100_1080i60, 1280, 445, "width == 1280"},
    {Spec::DNXHD_1080i60_10BIT, 1920, 850, "width == 1920"},
};

const int unassigned[] = {
    0, 2, 5, 8, 9, 19, -1, -666, 9998, 10000, std::numeric_limits<int>::max()};

const s32 widths[] = {
    0,         1,          2,          3,          4,          5,         6,         7,
    8,         11,         12,         13,         47,         48,        49,        719,
    720,       721,        1280,       1919,       1920,       1921,      2048,      4096,
    65535,     65536,      99999,      16777217,   89478485,   268435456, 357913941, 715827882,
    715827883, 1073741824, 1431655765, 1431655766, 2147483646, 2147483647};

// The row of a width, counted without bounds and cut to 32 bits where the rule says so.
u32 plain_stride(const Format& format, s32 width) {
    const u64 w = u64(width), all = 0x100000000u;
    switch (format.value) {
    case 7: { // rounded up to 12 bytes
        const u64 s = 3 * w % all;
        return u32((s + 11) / 12 * 12 % all);
    }
    case 11: { // six pixels in 16 bytes, rounded up to 128
        const u64 s = (w + 5) / 6 * 16 % all;
        return u32((s + 127) / 128 * 128 % all);
    }
    default:
        return u32(format.bytes_per_pixel * w % all);
    }
}

const std::string unknown_format =
    "unknown format in <static const char* Kess::ImageSpec::pixel_format_str(PixelFormat)> "
    "(image:LINE)";

} // namespace

TEST(PixelFormat, NumbersAreThoseOfTheTable) {
    for (const Format& f : formats)
        EXPECT_EQ(f.format, f.value) << f.name;
    EXPECT_EQ(Spec::INVALID_FORMAT, 9999);
    EXPECT_EQ(sizeof(Spec::PixelFormat), 4u);
    EXPECT_TRUE((std::is_convertible<Spec::PixelFormat, int>::value)); // unscoped
}

TEST(PixelFormat, NamesAreThoseOfTheTable) {
    for (const Format& f : formats)
        EXPECT_STREQ(Spec::pixel_format_str(f.format), f.name);
    EXPECT_STREQ(Spec::pixel_format_str(Spec::INVALID_FORMAT), "INVALID_FORMAT");
}

TEST(PixelFormat, BytesPerPixelAreThoseOfTheTable) {
    for (const Format& f : formats)
        EXPECT_EQ(Spec::bytes_per_pixel(f.format), f.bytes_per_pixel) << f.name;
}

TEST(PixelFormat, UnassignedNumbersHaveNoName) {
    for (int value : unassigned)
        EXPECT_EQ(
            message_without_line_of([&] { Spec::pixel_format_str(Spec::PixelFormat(value)); }),
            unknown_format)
            << value;
}

// Naming the format comes first, so nothing is ever said to be unhandled.
TEST(PixelFormat, BytesPerPixelOfUnassignedNumbersFailInNamingThem) {
    for (int value : unassigned)
        EXPECT_EQ(message_without_line_of([&] { Spec::bytes_per_pixel(Spec::PixelFormat(value)); }),
                  unknown_format)
            << value;
}

// Which function says so is open: the invalid format has a name but no size.
TEST(PixelFormat, TheInvalidFormatHasNoBytesPerPixel) {
    const std::string start = "unknown format in <";
    EXPECT_EQ(message_of([] {
                  Spec::bytes_per_pixel(Spec::INVALID_FORMAT);
              }).compare(0, start.size(), start),
              0);
    EXPECT_EQ(message_of([] {
                  Spec::natural_stride(16, Spec::INVALID_FORMAT);
              }).compare(0, start.size(), start),
              0);
}

// ---- Strides ---------------------------------------------------------------------------------

TEST(NaturalStride, OfKnownRows) {
    const struct {
        s32 width;
        Spec::PixelFormat format;
        u32 stride;
    } cases[] = {
        {1920, Spec::YCBCR_422_10, 5120}, // 320 groups of 16 bytes, a multiple of 128
        {721, Spec::YCBCR_422_10, 2048},  // 121 groups, 1936
        {1, Spec::YCBCR_422_10, 128},
        {48, Spec::YCBCR_422_10, 128},
        {49, Spec::YCBCR_422_10, 256},
        {0, Spec::YCBCR_422_10, 0},
        {5, Spec::YCBCR_422_8, 24},
        {4, Spec::YCBCR_422_8, 12},
        {8, Spec::YCBCR_422_8, 24},
        {1, Spec::YCBCR_422_8, 12},
        {0, Spec::YCBCR_422_8, 0},
        {720, Spec::YCBCR_422_8, 2160},
        {1920, Spec::BGRA_FLOAT, 30720},
        {1920, Spec::BGRA_U8, 7680},
        {1920, Spec::G_U8, 1920},
        {1920, Spec::G_FLOAT, 7680},
        {1920, Spec::YCBCR_444_FLOAT, 23040},
        {1920, Spec::CINEON, 7680},
        {1920, Spec::G_U16, 3840},
        {1920, Spec::BGRA_U16, 15360},
        {65536, Spec::BGRA_FLOAT, 1048576},
        {268435456, Spec::BGRA_FLOAT, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Spec::natural_stride(c.width, c.format), c.stride)
            << c.width << ' ' << Spec::pixel_format_str(c.format);
}

TEST(NaturalStride, OfAnyWidthIsCountedIn32Bits) {
    for (const Format& f : formats) {
        if (!f.bytes_per_pixel && f.format != Spec::YCBCR_422_10)
            continue; // compressed
        for (s32 width : widths)
            EXPECT_EQ(Spec::natural_stride(width, f.format), plain_stride(f, width))
                << f.name << ' ' << width;
    }
}

TEST(NaturalStride, OfANegativeWidthWraps) {
    EXPECT_EQ(Spec::natural_stride(-1, Spec::G_U8), 4294967295u);
    EXPECT_EQ(Spec::natural_stride(-1, Spec::BGRA_FLOAT), 4294967280u);
    EXPECT_EQ(Spec::natural_stride(-4, Spec::YCBCR_422_8), 4294967292u); // 2^32 - 12, padded by 8
}

TEST(NaturalStride, OfACompressedFormatIsFixed) {
    for (const Compressed& c : compressed)
        EXPECT_EQ(Spec::natural_stride(c.width, c.format), c.stride);
}

TEST(NaturalStride, OfACompressedFormatHoldsForOneWidth) {
    for (const Compressed& c : compressed) {
        for (s32 width : {0, 1, -720, 719, 720, 721, 1280, 1920, 1921}) {
            if (width == c.width)
                continue;
            EXPECT_EQ(assertion_of([&] { Spec::natural_stride(width, c.format); }),
                      "'" + std::string(c.assertion) +
                          "' in <static u32 Kess::ImageSpec::natural_stride(s32, PixelFormat)> "
                          "(image:LINE)");
        }
    }
}

TEST(NaturalStride, OfUnassignedNumbersFailsInNamingThem) {
    for (int value : unassigned)
        EXPECT_EQ(
            message_without_line_of([&] { Spec::natural_stride(16, Spec::PixelFormat(value)); }),
            unknown_format)
            << value;
}

TEST(NaturalStride, IsStoredAndGivenBack) {
    Spec spec(5, 2, 77, Spec::YCBCR_422_8);
    EXPECT_EQ(spec.set_natural_stride(), 24u);
    EXPECT_EQ(spec.stride, 24u);
}

TEST(NaturalStride, ThatFailsLeavesTheStoredOne) {
    Spec spec(5, 2, 77, Spec::DV_NTSC);
    EXPECT_THROW(spec.set_natural_stride(), AssertXception);
    EXPECT_EQ(spec.stride, 77u);
}
