// SPDX-License-Identifier: BSD-3-Clause
#include "tools/pictures/exr_file.h"

#include "tests/special_values.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <Imath/ImathBox.h>
#include <Imath/ImathMatrix.h>
#include <limits>
#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfDoubleAttribute.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfInputFile.h>
#include <OpenEXR/ImfIntAttribute.h>
#include <OpenEXR/ImfIO.h>
#include <OpenEXR/ImfStandardAttributes.h>
#include <OpenEXR/ImfStringAttribute.h>
#include <OpenEXR/ImfVecAttribute.h>
#include <random>
#include <set>
#include <stdexcept>

using namespace velmora;
using namespace velmora_test::floats;

typedef std::vector<float> Floats;

namespace {

// A file in memory, to read.
class StringInput : public Imf::IStream {
public:
    explicit StringInput(const std::string& bytes) : Imf::IStream("test"), bytes(bytes) {}

    bool read(char* to, int n) override {
        if (bytes.size() - position < std::size_t(n))
            throw std::runtime_error("read past the end");
        std::memcpy(to, bytes.data() + position, std::size_t(n));
        position += std::size_t(n);
        return position < bytes.size();
    }
    std::uint64_t tellg() override { return position; }
    void seekg(std::uint64_t to) override { position = to; }

private:
    const std::string& bytes;
    std::size_t position = 0;
};

struct ReadBack {
    Imf::Header header;
    Floats pixels; // as a FloatPicture has them
};

} // namespace

static ReadBack read_back(const std::string& bytes) {
    StringInput input(bytes);
    Imf::InputFile file(input);
    const Imath::Box2i window = file.header().dataWindow();
    const int width = window.max.x + 1, height = window.max.y + 1;
    ReadBack result = {file.header(), Floats(4 * std::size_t(width) * std::size_t(height))};

    Imf::FrameBuffer buffer;
    const char* const names[4] = {"A", "R", "G", "B"};
    for (std::size_t k = 0; k < 4; k++)
        buffer.insert(names[k], Imf::Slice::Make(Imf::FLOAT, &result.pixels[k], window, 16,
                                                 16 * std::size_t(width)));
    file.setFrameBuffer(buffer);
    file.readPixels(0, height - 1);
    return result;
}

static std::string encode(const Floats& pixels, int width, int height,
                          const ExrMetadata& metadata = {}) {
    u64 clamped = 99;
    std::string bytes =
        encode_exr(FloatPicture{width, height, pixels.data()}, metadata, false, clamped);
    EXPECT_EQ(clamped, 0u);
    return bytes;
}

static bool same_bits(const Floats& a, const Floats& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), 4 * a.size()) == 0;
}

// Every float its own, with no pattern that the compression could hide a slip in.
static Floats noise(int width, int height) {
    std::mt19937 random(1);
    Floats pixels(4 * std::size_t(width) * std::size_t(height));
    for (float& value : pixels)
        value = std::ldexp(float(random()), int(random() % 40) - 40);
    return pixels;
}

template <class Attribute>
static auto value_of(const Imf::Header& header, const char* name) {
    return header.typedAttribute<Attribute>(name).value();
}

static std::set<std::string> attribute_names(const Imf::Header& header) {
    std::set<std::string> names;
    for (auto i = header.begin(); i != header.end(); ++i)
        names.insert(i.name());
    return names;
}

TEST(ExrFile, KeepsEveryFloatBitForBit) {
    // More than one compressed block of 16 rows, and the last one not full.
    const Floats pixels = noise(23, 37);
    EXPECT_TRUE(same_bits(read_back(encode(pixels, 23, 37)).pixels, pixels));
}

TEST(ExrFile, KeepsFloatsThatAreOutOfTheOrdinary) {
    typedef std::numeric_limits<float> Limits;
    float odd_nan;
    const std::uint32_t odd_bits = 0xffc12345;
    std::memcpy(&odd_nan, &odd_bits, sizeof odd_nan);
    const Floats pixels = {-0.0f,     Limits::denorm_min(), Limits::max(), -Limits::max(), infinity,
                           -infinity, not_a_number,         odd_nan};
    EXPECT_TRUE(same_bits(read_back(encode(pixels, 2, 1)).pixels, pixels));
    EXPECT_TRUE(same_bits(read_back(encode(pixels, 1, 2)).pixels, pixels));
}

TEST(ExrFile, PutsTheFirstRowOnTop) {
    const Floats pixels = {0.5f, 1, 2, 3, /**/ 0.25f, 4, 5, 6};
    const ReadBack back = read_back(encode(pixels, 1, 2));
    EXPECT_EQ(back.pixels, pixels);
    EXPECT_EQ(back.header.lineOrder(), Imf::INCREASING_Y);
}

TEST(ExrFile, IsPlainScanLinesCompressedByZip) {
    const Imf::Header header = read_back(encode(noise(3, 2), 3, 2)).header;
    EXPECT_EQ(header.compression(), Imf::ZIP_COMPRESSION);
    EXPECT_EQ(header.dataWindow(), Imath::Box2i({0, 0}, {2, 1}));
    EXPECT_EQ(header.displayWindow(), Imath::Box2i({0, 0}, {2, 1}));
    EXPECT_EQ(header.pixelAspectRatio(), 1);
    EXPECT_FALSE(header.hasTileDescription());

    std::string channels;
    for (auto i = header.channels().begin(); i != header.channels().end(); ++i) {
        channels += i.name();
        EXPECT_EQ(i.channel().type, Imf::FLOAT);
        EXPECT_EQ(i.channel().xSampling, 1);
        EXPECT_EQ(i.channel().ySampling, 1);
    }
    EXPECT_EQ(channels, "ABGR"); // in the order of the alphabet, as the format has it
}

TEST(ExrFile, SaysNothingThatItIsNotTold) {
    const std::set<std::string> expected = {
        "channels",  "chromaticities",   "compression",        "dataWindow",       "displayWindow",
        "lineOrder", "pixelAspectRatio", "screenWindowCenter", "screenWindowWidth"};
    EXPECT_EQ(attribute_names(read_back(encode(noise(3, 2), 3, 2)).header), expected);
}

TEST(ExrFile, HasThePrimariesOfRec709) {
    const Imf::Chromaticities c = Imf::chromaticities(read_back(encode(noise(1, 1), 1, 1)).header);
    EXPECT_EQ(c.red, Imath::V2f(0.64f, 0.33f));
    EXPECT_EQ(c.green, Imath::V2f(0.30f, 0.60f));
    EXPECT_EQ(c.blue, Imath::V2f(0.15f, 0.06f));
    EXPECT_EQ(c.white, Imath::V2f(0.3127f, 0.3290f));
}

TEST(ExrFile, KeepsWhatIsKnownOfTheShot) {
    ExrMetadata metadata;
    metadata.world_to_camera = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    metadata.world_to_ndc = {-1, -2, -3, -4, -5, -6, -7, -8, -9, -10, -11, -12, -13, -14, -15, -16};
    metadata.frame_rate = FrameRate{24000, 1001};
    metadata.software = "velmora 1.2.3";
    const Imf::Header header = read_back(encode(noise(1, 1), 1, 1, metadata)).header;

    // For row vectors: the translation is the last row.
    const Imath::M44f camera = Imf::worldToCamera(header), ndc = Imf::worldToNDC(header);
    for (int row = 0; row < 4; row++) {
        for (int column = 0; column < 4; column++) {
            EXPECT_EQ(camera[row][column], float(4 * row + column + 1));
            EXPECT_EQ(ndc[row][column], -float(4 * row + column + 1));
        }
    }
    EXPECT_EQ(Imf::framesPerSecond(header).n, 24000);
    EXPECT_EQ(Imf::framesPerSecond(header).d, 1001u);
    EXPECT_EQ(value_of<Imf::StringAttribute>(header, "software"), "velmora 1.2.3");
}

TEST(ExrFile, KeepsValuesWithTheirTypes) {
    ExrMetadata metadata;
    metadata.attributes = {
        {"velmora/brightness", 0.1},
        {"velmora/blur_segs", -7},
        {"velmora/threed", true},
        {"velmora/projection", "Azimuthal Equidistant"},
        {"velmora/starfile", ""},
        {"velmora/tint_color", std::array<float, 3>{0.25f, 0.5f, 1}},
        {"a name of more than thirty-one characters, which takes a flag of its own", 1.0},
    };
    const Imf::Header header = read_back(encode(noise(1, 1), 1, 1, metadata)).header;
    EXPECT_EQ(value_of<Imf::DoubleAttribute>(header, "velmora/brightness"), 0.1);
    EXPECT_EQ(value_of<Imf::IntAttribute>(header, "velmora/blur_segs"), -7);
    EXPECT_EQ(value_of<Imf::IntAttribute>(header, "velmora/threed"), 1);
    EXPECT_EQ(value_of<Imf::StringAttribute>(header, "velmora/projection"),
              "Azimuthal Equidistant");
    EXPECT_EQ(value_of<Imf::StringAttribute>(header, "velmora/starfile"), "");
    EXPECT_EQ(value_of<Imf::V3fAttribute>(header, "velmora/tint_color"),
              Imath::V3f(0.25f, 0.5f, 1));
    EXPECT_EQ(
        value_of<Imf::DoubleAttribute>(
            header, "a name of more than thirty-one characters, which takes a flag of its own"),
        1.0);
}

TEST(ExrFile, RefusesNamesThatTheFormatCannotHold) {
    for (const char* name : {"", "channels", "dataWindow"}) {
        ExrMetadata metadata;
        metadata.attributes = {{name, 1.0}};
        EXPECT_THROW(encode(noise(1, 1), 1, 1, metadata), std::exception) << name;
    }
}

TEST(ExrFile, IsTheSameEveryTime) {
    ExrMetadata metadata;
    metadata.software = "velmora";
    metadata.attributes = {{"b", 1.0}, {"a", 2}};
    const Floats pixels = noise(50, 40);
    EXPECT_TRUE(encode(pixels, 50, 40, metadata) == encode(pixels, 50, 40, metadata));
}

static Floats halves_of(const Floats& pixels, int width, int height, u64 expected_clamped) {
    u64 clamped = 99;
    const ReadBack back =
        read_back(encode_exr(FloatPicture{width, height, pixels.data()}, {}, true, clamped));
    EXPECT_EQ(clamped, expected_clamped);
    for (auto i = back.header.channels().begin(); i != back.header.channels().end(); ++i)
        EXPECT_EQ(i.channel().type, Imf::HALF);
    return back.pixels;
}

TEST(ExrFile, RoundsToTheNearestHalf) {
    const Floats pixels = {
        1 + 0x1p-10f,            // a half
        1 + 0x1p-11f,            // between two: to the even one
        1 + 0x1p-11f + 0x1p-23f, // just above the middle
        1 + 0x3p-11f,            // between two, the other way
        0x1p-24f,                // the smallest half
        0x1p-25f,                // between it and 0
        -0x1p-25f - 0x1p-40f,    // just beyond
        -0.0f,
    };
    const Floats expected = {1 + 0x1p-10f, 1, 1 + 0x1p-10f, 1 + 0x1p-9f,
                             0x1p-24f,     0, -0x1p-24f,    -0.0f};
    EXPECT_TRUE(same_bits(halves_of(pixels, 2, 1, 0), expected));
}

TEST(ExrFile, ClampsAndCountsWhatAHalfCannotReach) {
    const Floats pixels = {65504, -65504, 65505, -65505, 1e30f, -infinity, infinity, 65503};
    // 65503 lies between the halves 65472 and 65504.
    const Floats expected = {65504, -65504, 65504, -65504, 65504, -65504, 65504, 65504};
    EXPECT_EQ(halves_of(pixels, 2, 1, 5), expected);
}

TEST(ExrFile, LeavesWhatIsNotANumberAlone) {
    const Floats pixels = {0, not_a_number, 1, 2};
    const Floats back = halves_of(pixels, 1, 1, 0);
    EXPECT_TRUE(std::isnan(back[1]));
    EXPECT_EQ(back[0], 0);
    EXPECT_EQ(back[2], 1);
    EXPECT_EQ(back[3], 2);
}

TEST(ExrFile, KeepsEveryHalfInItsPlace) {
    // Whole numbers up to 2048 are halves.
    for (const int height : {1, 15, 16, 17, 32, 37}) {
        const int width = 11;
        Floats pixels(4 * std::size_t(width * height));
        for (std::size_t i = 0; i < pixels.size(); i++)
            pixels[i] = float(i);
        EXPECT_EQ(halves_of(pixels, width, height, 0), pixels) << height;
    }
}
