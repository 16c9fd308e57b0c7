// What a plug-in tells about itself as it is loaded.
#pragma once

#include <DDImage/DDImage_API.h>
#include <DDImage/ddImageVersionNumbers.h>

class Node; // the host's own, which ops are only handed

namespace DD::Image {

class License;

class DDImage_API Description {
public:
    const char* compiled; // with what the plug-in was built
    const char* plugin;   // the file that it came from; null for what the host brings along
    License* license;     // the host's to look at; null in all that this one meets

protected:
    // Runs in the plug-in, so that `compiled` is the plug-in's own; `announce` tells the host.
    explicit Description(void (*announce)(Description*))
        : compiled(kDDImageCompiled), plugin(nullptr), license(nullptr) {
        announce(this);
    }
    ~Description() {}
};

} // namespace DD::Image
