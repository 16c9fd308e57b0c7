// What a piece of a test writes to standard error, and the message of what it throws.
#pragma once

#include "core/xception.h"

#include <gtest/gtest.h>

#include <string>

template <class Action>
std::string stderr_of(Action action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

// The message of the StrXception that `action` throws.
template <class Action>
std::string message_of(Action action) {
    try {
        action();
    } catch (StrXception& x) {
        return x.message.str ? x.message.str : "";
    }
    return "(no StrXception)";
}

// The same with the line number at the end as LINE: "text in <function> (source:LINE)".
template <class Action>
std::string message_without_line_of(Action action) {
    std::string message = message_of(action);
    const std::size_t colon = message.rfind(':'), close = message.rfind(')');
    if (colon == std::string::npos || close != message.size() - 1 || close < colon + 2 ||
        message.find_first_not_of("0123456789", colon + 1) != close)
        return message + " (no location)";
    return message.substr(0, colon) + ":LINE)";
}
