// SPDX-License-Identifier: BSD-3-Clause

// Images and their descriptions: size, row stride, pixel format and typed metadata.
//
// Units:     strides and sizes in bytes, computed in 32 bits: a size that does not fit wraps
//            around, so callers must check sizes from users first.
// Shapes:    row y starts at `data` + y * `stride`; row 0 is the top row.
// Ownership: a spec owns its metadata, an image its pixels. Copies of specs are deep; images cannot
//            be copied.
// Errors:    StrXception and AssertXception as described below. Without memory: StrXception "out of
//            memory" for pixels and formatted numbers, Kess::Error 4 if their block is null without
//            that, std::bad_alloc for metadata; copying and appending Strings is not checked.
// Threads:   a spec and an image belong to one thread at a time; any number may read the pixels.
#pragma once

#include "core/instring.h"
#include "core/types.h"
#include "kessimage/core.h"
#include "kessimage/metadata.h"

#include <cstddef>

namespace Kess {

class ImageSpec {
public:
    // The numbers are part of file formats and interfaces. Rows of compressed formats have a fixed
    // size, which is defined for one width only.
    enum PixelFormat : s32 {
        BGRA_U8 = 1,
        G_U8 = 3,
        BGRA_FLOAT = 4,
        G_FLOAT = 6,
        YCBCR_422_8 = 7,   // 3 bytes per pixel, rows padded to 12 bytes
        DV_NTSC = 10,      // compressed, 720 pixels wide
        YCBCR_422_10 = 11, // six pixels in 16 bytes, rows padded to 128
        YCBCR_444_FLOAT = 12,
        CINEON = 13,
        G_U16 = 14,
        DV100_1080i60 = 15, // compressed, 1280 pixels wide
        DV50_NTSC = 16,     // compressed, 720 pixels wide
        BGRA_U16 = 17,
        DNXHD_1080i60_10BIT = 18, // compressed, 1920 pixels wide
        INVALID_FORMAT = 9999,
    };

    class MetaVisitor;
    class MetaData;

    s32 width;  // pixels
    s32 height; // rows
    u32 stride; // bytes from one row to the next
    PixelFormat format;
    MetaData* meta; // owned; null without metadata

    ImageSpec() : meta(nullptr) {} // the other fields are unspecified
    ImageSpec(s32 width, s32 height, u32 stride, PixelFormat format);
    ImageSpec(s32 width, s32 height, PixelFormat format); // with the natural stride
    ImageSpec(const ImageSpec& other);
    ImageSpec& operator=(const ImageSpec& other);
    ~ImageSpec();

    // The name of a format. Throws "unknown format" for a number outside the enumeration.
    static const char* pixel_format_str(PixelFormat format);

    // 0 for compressed and packed formats. Throws "unknown format" as pixel_format_str does, and
    // for INVALID_FORMAT.
    static u32 bytes_per_pixel(PixelFormat format);

    // The stride of rows without extra padding. Throws as bytes_per_pixel does; asserts the width
    // of a compressed format.
    static u32 natural_stride(s32 width, PixelFormat format);
    u32 set_natural_stride();

    // As the functions of MetaData; without metadata get_meta returns 1, for_each_meta does
    // nothing, and set_meta creates the metadata.
    int get_meta(const char* type, const char* name, float& value) const;
    int get_meta(const char* type, const char* name, String& value) const;
    void set_meta(const char* type, const char* name, float value);
    void set_meta(const char* type, const char* name, const String& value);
    void set_meta(const char* type, const char* name, const Matrix4<float>& value);
    void for_each_meta(MetaVisitor& visitor) const;

    // Prints format, size and metadata on standard output, without a line end.
    void print() const;
};

static_assert(offsetof(ImageSpec, stride) == 8 && offsetof(ImageSpec, format) == 12 &&
                  offsetof(ImageSpec, meta) == 16 && sizeof(ImageSpec) == 24,
              "size, stride, format and metadata");

// Whether all fields are equal and all metadata of `a` is in `b`; `b` may have more.
bool operator==(const ImageSpec& a, const ImageSpec& b);
bool operator!=(const ImageSpec& a, const ImageSpec& b);

// Called with every value of a set, by type. A non-zero result ends the walk. A visitor that writes
// the value to a file stores its offset there in `file_position`.
class ImageSpec::MetaVisitor {
public:
    virtual int visit_float(const char* type, const char* name, const float& value,
                            s64& file_position) = 0;
    virtual int visit_String(const char* type, const char* name, const String& value,
                             s64& file_position) = 0;
    virtual int visit_m44f(const char* type, const char* name, const Matrix4<float>& value,
                           s64& file_position) = 0;
    virtual ~MetaVisitor() = 0;
};

// Named values, called tags. `type` is always the name of the value's type: "float", "string" or
// "m44f". A name that does not match the type of `value` fails an assertion.
class ImageSpec::MetaData : public PtrMap<InString, MetaInfoRef> {
public:
    MetaData() : PtrMap(4) {}

    // Returns 0 and the value; 1 when there is no such tag; 2, with a warning, when it has another
    // type. `value` is set only with 0.
    int get_meta(const char* type, const char* name, float& value) const;
    int get_meta(const char* type, const char* name, String& value) const;

    // Adds a tag or changes its value. Throws when the tag has another type or has been written to
    // a file; the set is then unchanged.
    void set_meta(const char* type, const char* name, float value);
    void set_meta(const char* type, const char* name, const String& value);
    void set_meta(const char* type, const char* name, const Matrix4<float>& value);

    // Changes a value that has been written to a file, and returns its offset there. Throws when
    // there is no such tag, when it was never written, and when it has another type.
    s64 update_meta(const char* type, const char* name, float value);

    // Calls the visitor with every value, in the map's order. Throws "unhandled type '…'" for a
    // value of none of the three types.
    void for_each_meta(MetaVisitor& visitor) const;

    // The one-line text form, see docs/metadata-text.md. string_valid checks only how the text
    // starts. from_string sets the tags in the text; those before an error stay set.
    String stringify() const;
    static bool string_valid(const char* text);
    void from_string(const char* text);
};

class Image : public ImageSpec {
public:
    char* data; // first byte of row 0

    // Copies the description and allocates its pixels, contents unspecified. Asserts that the
    // format is not INVALID_FORMAT; throws "unknown format", and for a stride below width *
    // bytes_per_pixel.
    explicit Image(const ImageSpec& spec);
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    // Frees the pixels, and poisons the image's size and format so that use after destruction is
    // noticed.
    ~Image();

    // alloc() allocates pixels again after free(); in between, `data` is null.
    void alloc();
    void free();

    // Sets all bytes to 0.
    void make_blank();

    // Copies the pixels, not the metadata, of an image of equal size, stride and format; throws for
    // any other.
    void copy_from(const Image& other);

    // Prints allocated size, address and spec on standard output, without a line end.
    void dump() const;

private:
    char* allocation;
    u64 allocated_size; // bytes
};

} // namespace Kess
