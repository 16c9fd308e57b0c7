#include "host/black.h"

#include <DDImage/Iop.h>

namespace velmora {

namespace {

class Black : public DD::Image::Iop {
public:
    Black() : Iop(nullptr) {
        inputs(0);
        validate();
        open();
    }
    const char* Class() const override { return "Black"; }
    const char* node_help() const override { return "A black image."; }
    void engine(int, int, int, DD::Image::ChannelMask channels, DD::Image::Row& row) override {
        row.erase(channels);
    }

protected:
    void _validate(bool) override { info_.black_outside(true); }
};

} // namespace

DD::Image::Iop* black_image() {
    static Black image;
    return &image;
}

} // namespace velmora
