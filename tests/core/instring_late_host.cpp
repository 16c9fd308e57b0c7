// SPDX-License-Identifier: BSD-3-Clause

// A host that loads the plug-in named by its argument when it has an exit handler already, so that
// the handler runs after the plug-in's own, and calls into the plug-in once more.

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

static bool (*intern_names)();

static void intern_at_exit() {
    std::puts("exit");
    if (!intern_names())
        _exit(3);
}

int main(int, char** arguments) {
    if (std::atexit(intern_at_exit) != 0)
        return 1;
    void* const plugin = dlopen(arguments[1], RTLD_NOW);
    void* const symbol = plugin ? dlsym(plugin, "intern_names") : nullptr;
    if (!symbol) {
        std::puts(dlerror());
        return 1;
    }
    intern_names = reinterpret_cast<bool (*)()>(symbol);
    return intern_names() ? 0 : 2;
}
