// SPDX-License-Identifier: BSD-3-Clause
#include "tools/files/output_file.h"

#include "tests/scratch_folder.h"
#include "tools/failure.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace velmora;

typedef std::vector<std::string> Names;

static std::string failure_of(const std::string& path) {
    try {
        write_file(path, "new");
    } catch (const WorkFailure& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST(OutputFile, HoldsTheBytesAndLeavesNothingBeside) {
    const ScratchFolder folder;
    const std::string bytes("a\0b\r\n\xff", 6);
    write_file(folder.file("sky.exr"), bytes);
    EXPECT_EQ(folder.read("sky.exr"), bytes);
    EXPECT_EQ(folder.names(), Names{"sky.exr"});
}

TEST(OutputFile, MayBeEmptyOrLarge) {
    const ScratchFolder folder;
    write_file(folder.file("empty"), "");
    EXPECT_EQ(folder.read("empty"), "");

    std::string large(5000000, '\0');
    for (std::size_t i = 0; i < large.size(); i++)
        large[i] = char(i % 251);
    write_file(folder.file("large"), large);
    EXPECT_TRUE(folder.read("large") == large);
}

TEST(OutputFile, ReplacesWhatWasThere) {
    const ScratchFolder folder;
    folder.write("sky.exr", "something longer that was there before");
    write_file(folder.file("sky.exr"), "new");
    EXPECT_EQ(folder.read("sky.exr"), "new");
}

TEST(OutputFile, ReplacesWhatAnInterruptedRunHasLeft) {
    const ScratchFolder folder;
    folder.write("sky.exr.inprogress", "half of something longer");
    write_file(folder.file("sky.exr"), "new");
    EXPECT_EQ(folder.read("sky.exr"), "new");
    EXPECT_EQ(folder.names(), Names{"sky.exr"});
}

TEST(OutputFile, ReplacesALinkAndNotWhatItPointsTo) {
    const ScratchFolder folder;
    folder.write("target", "old");
    std::filesystem::create_symlink("target", folder.file("sky.exr"));
    write_file(folder.file("sky.exr"), "new");
    EXPECT_EQ(folder.read("sky.exr"), "new");
    EXPECT_EQ(folder.read("target"), "old");
}

TEST(OutputFile, SaysThatItsFolderIsMissing) {
    const ScratchFolder folder;
    const std::string path = folder.file("missing/sky.exr");
    EXPECT_EQ(failure_of(path), path + ": No such file or directory");
}

TEST(OutputFile, SaysThatItsFolderIsNone) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "old") + "/sky.exr";
    EXPECT_EQ(failure_of(path), path + ": Not a directory");
    EXPECT_EQ(folder.read("file"), "old");
}

TEST(OutputFile, DoesNotReplaceAFolder) {
    const ScratchFolder folder;
    std::filesystem::create_directory(folder.file("sky.exr"));
    EXPECT_EQ(failure_of(folder.file("sky.exr")), folder.file("sky.exr") + ": Is a directory");
    EXPECT_EQ(folder.names(), Names{"sky.exr"});
}

TEST(OutputFile, DoesNotReplaceAPipe) {
    const ScratchFolder folder;
    const std::string path = folder.file("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(failure_of(path), path + ": not a regular file");
    EXPECT_TRUE(std::filesystem::is_fifo(path));
    EXPECT_EQ(folder.names(), Names{"pipe"});
}

TEST(OutputFile, FailsWithTheStatusOfWorkThatFailed) {
    try {
        write_file("/dev/null/sky.exr", "new");
        FAIL() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status, EXIT_FAILED);
        EXPECT_EQ(failure.why, "Not a directory");
    }
}
