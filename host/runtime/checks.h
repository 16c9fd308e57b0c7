// SPDX-License-Identifier: BSD-3-Clause

// Checks of plug-ins, for their developers.
//
// Checked:   engine writes only inside its span and runs only between open and close; each knob is
//            declared and stored as it was made (this one always).
// Errors:    PluginMisuse, from the call in which it was found.
// Threads:   set the switch while no op is working.
#pragma once

#include <DDImage/DDImage_API.h>

#include <stdexcept>
#include <string>

namespace DD::Image {
class Op;
}

namespace velmora::host {

// On in builds with assertions, off otherwise.
DDImage_API bool checks_plugins();
DDImage_API void set_checks_plugins(bool on);

// what() is "<node> (<class>): <what>", printable.
class DDImage_API PluginMisuse : public std::logic_error {
public:
    PluginMisuse(const DD::Image::Op& op, const std::string& what);
};

} // namespace velmora::host
