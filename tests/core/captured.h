// SPDX-License-Identifier: BSD-3-Clause

// What a piece of a test writes to standard output, and the assertion that it fails.
#pragma once

#include "core/xception.h"
#include "tests/function_spelling.h"

#include <gtest/gtest.h>

#include <string>

template <class Action>
std::string stdout_of(Action action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

// The AssertXception that `action` throws, as it prints but for its line number.
template <class Action>
std::string assertion_of(Action action) {
    try {
        action();
    } catch (AssertXception& x) {
        EXPECT_GT(x.line, 0);
        return std::string("'") + x.expr + "' in <" + spelled_by_gcc(x.function) + "> (" + x.file +
               ":LINE)";
    }
    return "(no AssertXception)";
}
