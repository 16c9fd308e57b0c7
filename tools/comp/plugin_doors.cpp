// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/plugin_doors.h"

#include "tools/failure.h"

#include <dlfcn.h>
#include <memory>

namespace velmora {

// Sets `function` to the plug-in's function of that name.
template <class Function>
static void look_up(void* library, const char* file, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (!function)
        throw WorkFailure(file, std::string("has no ") + name);
}

PluginDoors::PluginDoors(const DD::Image::Op::Description& plugin) {
    const char* const file = plugin.plugin ? plugin.plugin : "";
    // A handle of our own to what the host has loaded already.
    const std::unique_ptr<void, int (*)(void*)> library(dlopen(file, RTLD_NOW | RTLD_NOLOAD),
                                                        dlclose);
    if (!library)
        throw WorkFailure(file, "is not a loaded plug-in");
    look_up(library.get(), file, "velmora_kernels", kernels_name);
    look_up(library.get(), file, "velmora_draw_plainly", set_plain);
    look_up(library.get(), file, "velmora_last_counts", get_counts);
    look_up(library.get(), file, "velmora_render_data", get_data);
    look_up(library.get(), file, "velmora_cameras", get_cameras);
}

RenderCounts PluginDoors::last_counts() const {
    RenderCounts counts;
    get_counts(&counts);
    return counts;
}

} // namespace velmora
