// SPDX-License-Identifier: BSD-3-Clause
#include "tools/pictures/png_file.h"

#include "tests/special_values.h"
#include "tools/failure.h"
#include "tools/pictures/tone.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <png.h>
#include <vector>

using namespace velmora;
using namespace velmora_test::floats;

typedef std::vector<std::uint8_t> Bytes;

static std::string encode(const std::vector<float>& pixels, int width, int height,
                          double exposure = 0) {
    return encode_png(FloatPicture{width, height, pixels.data()}, exposure);
}

// Red, green and blue of each pixel, the top row first, without any conversion.
static Bytes read_back(const std::string& png, int width, int height) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_TRUE(png_image_begin_read_from_memory(&image, png.data(), png.size())) << image.message;
    EXPECT_EQ(int(image.width), width);
    EXPECT_EQ(int(image.height), height);
    EXPECT_EQ(image.format, png_uint_32(PNG_FORMAT_RGB)) << "no alpha, no palette, 8 bits";
    EXPECT_EQ(image.flags & PNG_IMAGE_FLAG_COLORSPACE_NOT_sRGB, 0u);
    Bytes bytes(3 * std::size_t(width) * std::size_t(height));
    EXPECT_TRUE(png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr)) << image.message;
    return bytes;
}

// A piece of a PNG file: four bytes of length, four of name, the data, four of checksum.
struct Chunk {
    std::string name, data;
};

static std::vector<Chunk> chunks_of(const std::string& png) {
    std::vector<Chunk> chunks;
    EXPECT_EQ(png.substr(0, 8), "\x89PNG\r\n\x1a\n");
    for (std::size_t at = 8; at + 12 <= png.size();) {
        std::size_t length = 0;
        for (std::size_t k = 0; k < 4; k++)
            length = 256 * length + std::uint8_t(png[at + k]);
        chunks.push_back({png.substr(at + 4, 4), png.substr(at + 8, length)});
        at += 12 + length;
    }
    return chunks;
}

TEST(PngFile, ShowsPixelsThroughTheDisplayTransform) {
    // Alpha, red, green, blue. A grey of ln 2 shows at a half, which sRGB encodes to 188.
    const float ln2 = float(std::log(2.0));
    const std::vector<float> pixels = {
        0, ln2, ln2, ln2, /**/ 0, 0,        infinity, 0,   /**/ 0, 0,    0, 0,
        1, 0,   0,   ln2, /**/ 0, infinity, 0,        0.5, /**/ 0, 1e9f, 0, 5e8f,
    };
    const Bytes expected = {
        188, 188, 188, 0, 255, 0, 0, 0, 0, 0, 0, 188, 255, 0, 0, 255, 0, 188,
    };
    EXPECT_EQ(read_back(encode(pixels, 3, 2), 3, 2), expected);
}

TEST(PngFile, ExposesByStops) {
    const float light = float(std::log(2.0)) / 8;
    EXPECT_EQ(read_back(encode({0, light, light, light}, 1, 1, 3), 1, 1), (Bytes{188, 188, 188}));
}

TEST(PngFile, KeepsEveryPixelInItsPlace) {
    const int width = 61, height = 43;
    std::vector<float> pixels;
    Bytes expected;
    for (int i = 0; i < width * height; i++) {
        const float red = 0.001f * float(i), green = float(i % 7), blue = 3 / (1 + float(i));
        pixels.insert(pixels.end(), {0, red, green, blue});
        const auto color = display_color(red, green, blue, -1);
        expected.insert(expected.end(), color.begin(), color.end());
    }
    EXPECT_EQ(read_back(encode(pixels, width, height, -1), width, height), expected);
}

TEST(PngFile, IsOpaqueWhateverTheAlpha) {
    const std::vector<float> covered = {1, 0.5f, 0.25f, 0.125f}, open = {0, 0.5f, 0.25f, 0.125f};
    EXPECT_TRUE(encode(covered, 1, 1) == encode(open, 1, 1));
}

TEST(PngFile, SaysThatItIsSrgbAndNothingElse) {
    const std::vector<Chunk> chunks = chunks_of(encode(std::vector<float>(4 * 6), 3, 2));
    ASSERT_EQ(chunks.size(), 4u);
    EXPECT_EQ(chunks[0].name, "IHDR");
    // Width, height, 8 bits, RGB, deflate, filters by row, not interlaced.
    EXPECT_EQ(chunks[0].data, std::string("\0\0\0\3\0\0\0\2\x08\x02\0\0\0", 13));
    EXPECT_EQ(chunks[1].name, "sRGB");
    EXPECT_EQ(chunks[1].data, std::string(1, '\0')); // perceptual
    EXPECT_EQ(chunks[2].name, "IDAT");
    EXPECT_EQ(chunks[3].name, "IEND");
}

TEST(PngFile, IsTheSameEveryTime) {
    std::vector<float> pixels(4 * 100 * 50);
    for (std::size_t i = 0; i < pixels.size(); i++)
        pixels[i] = float(i % 1009) / 500;
    EXPECT_TRUE(encode(pixels, 100, 50) == encode(pixels, 100, 50));
}

TEST(PngFile, SaysWhyAPictureCannotBeWritten) {
    const std::vector<float> pixels(4 * 1000001);
    try {
        encode(pixels, 1000001, 1);
        FAIL() << "no failure";
    } catch (const WorkFailure& failure) {
        EXPECT_STREQ(failure.what(), "PNG picture: Invalid IHDR data");
    }
}
