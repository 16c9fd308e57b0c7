// SPDX-License-Identifier: BSD-3-Clause

// A format as scripts write it: "width height [x y r t] [pixel aspect] [name]", or a name alone.
//
// Shapes:    the box [x, r) x [y, t) lies inside width x height, and is all of it by default.
// Errors:    ScriptError for other texts, and for names that no format has.
// Threads:   main thread only, as the list of named formats is.
#pragma once

#include "host/script/script_text.h"

#include <DDImage/Format.h>

namespace velmora::host {

// The largest width and height that a format may have.
const int largest_format_side = 1 << 24;

// `script` is the file's name in messages.
DDImage_API DD::Image::Format parse_format_text(const ScriptValue& value,
                                                const std::string& script);
DDImage_API std::string format_text(const DD::Image::Format& format);

} // namespace velmora::host
