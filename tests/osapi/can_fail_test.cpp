// SPDX-License-Identifier: BSD-3-Clause

// The calls that report a failure by their result: what they return, and what they leave in errno.
#include "osapi/osapi.h"

#include "tests/osapi/child.h"
#include "tests/osapi/files.h"
#include "tests/osapi/system_calls.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <thread>

namespace {

TEST(ErrorText, IsTheSystems) {
    EXPECT_STREQ(OSAPI::error_text(ENOENT), "No such file or directory");
    EXPECT_STREQ(OSAPI::error_text(EINTR), "Interrupted system call");
}

TEST(ReadCanFail, ReadsOnceAndGoesOnAfterInterruptions) {
    const ScratchFolder folder;
    const OSAPI::FileDescriptor file(::open(folder.write("f", "0123456789").c_str(), O_RDONLY));
    char bytes[8] = "#######";
    SystemCalls calls;
    calls.fail("read", EINTR, 1);
    calls.shorten("read", 4);
    EXPECT_EQ(OSAPI::read_can_fail(file.fd, bytes, 7), 4);
    EXPECT_STREQ(bytes, "0123###");
    EXPECT_EQ(calls.count("read"), 2);
}

TEST(ReadCanFail, DistinguishesTheEndFromHavingNothingYet) {
    OSAPI::Pipe pipe;
    pipe.open();
    OSAPI::set_blocking(pipe.read_end.fd, false);
    char byte;
    EXPECT_EQ(OSAPI::read_can_fail(pipe.read_end.fd, &byte, 1), -1);
    EXPECT_EQ(errno, EAGAIN);
    pipe.write_end.close();
    EXPECT_EQ(OSAPI::read_can_fail(pipe.read_end.fd, &byte, 1), 0);
}

TEST(WriteCanFail, WritesEverythingToASlowReader) {
    OSAPI::Pipe pipe;
    pipe.open();
    OSAPI::set_blocking(pipe.write_end.fd, false);
    const std::string sent(1 << 20, 'x'); // more than a pipe holds
    std::string received;
    std::thread reader([&] {
        wait_a_moment();
        char block[5000];
        for (ssize_t count; (count = ::read(pipe.read_end.fd, block, sizeof block)) > 0;)
            received.append(block, std::size_t(count));
    });
    EXPECT_TRUE(OSAPI::write_can_fail(pipe.write_end.fd, sent.data(), sent.size()));
    pipe.write_end.close();
    reader.join();
    EXPECT_EQ(received, sent);
}

TEST(WriteCanFail, GoesOnAfterShortWritesAndInterruptions) {
    const ScratchFolder folder;
    const std::string path = folder.write("f", "");
    const OSAPI::FileDescriptor file(::open(path.c_str(), O_WRONLY));
    SystemCalls calls;
    calls.shorten("write", 3);
    calls.fail("write", EINTR, 2);
    EXPECT_TRUE(OSAPI::write_can_fail(file.fd, "0123456789", 10));
    EXPECT_EQ(calls.count("write"), 5);
    EXPECT_EQ(bytes_of(path), "0123456789");
}

TEST(WriteCanFail, StopsAtAFailureAndKeepsErrno) {
    const ScratchFolder folder;
    const std::string path = folder.write("f", "");
    const OSAPI::FileDescriptor file(::open(path.c_str(), O_WRONLY));
    SystemCalls calls;
    calls.shorten("write", 3);
    calls.fail("write", ENOSPC, 2);
    EXPECT_FALSE(OSAPI::write_can_fail(file.fd, "0123456789", 10));
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(bytes_of(path), "012");
}

TEST(ForkCanFail, ReturnsMinusOneWithErrno) {
    SystemCalls calls;
    calls.fail("fork", EAGAIN);
    EXPECT_EQ(OSAPI::fork_can_fail(), -1);
    EXPECT_EQ(errno, EAGAIN);
}

// A grandchild whose parent ends: its end closes the pipe.
TEST(EndWithParent, HasTheSystemEndTheChildAfterItsParent) {
    OSAPI::Pipe pipe;
    pipe.open();
    const Child parent([&] {
        const pid_t self = ::getpid();
        if (::fork() == 0) {
            const char answer = OSAPI::end_with_parent(self) ? 'y' : 'n';
            if (::write(pipe.write_end.fd, &answer, 1) == 1)
                wait_for_ever();
            _exit(1);
        }
        return wait_for_ever();
    });
    pipe.write_end.close();
    char answer = 0;
    ASSERT_EQ(::read(pipe.read_end.fd, &answer, 1), 1);
    EXPECT_EQ(answer, 'y');
    ::kill(parent.pid, SIGKILL);
    EXPECT_EQ(::read(pipe.read_end.fd, &answer, 1), 0); // both have ended
}

TEST(EndWithParent, SaysWhenTheParentHasGone) {
    EXPECT_EQ(status_of_child([] { return OSAPI::end_with_parent(::getppid()); }), 0);
    EXPECT_EQ(status_of_child([] { return !OSAPI::end_with_parent(::getppid() + 1); }), 0);
}

TEST(WaitForAnyChild, DistinguishesAnExitFromASignal) {
    const Child exited([] { return 9; });
    OSAPI::ChildEnd end = OSAPI::wait_for_any_child();
    EXPECT_EQ(end.pid, exited.pid);
    EXPECT_EQ(end.exit_code, 9);
    EXPECT_EQ(end.signal, 0);

    const Child killed([] { return ::raise(SIGKILL); });
    end = OSAPI::wait_for_any_child();
    EXPECT_EQ(end.pid, killed.pid);
    EXPECT_EQ(end.exit_code, -1);
    EXPECT_EQ(end.signal, SIGKILL);
}

TEST(WaitForAnyChild, GoesOnAfterInterruptions) {
    const Child exited([] { return 3; });
    SystemCalls calls;
    calls.fail("waitpid", EINTR, 1);
    EXPECT_EQ(OSAPI::wait_for_any_child().exit_code, 3);
    EXPECT_EQ(calls.count("waitpid"), 2);
}

} // namespace
