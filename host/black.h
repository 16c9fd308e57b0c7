// The image that ops see where nothing is connected.
#pragma once

namespace DD::Image {
class Iop;
}

namespace velmora {

// A black image of one pixel, shared by all and always open.
DD::Image::Iop* black_image();

} // namespace velmora
