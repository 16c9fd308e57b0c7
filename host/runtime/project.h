// SPDX-License-Identifier: BSD-3-Clause

// What the nodes of a comp share: the default format, and a black image in it.
//
// Ownership: a graph owns its project, which outlives the graph's nodes and their ops.
// Threads:   main thread only.
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

    // 2048x1556 by default, as the host's. Valid as long as the process.
    const DD::Image::Format& format() const { return *project_format; }
    void set_format(const DD::Image::Format& format);

    // The image of unconnected inputs: black, in the project's format.
    DD::Image::Iop* black() const { return black_image.get(); }

private:
    const DD::Image::Format* project_format = nullptr;
    std::unique_ptr<DD::Image::Iop> black_image;
};

} // namespace velmora::host
