#include "host/project.h"

#include <DDImage/Iop.h>

namespace velmora {

namespace {

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

Project::Project()
    : project_format(&DD::Image::Format::kept(DD::Image::Format(2048, 1556))),
      black_image(std::make_unique<Black>(*this)) {}

Project::~Project() {}

void Project::set_format(const DD::Image::Format& format) {
    project_format = &DD::Image::Format::kept(format);
    black_image->invalidate();
}

} // namespace velmora
