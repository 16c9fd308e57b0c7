// The watch that the host keeps over its plug-ins while they are developed.
//
// Checked:   no engine writes beside its span or runs outside open and close, and no knob is
//            declared or stored as something that it is not.
// Errors:    PluginMisuse, out of the call that found it.
// Threads:   the switch is set while no op is at work.
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

// Says "<node> (<class>): <what>", printable.
class DDImage_API PluginMisuse : public std::logic_error {
public:
    PluginMisuse(const DD::Image::Op& op, const std::string& what);
};

} // namespace velmora::host
