// SPDX-License-Identifier: BSD-3-Clause

// The end of the OS layer's messages.
#pragma once

#include <string>

// " in <function> (osapi-unix:LINE)", as message_without_line_of has it.
inline std::string in(const std::string& function) {
    return " in <" + function + "> (osapi-unix:LINE)";
}
