// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/osapi.h"

#include "tests/message_of.h"
#include "tests/osapi/alarms.h"
#include "tests/osapi/files.h"
#include "tests/osapi/place.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

OSAPI::Pipe* interrupted = nullptr;

void write_a_byte() {
    EXPECT_EQ(::write(interrupted->write_end.fd, "a", 1), 1);
}

struct OpenPipe : OSAPI::Pipe {
    OpenPipe() { open(); }
};

TEST(Poll, FindsWhichDescriptorsAreReady) {
    OpenPipe pipe;
    OSAPI::pollfd fds[2] = {{pipe.read_end.fd, POLLIN, 0}, {pipe.write_end.fd, POLLOUT, 0}};
    for (const bool interruptible : {false, true}) {
        EXPECT_EQ(OSAPI::poll(fds, 2, -1, interruptible), 1);
        EXPECT_EQ(fds[0].revents, 0);
        EXPECT_EQ(fds[1].revents, POLLOUT);
        EXPECT_EQ(OSAPI::poll(fds, 1, 0, interruptible), 0);
        EXPECT_EQ(OSAPI::poll(fds, 0, 1, interruptible), 0);
    }
    OSAPI::write(pipe.write_end.fd, "a", 1);
    EXPECT_EQ(OSAPI::poll(fds, 2, -1, false), 2);
    EXPECT_EQ(fds[0].revents, POLLIN);
}

TEST(Poll, WaitsAsLongAsRequested) {
    OpenPipe pipe;
    OSAPI::pollfd fd = {pipe.read_end.fd, POLLIN, 0};
    const u64 start = OSAPI::microsecs();
    EXPECT_EQ(OSAPI::poll(&fd, 1, 20, false), 0);
    EXPECT_GE(OSAPI::microsecs() - start, 19000u);
}

TEST(Poll, ReturnsOnASignalWhenItIsInterruptible) {
    OpenPipe pipe;
    OSAPI::pollfd fd = {pipe.read_end.fd, POLLIN, 0};
    const Alarms alarms;
    EXPECT_EQ(OSAPI::poll(&fd, 1, -1, true), -1);
    EXPECT_GE(Alarms::count, 1);
}

// The system never restarts poll by itself, whatever the handler's flags.
TEST(Poll, WaitsOnAfterASignalOtherwise) {
    OpenPipe pipe;
    OSAPI::pollfd fd = {pipe.read_end.fd, POLLIN, 0};
    interrupted = &pipe;
    for (const int flags : {0, SA_RESTART}) {
        const Alarms alarms(write_a_byte, flags);
        EXPECT_EQ(OSAPI::poll(&fd, 1, -1, false), 1);
        EXPECT_EQ(fd.revents, POLLIN);
        EXPECT_GE(Alarms::count, 3);
        char byte;
        OSAPI::read(pipe.read_end.fd, &byte, 1);
    }
}

// A smaller limit on descriptors while it lives. Sanitizers need some to look at an exception, so
// it must be gone by then.
class FewDescriptors {
public:
    explicit FewDescriptors(rlim_t most) {
        getrlimit(RLIMIT_NOFILE, &before);
        const rlimit few = {most, before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &few);
    }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;
    ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &before); }

private:
    rlimit before;
};

// More descriptors than a process may have.
TEST(Poll, ThrowsTheSystemsReason) {
    EXPECT_EQ(status_of_child([] {
                  OSAPI::pollfd fds[6] = {};
                  return message_without_line_of([&] {
                             const FewDescriptors few(5);
                             OSAPI::poll(fds, 6, 0, true);
                         }) == "poll: Invalid argument" +
                                   in("int OSAPI::poll(pollfd*, unsigned int, int, bool)");
              }),
              0);
}

} // namespace
