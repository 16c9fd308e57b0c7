// SPDX-License-Identifier: BSD-3-Clause

// Pipes, second descriptors, modes of descriptors, and what ioctl is good for.
#include "osapi/osapi.h"

#include "tests/core/captured.h"
#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/osapi/place.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

using OSAPI::fd_t;
using OSAPI::FileDescriptor;
using OSAPI::OPEN_DIRECT;
using OSAPI::OPEN_READ;
using OSAPI::Pipe;

namespace {

const fd_t never_open = 1000000;

bool waits(fd_t fd) {
    return !(fcntl(fd, F_GETFL) & O_NONBLOCK);
}

bool closes_on_exec(fd_t fd) {
    return fcntl(fd, F_GETFD) & FD_CLOEXEC;
}

bool is_open(fd_t fd) {
    return fcntl(fd, F_GETFD) != -1;
}

// ---- Pipe ------------------------------------------------------------------------------------

TEST(Pipe, HoldsItsReadEndThenItsWriteEnd) {
    Pipe pipe;
    EXPECT_FALSE(pipe.read_end.is_open());
    EXPECT_FALSE(pipe.write_end.is_open());
    EXPECT_EQ(sizeof(Pipe), 2 * sizeof(fd_t));
    EXPECT_EQ(reinterpret_cast<const char*>(&pipe.write_end) -
                  reinterpret_cast<const char*>(&pipe.read_end),
              4);
    EXPECT_FALSE(std::is_copy_constructible<Pipe>::value);
}

TEST(Pipe, CarriesBytesFromOneEndToTheOther) {
    Pipe pipe;
    pipe.open();
    char bytes[4] = "";
    EXPECT_EQ(OSAPI::write(pipe.write_end.fd, "abc", 3), 3);
    EXPECT_EQ(OSAPI::read(pipe.read_end.fd, bytes, 3), 3);
    EXPECT_STREQ(bytes, "abc");
}

TEST(Pipe, IsLeftToProgramsThatAreStarted) {
    Pipe pipe;
    pipe.open();
    EXPECT_FALSE(closes_on_exec(pipe.read_end.fd));
    EXPECT_FALSE(closes_on_exec(pipe.write_end.fd));
}

TEST(Pipe, ClosesWhenItGoesAndCanBeOpenedAgain) {
    const int before = open_descriptors();
    {
        Pipe pipe;
        pipe.open();
        pipe.read_end.close();
        pipe.write_end.close();
        pipe.open();
        EXPECT_EQ(open_descriptors(), before + 2);
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST(Pipe, RefusesToOpenOverAnOpenEnd) {
    const int before = open_descriptors();
    const std::string refused =
        "'!is_open()' in <void OSAPI::FileDescriptor::init(OSAPI::fd_t)> (osapi-unix:LINE)";
    {
        Pipe pipe;
        pipe.open();
        const fd_t reading = pipe.read_end.fd, writing = pipe.write_end.fd;
        EXPECT_EQ(assertion_of([&] { pipe.open(); }), refused);
        EXPECT_EQ(pipe.read_end.fd, reading);
        EXPECT_EQ(pipe.write_end.fd, writing);
        EXPECT_EQ(open_descriptors(), before + 2) << "the new ends are closed again";

        pipe.read_end.close();
        EXPECT_EQ(assertion_of([&] { pipe.open(); }), refused);
        EXPECT_TRUE(pipe.read_end.is_open()) << "the new read end had been taken";
        EXPECT_EQ(pipe.write_end.fd, writing);
        EXPECT_EQ(open_descriptors(), before + 2);
    }
    EXPECT_EQ(open_descriptors(), before);
}

// ---- dup, dup2 -------------------------------------------------------------------------------

TEST(Dup, GivesASecondDescriptorForTheSame) {
    Pipe pipe;
    pipe.open();
    OSAPI::close_on_exec(pipe.write_end.fd);
    const FileDescriptor copy(OSAPI::dup(pipe.write_end.fd));
    EXPECT_NE(copy.fd, pipe.write_end.fd);
    EXPECT_FALSE(closes_on_exec(copy.fd));
    pipe.write_end.close();
    char byte = '#';
    OSAPI::write(copy.fd, "a", 1);
    EXPECT_EQ(OSAPI::read(pipe.read_end.fd, &byte, 1), 1);
    EXPECT_EQ(byte, 'a');
    EXPECT_EQ(message_without_line_of([] { OSAPI::dup(never_open); }),
              "dup: Bad file descriptor" + in("OSAPI::fd_t OSAPI::dup(fd_t)"));
}

TEST(Dup2, MakesTheSecondStandForWhatTheFirstDoes) {
    Pipe pipe;
    pipe.open();
    const int before = open_descriptors();
    const FileDescriptor other(::open("/dev/null", O_WRONLY));
    OSAPI::dup2(pipe.write_end.fd, other.fd);
    char byte = '#';
    OSAPI::write(other.fd, "a", 1);
    EXPECT_EQ(OSAPI::read(pipe.read_end.fd, &byte, 1), 1);
    EXPECT_EQ(byte, 'a');
    EXPECT_EQ(open_descriptors(), before + 1) << "what it referred to is closed";
}

TEST(Dup2, OfTheSameDoesNothing) {
    const FileDescriptor fd(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    EXPECT_NO_THROW(OSAPI::dup2(fd.fd, fd.fd));
    EXPECT_TRUE(closes_on_exec(fd.fd));
    EXPECT_NO_THROW(OSAPI::dup2(never_open, never_open));
    EXPECT_NO_THROW(OSAPI::dup2(-1, -1));
    EXPECT_EQ(message_without_line_of([&] { OSAPI::dup2(never_open, fd.fd); }),
              "dup2: Bad file descriptor" + in("void OSAPI::dup2(fd_t, fd_t)"));
    EXPECT_TRUE(is_open(fd.fd));
}

// ---- set_blocking ----------------------------------------------------------------------------

TEST(SetBlocking, FalseMakesCallsNotWait) {
    Pipe pipe;
    pipe.open();
    const fd_t fd = pipe.read_end.fd;
    for (int time = 0; time < 2; time++) { // once more changes nothing
        OSAPI::set_blocking(fd, false);
        EXPECT_FALSE(waits(fd));
        char byte;
        EXPECT_EQ(::read(fd, &byte, 1), -1);
        EXPECT_EQ(errno, EAGAIN);
    }
}

// It turns the mode over: what waits already stops waiting.
TEST(SetBlocking, TrueTurnsTheModeOver) {
    Pipe pipe;
    pipe.open();
    const fd_t fd = pipe.read_end.fd;
    OSAPI::set_blocking(fd, false);
    OSAPI::set_blocking(fd, true);
    EXPECT_TRUE(waits(fd));
    OSAPI::set_blocking(fd, true);
    EXPECT_FALSE(waits(fd));
    OSAPI::set_blocking(fd, true);
    EXPECT_TRUE(waits(fd));
}

TEST(SetBlocking, LeavesTheOtherFlags) {
    const ScratchFolder folder;
    const FileDescriptor fd(::open(folder.write("file", "").c_str(), O_RDWR | O_APPEND));
    const int before = fcntl(fd.fd, F_GETFL);
    for (const bool blocking : {false, true}) {
        OSAPI::set_blocking(fd.fd, blocking);
        EXPECT_EQ(fcntl(fd.fd, F_GETFL) & ~O_NONBLOCK, before);
    }
}

TEST(SetBlocking, ThrowsForWhatIsNotOpen) {
    for (const bool blocking : {false, true})
        EXPECT_EQ(message_without_line_of([&] { OSAPI::set_blocking(never_open, blocking); }),
                  "fcntl: Bad file descriptor" + in("void OSAPI::set_blocking(fd_t, bool)"));
}

// ---- ioctl -----------------------------------------------------------------------------------

TEST(Ioctl, AsksTheDescriptor) {
    Pipe pipe;
    pipe.open();
    OSAPI::write(pipe.write_end.fd, "abc", 3);
    int waiting = 0;
    EXPECT_EQ(pipe.read_end.ioctl(FIONREAD, reinterpret_cast<char*>(&waiting)), 0);
    EXPECT_EQ(waiting, 3);
}

TEST(Ioctl, ThrowsTheSystemsReason) {
    const std::string place = in("int OSAPI::FileDescriptor::ioctl(int, char*)");
    FileDescriptor closed, null(::open("/dev/null", O_RDONLY));
    char argument[100];
    EXPECT_EQ(message_without_line_of([&] { closed.ioctl(FIONREAD, argument); }),
              "ioctl: Bad file descriptor" + place);
    EXPECT_EQ(message_without_line_of([&] { null.ioctl(TCGETS, argument); }),
              "ioctl: Inappropriate ioctl for device" + place);
}

// ---- O_DIRECT --------------------------------------------------------------------------------

// Whether files can be opened so is the file system's affair; what it says to the system's own call
// it must say to ours.
TEST(OpenDirect, OpensPastTheCacheWhereTheFileSystemCan) {
    const ScratchFolder folder;
    const std::size_t block = 4096;
    const std::string path = folder.write("file", std::string(block, 'b'));
    FileDescriptor plain(::open(path.c_str(), O_RDONLY | O_DIRECT));
    const int error = errno;
    if (!plain.is_open()) {
        EXPECT_EQ(message_without_line_of([&] { OSAPI::open(path.c_str(), OPEN_READ | 4); }),
                  "opening file \"" + path + "\": " + std::strerror(error) +
                      in("OSAPI::fd_t OSAPI::open(const char*, int)"));
        return;
    }
    const FileDescriptor direct(OSAPI::open(path.c_str(), OPEN_READ | OPEN_DIRECT));
    EXPECT_TRUE(fcntl(direct.fd, F_GETFL) & O_DIRECT);
    EXPECT_TRUE(closes_on_exec(direct.fd));
    const std::unique_ptr<char, void (*)(void*)> aligned(
        static_cast<char*>(std::aligned_alloc(block, block)), std::free);
    EXPECT_EQ(OSAPI::read(direct.fd, aligned.get(), block), sword(block));
    EXPECT_EQ(std::string(aligned.get(), block), std::string(block, 'b'));
}

} // namespace
