// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/project.h"

#include <DDImage/Iop.h>

namespace velmora::host {

namespace {

// Not a class that scripts can name.
class Black : public DD::Image::Iop {
public:
    explicit Black(const Project& project) : Iop(nullptr), project(project) { inputs(0); }
    const char* Class() const override { return "Black"; }
    const char* node_help() const override { return "A black image."; }
    void engine(int, int, int, DD::Image::ChannelMask channels, DD::Image::Row& row) override {
        row.erase(channels);
    }

protected:
    void _validate(bool) override {
        info_.format(project.format());
        info_.full_size_format(project.format());
        info_.black_outside(true);
    }

private:
    const Project& project;
};

} // namespace

Project::Project() : black_image(std::make_unique<Black>(*this)) {
    set_format(DD::Image::Format(2048, 1556));
}

Project::~Project() {}

void Project::set_format(const DD::Image::Format& format) {
    project_format = &DD::Image::Format::kept(format);
    DD::Image::Hash hash;
    format.append(hash);
    black_image->set_hash(hash); // part of the hash of every op that it feeds
}

} // namespace velmora::host
