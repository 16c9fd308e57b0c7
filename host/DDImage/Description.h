// SPDX-License-Identifier: BSD-3-Clause

// What a plug-in announces about itself while it is loaded.
//
// Threads:   main thread only.
#pragma once

#include <DDImage/DDImage_API.h>
#include <DDImage/ddImageVersionNumbers.h>

class Node; // the host's; ops only hold a pointer to it

namespace DD::Image {

class License;

class DDImage_API Description {
public:
    const char* compiled; // with what the plug-in was built
    const char* plugin;   // the file that it came from; null for the host's own classes
    License* license;     // for the host; null for all plug-ins known here

protected:
    // Inline, so that it is compiled in the plug-in and `compiled` is the plug-in's.
    explicit Description(void (*announce)(Description*))
        : compiled(kDDImageCompiled), plugin(nullptr), license(nullptr) {
        announce(this);
    }
    ~Description() {}
};

} // namespace DD::Image
