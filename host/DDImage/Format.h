// SPDX-License-Identifier: BSD-3-Clause

// The size of an image and the shape of its pixels.
//
// Shapes:    the box is the image's area within the file's width and height.
// Ownership: ops hold pointers to formats; those from the host never change and live as long as the
//            process.
// Threads:   main thread only, for the list of named formats and kept().
#pragma once

#include <DDImage/Box.h>
#include <DDImage/DDImage_API.h>
#include <DDImage/Hash.h>

#include <cstddef>
#include <string>

namespace DD::Image {

class DDImage_API Format : public Box {
public:
    static const Format None; // no format; a FormatPair with it means the script's

    Format() : Box(0, 0, 640, 480), width_(640), height_(480), pixel_aspect_(1) {}
    Format(int width, int height, double pixel_aspect = 1)
        : Box(0, 0, width, height), width_(width), height_(height), pixel_aspect_(pixel_aspect) {}
    Format(int width, int height, int x, int y, int r, int t, double pixel_aspect = 1)
        : Box(x, y, r, t), width_(width), height_(height), pixel_aspect_(pixel_aspect) {}

    int width() const { return width_; }
    int height() const { return height_; }
    double pixel_aspect() const { return pixel_aspect_; }
    void width(int value) { width_ = value; }
    void height(int value) { height_ = value; }
    void pixel_aspect(double value) { pixel_aspect_ = value; }

    const char* name() const { return name_.empty() ? nullptr : name_.c_str(); }
    void name(const char* value) { name_ = value ? value : ""; }
    bool is_none() const { return this == &None; }

    // Names this format and puts a copy into the list, replacing one of the same name.
    void add(const char* name);

    // The list of named formats. Null if there is no such format; a pixel aspect of 0 matches all.
    static std::size_t size();
    static const Format* index(std::size_t place);
    static const Format* findExisting(int width, int height, double pixel_aspect = 0);
    static const Format* findNamed(const char* name);

    // An equal format of the same name that lives as long as the process.
    static const Format& kept(const Format& format);

    void append(Hash& hash) const;

    // Names are not compared.
    bool operator==(const Format& other) const {
        return Box::operator==(other) && width_ == other.width_ && height_ == other.height_ &&
               pixel_aspect_ == other.pixel_aspect_;
    }
    bool operator!=(const Format& other) const { return !(*this == other); }

private:
    int width_, height_;
    double pixel_aspect_;
    std::string name_;
};

// What a Format_knob stores: the format in effect, and the one without proxy scale. Format::None
// until then.
class DDImage_API FormatPair {
public:
    FormatPair() : format_(&Format::None), full_size_format_(&Format::None) {}

    const Format* format() const { return format_; }
    const Format* fullSizeFormat() const { return full_size_format_; }
    void format(const Format* value) { format_ = value; }
    void fullSizeFormat(const Format* value) { full_size_format_ = value; }

private:
    const Format* format_;
    const Format* full_size_format_;
};

} // namespace DD::Image
