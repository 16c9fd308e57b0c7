// Finds op classes: those that are there, and those in plug-ins along a path of folders.
//
// A class X that is not there yet is looked for as X.so, then as X.tcl, folder by folder; the first
// file found decides. An X.tcl holds one line, `load Y`, which stands for loading Y in its place.
//
// Errors:    PluginError.
// Threads:   main thread only.
// Ownership: plug-ins stay loaded for as long as the process runs.
#pragma once

#include "text/text_error.h"

#include <DDImage/Op.h>

#include <string>
#include <vector>

namespace velmora::host {

// Says "<file or class>: <why>", printable.
class DDImage_API PluginError : public TextError {
public:
    using TextError::TextError;
};

class DDImage_API PluginPath {
public:
    explicit PluginPath(std::vector<std::string> folders = {}) : folders(std::move(folders)) {}

    // The class, loaded if need be.
    const DD::Image::Op::Description& find(const std::string& class_name) const;

    // The same, or null when there is none of that name. A plug-in that is there and cannot be
    // loaded is an error all the same.
    const DD::Image::Op::Description* look_for(const std::string& class_name) const;

private:
    std::vector<std::string> folders;

    bool load(const std::string& name, int depth) const;
};

// The file whose classes announce themselves at the moment; null when none is being loaded.
DDImage_API const char* plugin_being_loaded();

} // namespace velmora::host
