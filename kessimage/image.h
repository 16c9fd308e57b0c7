// Images and what describes them: size, row stride, pixel format and typed metadata.
//
// Units:     strides and sizes in bytes, counted in 32 bits: a size that does not fit wraps, so
//            callers who take sizes from users check them first.
// Shapes:    row y starts `stride` * y bytes behind the first one; row 0 is the top row.
// Ownership: a spec owns its metadata, an image its pixels; specs copy deeply, images do not copy.
// Errors:    StrXception and AssertXception as said below. Memory that runs out is StrXception "out
//            of memory" for pixels and for formatted numbers, Kess::Error 4 where a block is null
//            all the same, std::bad_alloc for metadata, and unchecked where a String is copied or
//            appended to.
// Threads:   a spec and an image belong to one thread at a time; reading pixels is free to all.
#pragma once

#include "core/instring.h"
#include "core/types.h"
#include "kessimage/core.h"
#include "kessimage/metadata.h"

#include <cstddef>

namespace Kess {

class ImageSpec {
public:
    // The numbers are part of files and interfaces. Rows of compressed formats have a fixed size,
    // which holds for one width only.
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
    MetaData* meta; // null when there is none

    ImageSpec() : meta(nullptr) {} // leaves all but the metadata undefined
    ImageSpec(s32 width, s32 height, u32 stride, PixelFormat format);
    ImageSpec(s32 width, s32 height, PixelFormat format); // with the natural stride
    ImageSpec(const ImageSpec& other);
    ImageSpec& operator=(const ImageSpec& other);
    ~ImageSpec();

    // The format's name. Throws "unknown format" for a number that is none.
    static const char* pixel_format_str(PixelFormat format);

    // 0 for compressed and packed formats. Throws "unknown format".
    static u32 bytes_per_pixel(PixelFormat format);

    // The stride that the format's rows have by themselves. Throws "unknown format"; asserts a
    // compressed format's width.
    static u32 natural_stride(s32 width, PixelFormat format);
    u32 set_natural_stride();

    // As those of MetaData; without metadata get_meta gives 1 and for_each_meta does nothing.
    int get_meta(const char* type, const char* name, float& value) const;
    int get_meta(const char* type, const char* name, String& value) const;
    void set_meta(const char* type, const char* name, float value);
    void set_meta(const char* type, const char* name, const String& value);
    void set_meta(const char* type, const char* name, const Matrix4<float>& value);
    void for_each_meta(MetaVisitor& visitor) const;

    // Writes format, size and metadata to standard output, without a line end.
    void print() const;
};

static_assert(offsetof(ImageSpec, stride) == 8 && offsetof(ImageSpec, format) == 12 &&
                  offsetof(ImageSpec, meta) == 16 && sizeof(ImageSpec) == 24,
              "size, stride, format and metadata");

// All fields equal, and the metadata as MetaData's one-sided equality has it.
bool operator==(const ImageSpec& a, const ImageSpec& b);
bool operator!=(const ImageSpec& a, const ImageSpec& b);

// Is shown every value of a set, by its type. A visit that gives other than 0 ends the walk. A
// visitor that writes the value to a file records where in `file_position`.
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

// Named values. `type` is always the value's type name, "float", "string" or "m44f"; a name that
// does not go with the value's type is the caller's mistake and fails an assertion.
class ImageSpec::MetaData : public PtrMap<InString, MetaInfoRef> {
public:
    MetaData() : PtrMap(4) {}

    // 0 and the value; 1 when there is no such tag; 2 and a warning when it has another type. The
    // output is touched only with 0.
    int get_meta(const char* type, const char* name, float& value) const;
    int get_meta(const char* type, const char* name, String& value) const;

    // Adds or overwrites. Throws for a tag of another type, and for one that was written to a file.
    // The set is then what it was.
    void set_meta(const char* type, const char* name, float value);
    void set_meta(const char* type, const char* name, const String& value);
    void set_meta(const char* type, const char* name, const Matrix4<float>& value);

    // Changes a value that was written to a file and returns where it stands there. Throws for a
    // tag that is not there, was never written, or has another type.
    s64 update_meta(const char* type, const char* name, float value);

    // Shows every value in the map's order. Throws "unhandled type '…'" for a value of another
    // kind.
    void for_each_meta(MetaVisitor& visitor) const;

    // The one-line text form, see docs/metadata-text.md: writing it, telling whether a text starts
    // like one, and adding the tags of one to this set. from_string keeps what it set before it
    // throws.
    String stringify() const;
    static bool string_valid(const char* text);
    void from_string(const char* text);
};

class Image : public ImageSpec {
public:
    char* data; // first byte of row 0

    // Copies the description and allocates its pixels, contents unspecified. Asserts a valid
    // format; throws "unknown format", and when the stride is below bytes_per_pixel times the
    // width.
    explicit Image(const ImageSpec& spec);
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    // Releases the pixels and leaves a spec that cannot pass for one, so that stale use shows.
    ~Image();

    // Allocates for an image whose pixels were released, and releases them; the image is without
    // pixels in between.
    void alloc();
    void free();

    // All bytes 0.
    void make_blank();

    // Takes over the pixels of an image of equal size, stride and format; throws for any other.
    // Metadata takes no part.
    void copy_from(const Image& other);

    // Writes size, place and spec to standard output, without a line end.
    void dump() const;

private:
    char* allocation;
    u64 allocated_size; // bytes
};

} // namespace Kess
