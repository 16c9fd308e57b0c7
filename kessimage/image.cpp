// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "image"

#include "kessimage/image.h"

#include <cstdio>
#include <cstring>
#include <memory>

namespace Kess {

// ---- Pixel formats ---------------------------------------------------------------------------

const char* ImageSpec::pixel_format_str(PixelFormat format) {
    switch (format) {
    case BGRA_U8:
        return "BGRA_U8";
    case G_U8:
        return "G_U8";
    case BGRA_FLOAT:
        return "BGRA_FLOAT";
    case G_FLOAT:
        return "G_FLOAT";
    case YCBCR_422_8:
        return "YCBCR_422_8";
    case DV_NTSC:
        return "DV_NTSC";
    case YCBCR_422_10:
        return "YCBCR_422_10";
    case YCBCR_444_FLOAT:
        return "YCBCR_444_FLOAT";
    case CINEON:
        return "CINEON";
    case G_U16:
        return "G_U16";
    case DV100_1080i60:
        return "DV100_1080i60";
    case DV50_NTSC:
        return "DV50_NTSC";
    case BGRA_U16:
        return "BGRA_U16";
    case DNXHD_1080i60_10BIT:
        return "DNXHD_1080i60_10BIT";
    case INVALID_FORMAT:
        return "INVALID_FORMAT";
    }
    XTHROW("unknown format");
}

// Formats whose pixels do not lie in whole bytes of their own give 0.
u32 ImageSpec::bytes_per_pixel(PixelFormat format) {
    switch (format) {
    case BGRA_FLOAT:
        return 16;
    case YCBCR_444_FLOAT:
        return 12;
    case BGRA_U16:
        return 8;
    case BGRA_U8:
    case G_FLOAT:
    case CINEON:
        return 4;
    case YCBCR_422_8:
        return 3;
    case G_U16:
        return 2;
    case G_U8:
        return 1;
    case DV_NTSC:
    case YCBCR_422_10:
    case DV100_1080i60:
    case DV50_NTSC:
    case DNXHD_1080i60_10BIT:
        return 0;
    case INVALID_FORMAT:
        XTHROW("unknown format");
    default:
        // pixel_format_str throws "unknown format" first for a number outside the enumeration.
        XTHROW("unhandled format %s", pixel_format_str(format));
    }
}

// Six pixels take 16 bytes, an incomplete group as much; rows are padded to 128 bytes.
static u32 packed_10_bit_stride(s32 width) {
    const u32 groups = u32(width / 6) + (width % 6 != 0);
    const u32 stride = groups * 16;
    return stride % 128 == 0 ? stride : (stride & ~u32(127)) + 128;
}

// Three bytes a pixel; rows are padded to 12 bytes.
static u32 padded_422_stride(s32 width) {
    const u32 stride = 3 * u32(width);
    return stride % 12 == 0 ? stride : stride + 12 - stride % 12;
}

u32 ImageSpec::natural_stride(s32 width, PixelFormat format) {
    // Compressed formats: the frame's bytes spread evenly over its rows.
    switch (format) {
    case DV_NTSC:
        XASSERT(width == 720);
        return 250;
    case DV50_NTSC:
        XASSERT(width == 720);
        return 500;
    case DV100_1080i60:
        XASSERT(width == 1280);
        return 445;
    case DNXHD_1080i60_10BIT:
        XASSERT(width == 1920);
        return 850;
    case YCBCR_422_10:
        return packed_10_bit_stride(width);
    case YCBCR_422_8:
        return padded_422_stride(width);
    default:
        return bytes_per_pixel(format) * u32(width);
    }
}

u32 ImageSpec::set_natural_stride() {
    stride = natural_stride(width, format);
    return stride;
}

// ---- ImageSpec -------------------------------------------------------------------------------

ImageSpec::ImageSpec(s32 width, s32 height, u32 stride, PixelFormat format)
    : width(width), height(height), stride(stride), format(format), meta(nullptr) {}

ImageSpec::ImageSpec(s32 width, s32 height, PixelFormat format)
    : ImageSpec(width, height, natural_stride(width, format), format) {}

ImageSpec::ImageSpec(const ImageSpec& other)
    : width(other.width), height(other.height), stride(other.stride), format(other.format),
      meta(other.meta ? new MetaData(*other.meta) : nullptr) {}

// The metadata is copied before the old is freed: for self-assignment, and in case copying throws.
ImageSpec& ImageSpec::operator=(const ImageSpec& other) {
    MetaData* copy = other.meta ? new MetaData(*other.meta) : nullptr;
    delete meta;
    meta = copy;
    width = other.width;
    height = other.height;
    stride = other.stride;
    format = other.format;
    return *this;
}

ImageSpec::~ImageSpec() {
    delete meta;
}

bool operator==(const ImageSpec& a, const ImageSpec& b) {
    if (a.width != b.width || a.height != b.height || a.stride != b.stride || a.format != b.format)
        return false;
    // Without metadata on one side, both must be without it.
    if (!a.meta || !b.meta)
        return !a.meta && !b.meta;
    return *a.meta == *b.meta;
}

bool operator!=(const ImageSpec& a, const ImageSpec& b) {
    return !(a == b);
}

int ImageSpec::get_meta(const char* type, const char* name, float& value) const {
    return meta ? meta->get_meta(type, name, value) : 1;
}

int ImageSpec::get_meta(const char* type, const char* name, String& value) const {
    return meta ? meta->get_meta(type, name, value) : 1;
}

// Creates the metadata with its first value, but not when that value is refused.
template <class T>
static void set_first_or_more(ImageSpec& spec, const char* type, const char* name, const T& value) {
    if (spec.meta) {
        spec.meta->set_meta(type, name, value);
        return;
    }
    auto first = std::make_unique<ImageSpec::MetaData>();
    first->set_meta(type, name, value);
    spec.meta = first.release();
}

void ImageSpec::set_meta(const char* type, const char* name, float value) {
    set_first_or_more(*this, type, name, value);
}

void ImageSpec::set_meta(const char* type, const char* name, const String& value) {
    set_first_or_more(*this, type, name, value);
}

void ImageSpec::set_meta(const char* type, const char* name, const Matrix4<float>& value) {
    set_first_or_more(*this, type, name, value);
}

void ImageSpec::for_each_meta(MetaVisitor& visitor) const {
    if (meta)
        meta->for_each_meta(visitor);
}

namespace {

// Prints each value as ` "type name" [value]`.
class PrintingVisitor : public ImageSpec::MetaVisitor {
public:
    int visit_float(const char* type, const char* name, const float& value, s64&) override {
        printf(" \"%s %s\" [%f]", type, name, double(value));
        return 0;
    }
    int visit_String(const char* type, const char* name, const String& value, s64&) override {
        printf(" \"%s %s\" [\"%s\"]", type, name, velmora::text_of(value));
        return 0;
    }
    int visit_m44f(const char* type, const char* name, const Matrix4<float>& value, s64&) override {
        printf(" \"%s %s\" [", type, name);
        for (int i = 0; i < 16; i++)
            printf(i == 0 ? "%.9e" : " %.9e", double(value.e[i]));
        printf("]");
        return 0;
    }
};

} // namespace

void ImageSpec::print() const {
    printf("%-15s\t%d x %d", pixel_format_str(format), width, height);
    PrintingVisitor visitor;
    for_each_meta(visitor);
}

// ---- Image -----------------------------------------------------------------------------------

Image::Image(const ImageSpec& spec)
    : ImageSpec(spec), data(nullptr), allocation(nullptr), allocated_size(0) {
    XASSERT_AT(spec.format != ImageSpec::INVALID_FORMAT, "spec.format != ImageSpec::INVALID_FORMAT",
               "Kess::Image::Image(const Kess::ImageSpec&)", 269);
    alloc();
}

Image::~Image() {
    free();
    // Through volatile, as the compiler drops plain stores to an object that is being destroyed.
    static_cast<volatile PixelFormat&>(format) = INVALID_FORMAT;
    static_cast<volatile s32&>(width) = -666;
    static_cast<volatile s32&>(height) = -666;
    static_cast<volatile u32&>(stride) = 0;
}

void Image::alloc() {
    // Compressed and packed formats have 0 bytes a pixel, so any stride passes.
    if (stride < bytes_per_pixel(format) * u32(width))
        XTHROW("ImageSpec stride is too small for width - did you forget set_natural_stride?");
    const u32 size = u32(height) * stride; // in 32 bits, and may wrap around
    // Set the fields only when nothing can fail any more.
    char* block = malloc_pixels(size);
    if (!block)
        throw Error(4);
    allocation = block;
    allocated_size = size;
    data = block;
}

void Image::free() {
    free_pixels(allocation, allocated_size);
    allocation = data = nullptr;
    allocated_size = 0;
}

void Image::make_blank() {
    memset(allocation, 0, allocated_size);
}

// One copy of the whole block, padding between the rows included.
void Image::copy_from(const Image& other) {
    if (width != other.width || height != other.height || stride != other.stride ||
        format != other.format)
        XTHROW("formats don't match\n");
    memcpy(allocation, other.allocation, allocated_size);
}

void Image::dump() const {
    printf("Image (allocated_size %lu at %p) ", allocated_size, static_cast<const void*>(data));
    print();
}

} // namespace Kess
