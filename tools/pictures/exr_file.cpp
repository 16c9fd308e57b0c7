// SPDX-License-Identifier: BSD-3-Clause
#include "tools/pictures/exr_file.h"

#include "tools/failure.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <Imath/ImathBox.h>
#include <Imath/ImathMatrix.h>
#include <Imath/ImathVec.h>
#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfDoubleAttribute.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfInputFile.h>
#include <OpenEXR/ImfIntAttribute.h>
#include <OpenEXR/ImfIO.h>
#include <OpenEXR/ImfOutputFile.h>
#include <OpenEXR/ImfStandardAttributes.h>
#include <OpenEXR/ImfStringAttribute.h>
#include <OpenEXR/ImfVecAttribute.h>

namespace velmora {

// Each channel's index in a pixel of a FloatPicture.
static const char* const channel_names[4] = {"A", "R", "G", "B"};

static const float largest_half = 65504.0f;

namespace {

// A file in memory. Bytes that are skipped over count as 0.
class StringStream : public Imf::OStream {
public:
    std::string bytes;

    StringStream() : Imf::OStream("picture") {}

    void write(const char* data, int n) override {
        const std::size_t end = position + std::size_t(n);
        if (bytes.size() < end)
            bytes.resize(end);
        bytes.replace(position, std::size_t(n), data, std::size_t(n));
        position = end;
    }
    std::uint64_t tellp() override { return position; }
    void seekp(std::uint64_t to) override { position = to; }

private:
    std::size_t position = 0;
};

// The same to be read from.
class BytesInput : public Imf::IStream {
public:
    explicit BytesInput(const std::string& bytes) : Imf::IStream("picture"), bytes(bytes) {}

    bool read(char* to, int n) override {
        if (position > bytes.size() || bytes.size() - position < std::size_t(n))
            throw WorkFailure("EXR picture", "ends too early");
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

} // namespace

static Imath::M44f matrix_of(const std::array<float, 16>& m) {
    return {m[0], m[1], m[2],  m[3],  m[4],  m[5],  m[6],  m[7],
            m[8], m[9], m[10], m[11], m[12], m[13], m[14], m[15]};
}

// By the value's type.
static void insert_value(Imf::Header& header, const std::string& name, const ExrValue& value) {
    if (const auto* number = std::get_if<double>(&value))
        header.insert(name, Imf::DoubleAttribute(*number));
    else if (const auto* whole = std::get_if<int>(&value))
        header.insert(name, Imf::IntAttribute(*whole));
    else if (const auto* text = std::get_if<std::string>(&value))
        header.insert(name, Imf::StringAttribute(*text));
    else if (const auto* color = std::get_if<std::array<float, 3>>(&value))
        header.insert(name, Imf::V3fAttribute({(*color)[0], (*color)[1], (*color)[2]}));
}

static Imf::Header header_of(const FloatPicture& picture, const ExrMetadata& metadata,
                             Imf::PixelType type) {
    Imf::Header header(picture.width, picture.height);
    header.compression() = Imf::ZIP_COMPRESSION;
    for (const char* name : channel_names)
        header.channels().insert(name, Imf::Channel(type));

    // The defaults are the primaries and the white of Rec. 709.
    Imf::addChromaticities(header, Imf::Chromaticities());
    // What was asked for, in an order of the library's own.
    if (metadata.world_to_camera)
        Imf::addWorldToCamera(header, matrix_of(*metadata.world_to_camera));
    if (metadata.world_to_ndc)
        Imf::addWorldToNDC(header, matrix_of(*metadata.world_to_ndc));
    if (metadata.frame_rate)
        Imf::addFramesPerSecond(header, Imf::Rational(metadata.frame_rate->numerator,
                                                      metadata.frame_rate->denominator));
    if (!metadata.software.empty())
        header.insert("software", Imf::StringAttribute(metadata.software));
    for (const auto& [name, value] : metadata.attributes)
        insert_value(header, name, value);
    return header;
}

// The rows from `y` on, four samples of `type` to a pixel, in the order of channel_names.
static Imf::FrameBuffer rows_at(const void* samples, Imf::PixelType type, int y, int width,
                                int rows) {
    const std::size_t size = type == Imf::HALF ? sizeof(half) : sizeof(float);
    const char* sample = static_cast<const char*>(samples);
    Imf::FrameBuffer buffer;
    for (const char* name : channel_names) {
        buffer.insert(name, Imf::Slice::Make(type, sample, Imath::V2i(0, y), width, rows, 4 * size,
                                             4 * size * std::size_t(width)));
        sample += size;
    }
    return buffer;
}

// Clamps to the largest half.
static half half_of(float value, u64& clamped) {
    if (std::fabs(value) > largest_half) {
        clamped++;
        value = std::copysign(largest_half, value);
    }
    return value;
}

// Narrows a few rows at a time: another whole picture would take half as much memory again.
static void write_halves(Imf::OutputFile& file, const FloatPicture& picture, u64& clamped) {
    const int rows_at_once = 16;
    const std::size_t row = 4 * std::size_t(picture.width);
    std::vector<half> halves(row * rows_at_once);
    for (int y = 0; y < picture.height; y += rows_at_once) {
        const int rows = std::min(rows_at_once, picture.height - y);
        const float* floats = picture.pixel(0, y);
        for (std::size_t k = 0; k < row * std::size_t(rows); k++)
            halves[k] = half_of(floats[k], clamped);
        file.setFrameBuffer(rows_at(halves.data(), Imf::HALF, y, picture.width, rows));
        file.writePixels(rows);
    }
}

// The library throws nothing where its compressor or its table of places finds no memory: the rows
// are then missing. Its count of rows misses the last ones, so the file's own table is asked.
static void check_complete(const std::string& bytes) {
    BytesInput input(bytes);
    if (!Imf::InputFile(input, 0).isComplete())
        throw WorkFailure("EXR picture", "rows are missing: the compressor may lack memory");
}

std::string encode_exr(const FloatPicture& picture, const ExrMetadata& metadata, bool as_half,
                       u64& clamped) {
    clamped = 0;
    const Imf::PixelType type = as_half ? Imf::HALF : Imf::FLOAT;
    StringStream stream;
    {
        // No threads of its own. The table of the rows' places is written when the file is closed.
        Imf::OutputFile file(stream, header_of(picture, metadata, type), 0);
        if (as_half) {
            write_halves(file, picture, clamped);
        } else {
            file.setFrameBuffer(rows_at(picture.pixels, type, 0, picture.width, picture.height));
            file.writePixels(picture.height);
        }
    }
    // The library has filed its errors away: the bytes are read back.
    check_complete(stream.bytes);
    return std::move(stream.bytes);
}

} // namespace velmora
