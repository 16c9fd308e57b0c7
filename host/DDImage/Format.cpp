#include <cstring>
#include <DDImage/Format.h>
#include <memory>
#include <vector>

namespace DD::Image {

const Format Format::None(0, 0, 0, 0, 0, 0, 1);

static std::vector<std::unique_ptr<Format>>& named_formats() {
    static std::vector<std::unique_ptr<Format>> formats;
    return formats;
}

void Format::add(const char* name) {
    this->name(name);
    for (std::unique_ptr<Format>& format : named_formats()) {
        if (format->name_ == name_) {
            *format = *this; // in place, since nodes may point to it
            return;
        }
    }
    named_formats().push_back(std::make_unique<Format>(*this));
}

std::size_t Format::size() {
    return named_formats().size();
}

const Format* Format::index(std::size_t place) {
    return place < size() ? named_formats()[place].get() : nullptr;
}

const Format* Format::findExisting(int width, int height, double pixel_aspect) {
    for (const std::unique_ptr<Format>& format : named_formats())
        if (format->width_ == width && format->height_ == height &&
            (pixel_aspect == 0 || format->pixel_aspect_ == pixel_aspect))
            return format.get();
    return nullptr;
}

const Format* Format::findNamed(const char* name) {
    for (const std::unique_ptr<Format>& format : named_formats())
        if (format->name_ == name)
            return format.get();
    return nullptr;
}

void Format::append(Hash& hash) const {
    for (const int value : {x(), y(), r(), t(), width_, height_})
        hash.append(value);
    hash.append(pixel_aspect_);
}

} // namespace DD::Image
