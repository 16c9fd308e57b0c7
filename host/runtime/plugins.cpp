// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/plugins.h"

#include <deque>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>

namespace velmora::host {

// How many .tcl files may refer to one another in a row.
static const int deepest_tcl = 8;

static const char* being_loaded = nullptr;

const char* plugin_being_loaded() {
    return being_loaded;
}

static void load_library(const std::string& file) {
    static std::deque<std::string> loaded; // for ever: descriptions point to the names
    loaded.push_back(std::filesystem::absolute(file).string());
    const char* const outer = being_loaded; // a plug-in may load another
    being_loaded = loaded.back().c_str();
    void* const library = dlopen(being_loaded, RTLD_NOW | RTLD_LOCAL);
    being_loaded = outer;
    if (!library)
        throw PluginError(file, std::string("cannot be loaded: ") + dlerror());
}

// The name after `load` in the file's one line.
static std::string loaded_by(const std::string& file) {
    std::ifstream stream(file);
    std::string command, name;
    stream >> command >> name;
    if (!stream.is_open() || stream.bad())
        throw PluginError(file, "cannot be read");
    if (!stream || command != "load")
        throw PluginError(file, "holds something else than 'load NAME'");
    return name;
}

// A class name must not lead out of the folders.
static bool is_file_name(const std::string& name) {
    return !name.empty() && name.find('/') == std::string::npos;
}

bool PluginPath::load(const std::string& name, int depth) const {
    if (!is_file_name(name))
        return false;
    for (const std::string& folder : folders) {
        // A library first.
        const std::string stem = (std::filesystem::path(folder) / name).string();
        if (std::filesystem::exists(stem + ".so")) {
            load_library(stem + ".so");
            return true;
        }
        // Else a reference to another name, along the whole path again.
        const std::string tcl = stem + ".tcl";
        if (!std::filesystem::exists(tcl))
            continue;
        const std::string next = loaded_by(tcl);
        if (depth == deepest_tcl)
            throw PluginError(tcl, "leads round in a circle");
        if (!load(next, depth + 1))
            throw PluginError(tcl,
                              "loads " + in_quotes(next) + ", which is not on the plug-in path");
        return true;
    }
    return false;
}

const DD::Image::Op::Description* PluginPath::look_for(const std::string& class_name) const {
    using Description = DD::Image::Op::Description;
    // Already loaded, or loaded now.
    if (const Description* const there = Description::find(class_name.c_str()))
        return there;
    if (!load(class_name, 0))
        return nullptr;
    const Description* const loaded = Description::find(class_name.c_str());
    if (!loaded)
        throw PluginError(class_name, "its plug-in was loaded but has no class of that name");
    return loaded;
}

const DD::Image::Op::Description& PluginPath::find(const std::string& class_name) const {
    const DD::Image::Op::Description* const found = look_for(class_name);
    if (found)
        return *found;
    std::string searched;
    for (const std::string& folder : folders)
        searched += (searched.empty() ? "" : ", ") + folder;
    throw PluginError(class_name, "there is no such plug-in in " +
                                      (searched.empty() ? "an empty plug-in path" : searched));
}

} // namespace velmora::host
