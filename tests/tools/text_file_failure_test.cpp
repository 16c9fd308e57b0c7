// SPDX-License-Identifier: BSD-3-Clause

// Text files as a busy or failing system gives them: whole, or an error.
#include "tools/files/text_file.h"

#include "tests/osapi/system_calls.h"
#include "tests/scratch_folder.h"
#include "tools/failure.h"

#include <cerrno>
#include <gtest/gtest.h>

using namespace velmora;

namespace {

// The text, or what is said.
std::string read_of(const std::string& path) {
    try {
        return read_text_file(path);
    } catch (const WorkFailure& failure) {
        return failure.what();
    }
}

class TextFileFailure : public testing::Test {
protected:
    const ScratchFolder folder;
    const std::string text = "0123456789\nabcdefghij\n";
    const std::string path = folder.write("shot.chan", text);
    SystemCalls calls;
};

} // namespace

TEST_F(TextFileFailure, AShortReadIsNoEnd) {
    for (std::size_t most = 1; most <= text.size() + 1; most++) {
        calls.shorten("read", most);
        EXPECT_EQ(read_of(path), text) << most;
    }
}

TEST_F(TextFileFailure, AnInterruptedReadIsNoEnd) {
    calls.shorten("read", 5);
    for (int nth = 1; nth <= 6; nth++) {
        calls.fail("read", EINTR, nth);
        EXPECT_EQ(read_of(path), text) << nth;
    }
}

TEST_F(TextFileFailure, AFailingReadIsTold) {
    calls.shorten("read", 5);
    for (int nth = 1; nth <= 6; nth++) {
        calls.fail("read", EIO, nth);
        EXPECT_EQ(read_of(path), path + ": Input/output error") << nth;
    }
}

TEST_F(TextFileFailure, AnEndBeforeTheSizeIsTold) {
    calls.shorten("read", 5);
    for (int nth = 1; nth <= 5; nth++) {
        calls.answer("read", nth, 0, 0);
        EXPECT_EQ(read_of(path), path + ": became shorter while it was read") << nth;
    }
}

// What was read must be released once and told about.
TEST_F(TextFileFailure, AFailingCloseIsTold) {
    calls.fail("close", EIO);
    EXPECT_EQ(read_of(path), path + ": Input/output error");
    EXPECT_EQ(read_of(path), text);
}

TEST_F(TextFileFailure, WhatHasNoSizeIsReadToItsEnd) {
    EXPECT_NE(read_of("/proc/self/status").find("\nPid:"), std::string::npos);
}
