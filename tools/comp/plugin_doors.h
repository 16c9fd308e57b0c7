// SPDX-License-Identifier: BSD-3-Clause

// The functions of node/doors.h, looked up in the loaded plug-in.
//
// Ownership: the plug-in must stay loaded; what the functions return belongs to the op.
// Errors:    WorkFailure for a plug-in that lacks one of them.
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
