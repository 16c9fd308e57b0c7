// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/osapi.h"

#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/osapi/place.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>

using OSAPI::BufferedFileOutput;
using OSAPI::DiskFile;
using OSAPI::fd_t;
using OSAPI::FileInput;
using OSAPI::FileOutput;
using OSAPI::OPEN_READ;
using OSAPI::OPEN_WRITE;

namespace {

const std::string in_write = in("sword OSAPI::write(int, const char*, uword)");
const std::string in_close = in("void OSAPI::close(fd_t)");

bool is_open(fd_t fd) {
    return fcntl(fd, F_GETFD) != -1;
}

std::string take(Input& input, int n) {
    std::string bytes(std::size_t(n), '#');
    bytes.resize(std::size_t(input.read(&bytes[0], n)));
    return bytes;
}

int put(Output& output, const std::string& text) {
    return output.write(text.data(), int(text.size()));
}

// ---- DiskFile --------------------------------------------------------------------------------

TEST(DiskFile, IsADescriptor) {
    EXPECT_TRUE((std::is_base_of<OSAPI::FileDescriptor, DiskFile>::value));
    EXPECT_EQ(sizeof(DiskFile), sizeof(fd_t));
    EXPECT_FALSE(DiskFile().is_open());
    DiskFile file(::open("/dev/null", O_RDONLY));
    const fd_t fd = file.fd;
    EXPECT_TRUE(is_open(fd));
    file.close();
    EXPECT_FALSE(is_open(fd));
}

TEST(DiskFile, HasAStatusAndATime) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    OSAPI::set_mtime(path.c_str(), 1234567890);
    const DiskFile file(OSAPI::open(path.c_str(), OPEN_READ));
    struct stat status;
    file.stat(&status);
    EXPECT_EQ(status.st_size, 5);
    EXPECT_EQ(status.st_mtime, 1234567890);
    EXPECT_EQ(file.get_mtime(), 1234567890);
    OSAPI::set_mtime(path.c_str(), 0);
    EXPECT_EQ(file.get_mtime(), 0) << "0 is a time like any other here";
}

TEST(DiskFile, ThrowsForWhatIsNotOpen) {
    const DiskFile file;
    struct stat status;
    const std::string message =
        "fstat: Bad file descriptor" + in("void OSAPI::DiskFile::stat(stat*) const");
    EXPECT_EQ(message_without_line_of([&] { file.stat(&status); }), message);
    EXPECT_EQ(message_without_line_of([&] { file.get_mtime(); }), message);
}

// ---- FileInput -------------------------------------------------------------------------------

TEST(FileStreams, HoldTheirPositionAndTheFile) {
    EXPECT_TRUE((std::is_base_of<Input, FileInput>::value));
    EXPECT_TRUE((std::is_base_of<Output, FileOutput>::value));
    EXPECT_EQ(sizeof(FileInput), 3 * sizeof(void*));
    EXPECT_EQ(sizeof(FileOutput), 3 * sizeof(void*));
    DiskFile file;
    const FileInput input(file);
    const FileOutput output(file);
    EXPECT_EQ(reinterpret_cast<const char*>(&input.pos) - reinterpret_cast<const char*>(&input), 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&output.pos) - reinterpret_cast<const char*>(&output),
              8);
    EXPECT_TRUE((std::is_same<decltype(input.pos), s64>::value));
}

TEST(FileInput, ReadsFromTheFilePosition) {
    const ScratchFolder folder;
    DiskFile file(OSAPI::open(folder.write("file", "0123456789").c_str(), OPEN_READ));
    ASSERT_EQ(::lseek(file.fd, 2, SEEK_SET), 2);
    FileInput input(file);
    EXPECT_EQ(input.curpos(), 0) << "the constructor does not ask where that is";
    EXPECT_EQ(take(input, 3), "234");
    EXPECT_EQ(input.curpos(), 3);
    EXPECT_EQ(take(input, 9), "56789");
    EXPECT_EQ(take(input, 9), "");
    EXPECT_EQ(input.curpos(), 8);
    EXPECT_EQ(take(input, 0), "");
}

TEST(FileInput, SeeksTheDescriptor) {
    const ScratchFolder folder;
    DiskFile file(OSAPI::open(folder.write("file", "0123456789").c_str(), OPEN_READ));
    FileInput input(file);
    EXPECT_EQ(input.seek_from_start(6), 6);
    EXPECT_EQ(take(input, 1), "6");
    EXPECT_EQ(input.seek_from_curpos(-4), 3);
    EXPECT_EQ(input.curpos(), 3);
    EXPECT_EQ(take(input, 1), "3");
    EXPECT_EQ(input.seek_from_curpos(5000000000), 5000000004);
    EXPECT_EQ(take(input, 1), "");
}

// A seek to its own position makes no call, even if the descriptor was moved by other means.
TEST(FileInput, DoesNotSeekToWhereItBelievesToStand) {
    const ScratchFolder folder;
    DiskFile file(OSAPI::open(folder.write("file", "0123456789").c_str(), OPEN_READ));
    FileInput input(file);
    EXPECT_EQ(take(input, 2), "01");
    ASSERT_EQ(::lseek(file.fd, 7, SEEK_SET), 7);
    EXPECT_EQ(input.seek_from_start(2), 2);
    EXPECT_EQ(input.seek_from_curpos(0), 2);
    EXPECT_EQ(take(input, 2), "78");
    EXPECT_EQ(input.seek_from_curpos(-1), 8) << "from the file position";
}

TEST(FileInput, GivesNothingWhereNothingIsThereYet) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    DiskFile file(ends[0]);
    const DiskFile writer(ends[1]);
    FileInput input(file);
    EXPECT_EQ(take(input, 3), "");
    OSAPI::write(writer.fd, "ab", 2);
    EXPECT_EQ(take(input, 3), "ab");
    EXPECT_EQ(message_without_line_of([&] { input.seek_from_start(0); }),
              "lseek: Illegal seek" + in("s64 OSAPI::lseek(fd_t, s64, int)"));
    EXPECT_EQ(input.curpos(), 2);
}

TEST(FileInput, ThrowsTheSystemsReason) {
    DiskFile file;
    FileInput input(file);
    EXPECT_EQ(message_without_line_of([&] { take(input, 1); }),
              "read: Bad file descriptor" + in("sword OSAPI::read_short(int, char*, uword)"));
    char byte;
    DiskFile null(::open("/dev/null", O_RDONLY));
    FileInput nothing(null);
    EXPECT_EQ(nothing.read(&byte, 1), 0);
    EXPECT_EQ(input.curpos(), 0);
}

// ---- FileOutput ------------------------------------------------------------------------------

TEST(FileOutput, WritesAtTheFilePosition) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "0123456789");
    DiskFile file(::open(path.c_str(), O_WRONLY));
    ASSERT_EQ(::lseek(file.fd, 2, SEEK_SET), 2);
    FileOutput output(file);
    EXPECT_EQ(output.curpos(), 0);
    EXPECT_EQ(put(output, "ab"), 2);
    EXPECT_EQ(put(output, ""), 0);
    EXPECT_EQ(output.curpos(), 2);
    EXPECT_EQ(output.seek_from_start(8), 8);
    EXPECT_EQ(put(output, "c"), 1);
    EXPECT_EQ(output.seek_from_curpos(-4), 5);
    EXPECT_EQ(put(output, "d"), 1);
    ASSERT_EQ(::lseek(file.fd, 0, SEEK_SET), 0);
    EXPECT_EQ(output.seek_from_start(6), 6) << "its own position";
    EXPECT_EQ(output.seek_from_curpos(0), 6);
    EXPECT_EQ(put(output, "e"), 1);
    EXPECT_EQ(bytes_of(path), "e1ab4d67c9");
}

TEST(FileOutput, ThrowsTheSystemsReason) {
    DiskFile full(::open("/dev/full", O_WRONLY));
    FileOutput output(full);
    EXPECT_EQ(message_without_line_of([&] { put(output, "a"); }),
              "write: No space left on device" + in_write);
    EXPECT_EQ(output.curpos(), 0);
}

// ---- Buffered over a file --------------------------------------------------------------------

TEST(BufferedInput, ReadsLinesOfAFile) {
    const ScratchFolder folder;
    DiskFile file(OSAPI::open(folder.write("file", "one\r\ntwo\nthree").c_str(), OPEN_READ));
    FileInput input(file);
    BufferedInput lines(input, 4);
    for (const char* line : {"one\r\n", "two\n", "three"})
        EXPECT_STREQ(lines.readline().str, line);
    EXPECT_EQ(lines.readline().len(), 0u);
    EXPECT_EQ(lines.seek_from_start(5), 5);
    EXPECT_STREQ(lines.readline().str, "two\n");
}

TEST(BufferedInput, MayEndEarlyOverAPipe) {
    OSAPI::Pipe pipe;
    pipe.open();
    DiskFile file(OSAPI::dup(pipe.read_end.fd));
    FileInput input(file);
    BufferedInput buffered(input, 8);
    OSAPI::write(pipe.write_end.fd, "abc", 3);
    EXPECT_EQ(take(buffered, 2), "ab");
    OSAPI::write(pipe.write_end.fd, "def", 3);
    EXPECT_EQ(take(buffered, 4), "c") << "the short read was the end";
    EXPECT_EQ(take(buffered, 4), "");
}

// ---- BufferedFileOutput ----------------------------------------------------------------------

TEST(BufferedFileOutput, HoldsItsMembersInOrder) {
    BufferedFileOutput out(-1, 8, false);
    const char* base = reinterpret_cast<const char*>(&out);
    EXPECT_EQ(reinterpret_cast<const char*>(&out.file) - base, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&out.output) - base, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&out.buffered) - base,
              std::ptrdiff_t(8 + sizeof(FileOutput)));
    EXPECT_EQ(reinterpret_cast<const char*>(&out.close_when_done) - base,
              std::ptrdiff_t(8 + sizeof(FileOutput) + sizeof(BufferedOutput)));
    EXPECT_FALSE(std::is_polymorphic<BufferedFileOutput>::value);
    EXPECT_FALSE(std::is_copy_constructible<BufferedFileOutput>::value);
    EXPECT_FALSE(std::is_nothrow_destructible<BufferedFileOutput>::value);
}

TEST(BufferedFileOutput, FlushesAndClosesOrLeavesItsDescriptorOpen) {
    const ScratchFolder folder;
    const std::string path = folder.file("file");
    for (const bool close_when_done : {true, false}) {
        OSAPI::FileDescriptor owner(OSAPI::open(path.c_str(), OPEN_WRITE));
        {
            BufferedFileOutput out(owner.fd, 8, close_when_done);
            EXPECT_EQ(out.file.fd, owner.fd);
            EXPECT_EQ(out.close_when_done, close_when_done);
            put(out.buffered, "abcd");
            put(out.buffered, "efghij");
            EXPECT_EQ(bytes_of(path), "abcd");
        }
        EXPECT_EQ(bytes_of(path), "abcdefghij");
        EXPECT_EQ(is_open(owner.fd), !close_when_done);
        if (close_when_done)
            owner.fd = -1;
    }
}

TEST(BufferedFileOutput, LooksAtTheEndWhetherToClose) {
    const ScratchFolder folder;
    OSAPI::FileDescriptor owner(OSAPI::open(folder.file("file").c_str(), OPEN_WRITE));
    {
        BufferedFileOutput out(owner.fd, 8, true);
        out.close_when_done = false;
    }
    EXPECT_TRUE(is_open(owner.fd));
}

// What cannot be written throws, and closes whoever owns the descriptor.
TEST(BufferedFileOutput, ClosesInAnyCaseWhenItCannotFlush) {
    for (const bool close_when_done : {true, false}) {
        const fd_t fd = ::open("/dev/full", O_WRONLY);
        EXPECT_EQ(message_without_line_of([&] {
                      BufferedFileOutput out(fd, 8, close_when_done);
                      put(out.buffered, "abcd");
                  }),
                  "write: No space left on device" + in_write);
        EXPECT_FALSE(is_open(fd)) << close_when_done;
    }
}

TEST(BufferedFileOutput, ThrowsWhenItCannotClose) {
    const ScratchFolder folder;
    const std::string path = folder.file("file");
    const fd_t fd = OSAPI::open(path.c_str(), OPEN_WRITE);
    EXPECT_EQ(message_without_line_of([&] {
                  BufferedFileOutput out(fd, 8, true);
                  put(out.buffered, "abcd");
                  out.buffered.flush();
                  ::close(fd);
              }),
              "close: Bad file descriptor" + in_close);
    EXPECT_EQ(bytes_of(path), "abcd");
}

TEST(BufferedFileOutput, LeavesTheFirstFailureAlone) {
    for (const bool close_when_done : {true, false}) {
        const fd_t fd = ::open("/dev/full", O_WRONLY);
        EXPECT_THROW(
            {
                BufferedFileOutput out(fd, 8, close_when_done);
                put(out.buffered, "abcd");
                throw std::runtime_error("the first");
            },
            std::runtime_error);
        EXPECT_FALSE(is_open(fd));
    }
}

TEST(BufferedFileOutput, StillWritesWhenSomethingElseFailed) {
    const ScratchFolder folder;
    const std::string path = folder.file("file");
    const OSAPI::FileDescriptor owner(OSAPI::open(path.c_str(), OPEN_WRITE));
    EXPECT_THROW(
        {
            BufferedFileOutput out(owner.fd, 8, false);
            put(out.buffered, "abcd");
            throw std::runtime_error("the first");
        },
        std::runtime_error);
    EXPECT_EQ(bytes_of(path), "abcd");
    EXPECT_TRUE(is_open(owner.fd));
}

} // namespace
