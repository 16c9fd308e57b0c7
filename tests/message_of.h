// SPDX-License-Identifier: BSD-3-Clause

// The message of an action that must fail.
#pragma once

#include "core/xception.h"
#include "tests/function_spelling.h"

#include <string>

// The message of the StrXception that `action` throws, "(no StrXception)" without one.
template <class Action>
std::string message_of(Action action) {
    try {
        action();
    } catch (const StrXception& x) {
        return message_spelled_by_gcc(x.message.str ? x.message.str : "");
    }
    return "(no StrXception)";
}

// The same with LINE in place of the line number at the end: "text in <function> (source:LINE)".
template <class Action>
std::string message_without_line_of(Action action) {
    const std::string message = message_of(action);
    const std::size_t colon = message.rfind(':'), close = message.rfind(')');
    if (colon == std::string::npos || close != message.size() - 1 || close < colon + 2 ||
        message.find_first_not_of("0123456789", colon + 1) != close)
        return message + " (no location)";
    return message.substr(0, colon) + ":LINE)";
}

// The same without the place that raised it: "text".
template <class Action>
std::string message_without_place_of(Action action) {
    const std::string message = message_of(action);
    return message.substr(0, message.rfind(" in <"));
}
