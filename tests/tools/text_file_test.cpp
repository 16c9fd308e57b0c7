// SPDX-License-Identifier: BSD-3-Clause
#include "tools/files/text_file.h"

#include "tests/scratch_folder.h"
#include "tools/failure.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace velmora;

static std::string failure_of(const std::string& path) {
    try {
        read_text_file(path);
    } catch (const WorkFailure& failure) {
        return failure.what();
    }
    return "no failure";
}

// Sizes around those of the blocks, and bytes that mean something to streams of text.
TEST(TextFile, GivesTheBytesAsTheyStand) {
    const ScratchFolder folder;
    for (const std::size_t size :
         {0u, 1u, 16383u, 16384u, 16385u, 65535u, 65536u, 65537u, 200000u}) {
        std::string bytes;
        for (std::size_t i = 0; i < size; i++)
            bytes += "\r\n\n\0\xff\x1a a"[i * 7 % 8];
        EXPECT_EQ(read_text_file(folder.write("text", bytes)), bytes) << size;
    }
}

TEST(TextFile, SaysWhatCannotBeRead) {
    const ScratchFolder folder;
    const std::string none = folder.file("none"), pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(failure_of(none), none + ": No such file or directory");
    EXPECT_EQ(failure_of(pipe), pipe + ": is not a regular file");
    EXPECT_EQ(failure_of(folder.path()), folder.path() + ": Is a directory");
    EXPECT_EQ(failure_of("/dev/zero"), "/dev/zero: is not a regular file");
}

TEST(TextFile, RefusesWhatNoTextIs) {
    const ScratchFolder folder;
    const std::string path = folder.write("huge", "#");
    std::filesystem::resize_file(path, (std::uintmax_t(1) << 30) + 1); // all of it a hole
    EXPECT_EQ(failure_of(path), path + ": is larger than 1 GiB");
}
