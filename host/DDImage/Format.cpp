// SPDX-License-Identifier: BSD-3-Clause
#include <DDImage/Format.h>
#include <deque>
#include <vector>

namespace DD::Image {

const Format Format::None(0, 0, 0, 0, 0, 0, 1);

static std::vector<const Format*>& named_formats() {
    static std::vector<const Format*> formats;
    return formats;
}

const Format& Format::kept(const Format& format) {
    static std::deque<Format> all; // a deque: references survive its growth
    for (const Format& known : all)
        if (known == format && known.name_ == format.name_)
            return known;
    all.push_back(format);
    return all.back();
}

void Format::add(const char* name) {
    this->name(name);
    // The list points to copies, which outlive this format and the entry that they replace.
    const Format& added = kept(*this);
    for (const Format*& format : named_formats()) {
        if (format->name_ == name_) {
            format = &added;
            return;
        }
    }
    named_formats().push_back(&added);
}

// ---- the list of named formats ------------------------------------------------------------------

std::size_t Format::size() {
    return named_formats().size();
}

const Format* Format::index(std::size_t place) {
    return place < size() ? named_formats()[place] : nullptr;
}

const Format* Format::findExisting(int width, int height, double pixel_aspect) {
    for (const Format* const format : named_formats())
        if (format->width_ == width && format->height_ == height &&
            (pixel_aspect == 0 || format->pixel_aspect_ == pixel_aspect))
            return format;
    return nullptr;
}

const Format* Format::findNamed(const char* name) {
    for (const Format* const format : named_formats())
        if (format->name_ == name)
            return format;
    return nullptr;
}

void Format::append(Hash& hash) const {
    for (const int value : {x(), y(), r(), t(), width_, height_})
        hash.append(value);
    hash.append(pixel_aspect_);
}

} // namespace DD::Image
