// SPDX-License-Identifier: BSD-3-Clause

// What distinguishes one file, and one state of it, from another.
#include "osapi/osapi.h"

#include "tests/scratch_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>

using OSAPI::FileStamp;

namespace {

FileStamp stamp_of(const std::string& path) {
    FileStamp stamp = {};
    EXPECT_TRUE(OSAPI::get_stamp_can_fail(path.c_str(), stamp)) << path;
    return stamp;
}

TEST(FileStamp, HoldsWhatTheSystemSays) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "seven b");
    const timeval times[2] = {{1, 0}, {1234567890, 250000}};
    ASSERT_EQ(utimes(path.c_str(), times), 0);
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    const FileStamp stamp = stamp_of(path);
    EXPECT_EQ(stamp.device, status.st_dev);
    EXPECT_EQ(stamp.inode, status.st_ino);
    EXPECT_EQ(stamp.size, 7u);
    EXPECT_EQ(stamp.seconds, 1234567890);
    EXPECT_EQ(stamp.nanoseconds, 250000000);
    EXPECT_TRUE(stamp.is_regular);
    const OSAPI::FileDescriptor file(OSAPI::open(path.c_str(), OSAPI::OPEN_READ));
    EXPECT_TRUE(OSAPI::get_stamp(file.fd) == stamp);
}

TEST(FileStamp, DiffersOnceTheFileWasWrittenTo) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    const FileStamp before = stamp_of(path);
    EXPECT_TRUE(stamp_of(path) == before) << "as long as nothing happens";

    ASSERT_EQ(truncate(path.c_str(), 4), 0);
    EXPECT_TRUE(stamp_of(path) != before);
    EXPECT_TRUE(stamp_of(path).is_same_file(before));

    folder.write("file", "other");
    const timeval times[2] = {{1, 0}, {before.seconds, 1}};
    ASSERT_EQ(utimes(path.c_str(), times), 0);
    EXPECT_TRUE(stamp_of(path) != before) << "the time alone";
}

TEST(FileStamp, DiffersOnceAnotherFileHasTheName) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes"), other = folder.write("other", "bytes");
    const FileStamp before = stamp_of(path);
    const timeval times[2] = {{1, 0}, {before.seconds, before.nanoseconds / 1000}};
    ASSERT_EQ(utimes(path.c_str(), times), 0);
    ASSERT_EQ(utimes(other.c_str(), times), 0);
    const FileStamp first = stamp_of(path);
    OSAPI::rename(other.c_str(), path.c_str());
    EXPECT_FALSE(stamp_of(path).is_same_file(first));
    EXPECT_TRUE(stamp_of(path) != first);
}

TEST(FileStamp, KnowsRegularFiles) {
    const ScratchFolder folder;
    const std::string pipe = folder.file("pipe");
    OSAPI::make_named_pipe(pipe.c_str());
    EXPECT_FALSE(stamp_of(pipe).is_regular);
    EXPECT_FALSE(stamp_of(folder.path()).is_regular);
    EXPECT_FALSE(stamp_of("/dev/null").is_regular);
}

TEST(FileStamp, StaysAsItWasWhenNothingIsThere) {
    const ScratchFolder folder;
    FileStamp stamp = {1, 2, 3, 4, 5, true};
    errno = 0;
    EXPECT_FALSE(OSAPI::get_stamp_can_fail(folder.file("gone").c_str(), stamp));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_TRUE((stamp == FileStamp{1, 2, 3, 4, 5, true}));
}

// Opening a pipe without a writer would wait for ever.
TEST(OpenNowait, DoesNotWaitForTheOtherEndOfAPipe) {
    const ScratchFolder folder;
    const std::string pipe = folder.file("pipe");
    OSAPI::make_named_pipe(pipe.c_str());
    alarm(20);
    const OSAPI::FileDescriptor end(
        OSAPI::open(pipe.c_str(), OSAPI::OPEN_READ | OSAPI::OPEN_NOWAIT));
    alarm(0);
    EXPECT_TRUE(end.is_open());
}

} // namespace
