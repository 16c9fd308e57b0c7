// What all nodes of a comp have in common: the format of those that pick none, and an image in it.
//
// Ownership: a project belongs to its graph and outlives the graph's nodes and their ops.
#pragma once

#include <DDImage/Format.h>
#include <memory>

namespace DD::Image {
class Iop;
}

namespace velmora::host {

class DDImage_API Project {
public:
    Project();
    Project(const Project&) = delete;
    Project& operator=(const Project&) = delete;
    ~Project();

    // 2048x1556 at first, as the host's is.
    const DD::Image::Format& format() const { return *project_format; }
    void set_format(const DD::Image::Format& format);

    // The image that ops see where nothing is connected: black, in the project's format.
    DD::Image::Iop* black() const { return black_image.get(); }

private:
    const DD::Image::Format* project_format = nullptr;
    std::unique_ptr<DD::Image::Iop> black_image;
};

} // namespace velmora::host
