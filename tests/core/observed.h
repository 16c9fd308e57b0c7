// SPDX-License-Identifier: BSD-3-Clause

// What a piece of a test writes to standard error, and the message of what it throws.
#pragma once

#include "tests/message_of.h"

#include <gtest/gtest.h>

#include <string>

template <class Action>
std::string stderr_of(Action action) {
    testing::internal::CaptureStderr();
    action();
    return message_spelled_by_gcc(testing::internal::GetCapturedStderr());
}
