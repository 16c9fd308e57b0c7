// SPDX-License-Identifier: BSD-3-Clause

// Finds op classes: those already loaded, and those in plug-ins along a path of folders.
//
// A class X that is not loaded is searched for as X.so, then as X.tcl, folder by folder; the first
// file found decides. An X.tcl holds one line, `load Y`, which means: load Y instead.
//
// Errors:    PluginError; `where` is a file or a class.
// Threads:   main thread only.
// Ownership: plug-ins stay loaded for as long as the process runs.
#pragma once

#include "text/text_error.h"

#include <DDImage/Op.h>

#include <string>
#include <vector>

namespace velmora::host {

class DDImage_API PluginError : public TextError {
public:
    using TextError::TextError;
};

class DDImage_API PluginPath {
public:
    explicit PluginPath(std::vector<std::string> folders = {}) : folders(std::move(folders)) {}

    // The class, loaded if necessary.
    const DD::Image::Op::Description& find(const std::string& class_name) const;

    // The same, or null if there is none. A plug-in that is found but cannot be loaded is an error.
    const DD::Image::Op::Description* look_for(const std::string& class_name) const;

private:
    std::vector<std::string> folders;

    bool load(const std::string& name, int depth) const;
};

// The plug-in file that is being loaded, while its classes announce themselves; else null.
DDImage_API const char* plugin_being_loaded();

} // namespace velmora::host
