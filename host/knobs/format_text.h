// A format as scripts write it: "width height [x y r t] [pixel aspect] [name]", or a name alone.
//
// Errors:    ScriptError for texts that are none, and for names that no format has.
#pragma once

#include "host/script/script_text.h"

#include <DDImage/Format.h>

namespace velmora::host {

// The largest width and height that a format may have.
const int largest_format_side = 1 << 24;

// `script` stands for the file in messages.
DDImage_API DD::Image::Format parse_format_text(const ScriptValue& value,
                                                const std::string& script);
DDImage_API std::string format_text(const DD::Image::Format& format);

} // namespace velmora::host
