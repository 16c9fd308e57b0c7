// SPDX-License-Identifier: BSD-3-Clause

// One call that fails, its message, and what it leaves.
#pragma once

#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/osapi/system_calls.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

struct FailingCall {
    std::string call;
    int nth, error;
    std::function<void()> action;
    std::string message; // as message_without_line_of has it
};

// Each action throws that message when that call fails, makes it no more often than that, and
// leaves no descriptor open and nothing mapped.
inline void expect_reported(const std::vector<FailingCall>& rows) {
    const int before = open_descriptors();
    for (const FailingCall& row : rows) {
        std::string message;
        int mappings, made;
        {
            SystemCalls calls;
            calls.fail(row.call, row.error, row.nth);
            message = message_without_line_of(row.action);
            mappings = calls.mappings;
            made = calls.count(row.call);
        }
        const auto which = testing::Message() << row.call << ' ' << (&row - rows.data());
        EXPECT_EQ(message, row.message) << which;
        EXPECT_EQ(made, row.nth) << which;
        EXPECT_EQ(mappings, 0) << which;
        EXPECT_EQ(open_descriptors(), before) << which;
    }
}
