// SPDX-License-Identifier: BSD-3-Clause

// What a user reads when the system refuses an output; the calls in every order fail in the tests
// of the whole file.
#include "tools/files/output_file.h"

#include "tests/osapi/system_calls.h"
#include "tests/scratch_folder.h"
#include "tools/failure.h"

#include <cerrno>
#include <gtest/gtest.h>

using namespace velmora;

static std::string failure_of_writing(const std::string& path) {
    try {
        write_file(path, std::string(100000, 'x'));
    } catch (const WorkFailure& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST(OutputFileFailure, IsTheFileAndTheSystemsReason) {
    const struct {
        const char* call;
        int error;
        const char* reason;
    } cases[] = {
        {"open", EACCES, "Permission denied"},          {"open", EROFS, "Read-only file system"},
        {"write", ENOSPC, "No space left on device"},   {"write", EDQUOT, "Disk quota exceeded"},
        {"fsync", EIO, "Input/output error"},           {"close", EIO, "Input/output error"},
        {"rename", EXDEV, "Invalid cross-device link"},
    };
    for (const auto& c : cases) {
        const ScratchFolder folder;
        const std::string path = folder.write("sky.exr", "old");
        {
            SystemCalls calls;
            calls.fail(c.call, c.error);
            EXPECT_EQ(failure_of_writing(path), path + ": " + c.reason) << c.call;
        }
        EXPECT_EQ(folder.read("sky.exr"), "old") << c.call;
        EXPECT_EQ(folder.names(), std::vector<std::string>{"sky.exr"}) << c.call;
    }
}
