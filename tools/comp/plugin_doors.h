// What the loaded plug-in shows beside the node: see node/doors.h, whose functions are looked up in
// it.
//
// Errors:    WorkFailure for a plug-in that does not have them.
#pragma once

#include "host/runtime/plugins.h"
#include "stars/stars.h"

#include <string>

namespace velmora {

class PluginDoors {
public:
    explicit PluginDoors(const DD::Image::Op::Description& plugin);

    std::string kernels() const { return kernels_name(); }
    void draw_plainly() const { set_plain(true); }
    RenderCounts last_counts() const;

private:
    const char* (*kernels_name)();
    void (*set_plain)(bool);
    void (*get_counts)(RenderCounts*);
};

} // namespace velmora
