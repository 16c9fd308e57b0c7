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

    // What a validated op of the plug-in's node draws.
    const StarRendererData& render_data(DD::Image::Op& op) const { return *get_data(&op); }
    const Array<camera>& cameras(DD::Image::Op& op) const { return *get_cameras(&op); }

private:
    const char* (*kernels_name)();
    void (*set_plain)(bool);
    void (*get_counts)(RenderCounts*);
    const StarRendererData* (*get_data)(DD::Image::Op*);
    const Array<camera>* (*get_cameras)(DD::Image::Op*);
};

} // namespace velmora
