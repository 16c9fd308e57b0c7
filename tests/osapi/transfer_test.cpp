// SPDX-License-Identifier: BSD-3-Clause

// Reading, writing, seeking and resizing through a descriptor.
#include "osapi/osapi.h"

#include "tests/message_of.h"
#include "tests/osapi/child.h"
#include "tests/osapi/files.h"
#include "tests/osapi/place.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <type_traits>

using OSAPI::fd_t;
using OSAPI::FileDescriptor;
using OSAPI::OPEN_READ;
using OSAPI::OPEN_WRITE;

namespace {

const fd_t never_open = 1000000;

const std::string in_read = in("sword OSAPI::read(int, char*, uword)");
const std::string in_pread = in("sword OSAPI::pread(int, char*, uword, u64)");
const std::string in_read_short = in("sword OSAPI::read_short(int, char*, uword)");
const std::string in_pwrite = in("sword OSAPI::pwrite(int, const char*, uword, u64)");
const std::string in_lseek = in("s64 OSAPI::lseek(fd_t, s64, int)");

// A file with some bytes in it, open for reading and writing.
class OpenFile : public testing::Test {
protected:
    const ScratchFolder folder;
    const std::string path = folder.write("file", "0123456789");
    const fd_t fd = ::open(path.c_str(), O_RDWR);
    char bytes[20] = "###################";

    ~OpenFile() override { ::close(fd); }
};

typedef OpenFile Read;
typedef OpenFile Pread;
typedef OpenFile ReadShort;
typedef OpenFile Pwrite;
typedef OpenFile Lseek;
typedef OpenFile Truncate;

// ---- Whole reads -----------------------------------------------------------------------------

TEST_F(Read, ReadsWhatWasAskedForAtTheFilePosition) {
    EXPECT_EQ(OSAPI::read(fd, bytes, 4), 4);
    EXPECT_EQ(OSAPI::read(fd, bytes + 4, 6), 6);
    EXPECT_STREQ(bytes, "0123456789#########");
    EXPECT_TRUE((std::is_same<decltype(OSAPI::read(0, bytes, 0)), sword>::value));
}

TEST_F(Read, OfMoreThanIsThereThrowsWithThatConsumed) {
    EXPECT_EQ(message_without_line_of([&] { OSAPI::read(fd, bytes, 11); }),
              "unexpected EOF" + in_read);
    EXPECT_STREQ(bytes, "0123456789#########");
    EXPECT_EQ(::lseek(fd, 0, SEEK_CUR), 10);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::read(fd, bytes, 1); }),
              "unexpected EOF" + in_read);
}

TEST_F(Read, OfNothingTouchesNothing) {
    EXPECT_EQ(OSAPI::read(never_open, nullptr, 0), 0);
}

TEST_F(Read, ThrowsTheSystemsReason) {
    const FileDescriptor write_only(::open(path.c_str(), O_WRONLY));
    const FileDescriptor directory(::open(folder.path().c_str(), O_RDONLY));
    EXPECT_EQ(message_without_line_of([&] { OSAPI::read(never_open, bytes, 1); }),
              "read: Bad file descriptor" + in_read);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::read(write_only.fd, bytes, 1); }),
              "read: Bad file descriptor" + in_read);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::read(directory.fd, bytes, 1); }),
              "read: Is a directory" + in_read);
}

// The bytes come one at a time; a descriptor that does not wait is asked until they are there.
TEST_F(Read, GoesOnUntilTheWriterHasWrittenEverything) {
    for (int flags : {0, O_NONBLOCK}) {
        int ends[2];
        ASSERT_EQ(pipe2(ends, flags), 0);
        FileDescriptor reader(ends[0]), writer(ends[1]);
        std::thread writing([&] {
            for (const char ch : {'a', 'b', 'c', 'd'}) {
                wait_a_moment();
                EXPECT_EQ(::write(writer.fd, &ch, 1), 1);
            }
            writer.close();
        });
        EXPECT_EQ(OSAPI::read(reader.fd, bytes, 4), 4);
        EXPECT_EQ(std::string(bytes, 5), "abcd#");
        EXPECT_EQ(message_without_line_of([&] { OSAPI::read(reader.fd, bytes, 1); }),
                  "unexpected EOF" + in_read);
        writing.join();
    }
}

TEST_F(Pread, ReadsWhatWasAskedForWhereItWasAskedFor) {
    EXPECT_EQ(OSAPI::pread(fd, bytes, 3, 6), 3);
    EXPECT_EQ(OSAPI::pread(fd, bytes + 3, 2, 0), 2);
    EXPECT_EQ(std::string(bytes, 6), "67801#");
    EXPECT_EQ(::lseek(fd, 0, SEEK_CUR), 0) << "the file position stays";
}

TEST_F(Pread, ReachesBeyond32Bits) {
    ASSERT_EQ(::pwrite(fd, "far", 3, 5000000000), 3);
    EXPECT_EQ(OSAPI::pread(fd, bytes, 3, 5000000000), 3);
    EXPECT_EQ(std::string(bytes, 4), "far#");
}

TEST_F(Pread, ThrowsAsReadDoes) {
    EXPECT_EQ(OSAPI::pread(never_open, nullptr, 0, 0), 0);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::pread(fd, bytes, 3, 8); }),
              "unexpected EOF" + in_pread);
    EXPECT_EQ(std::string(bytes, 3), "89#");
    EXPECT_EQ(message_without_line_of([&] { OSAPI::pread(fd, bytes, 1, 10); }),
              "unexpected EOF" + in_pread);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::pread(never_open, bytes, 1, 0); }),
              "read: Bad file descriptor" + in_pread);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::pread(fd, bytes, 1, u64(-1)); }),
              "read: Invalid argument" + in_pread);
    OSAPI::Pipe pipe;
    pipe.open();
    EXPECT_EQ(message_without_line_of([&] { OSAPI::pread(pipe.read_end.fd, bytes, 1, 0); }),
              "read: Illegal seek" + in_pread);
}

// ---- Short reads -----------------------------------------------------------------------------

TEST_F(ReadShort, GivesWhatIsThere) {
    EXPECT_EQ(OSAPI::read_short(fd, bytes, 4), 4);
    EXPECT_EQ(OSAPI::read_short(fd, bytes + 4, 10), 6);
    EXPECT_EQ(OSAPI::read_short(fd, bytes + 10, 10), 0) << "the end";
    EXPECT_STREQ(bytes, "0123456789#########");
    EXPECT_EQ(OSAPI::read_short(fd, bytes, 0), 0);
}

TEST_F(ReadShort, GivesNothingWhereNothingIsThereYet) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    const FileDescriptor reader(ends[0]);
    FileDescriptor writer(ends[1]);
    EXPECT_EQ(OSAPI::read_short(reader.fd, bytes, 10), 0);
    ASSERT_EQ(::write(writer.fd, "abc", 3), 3);
    EXPECT_EQ(OSAPI::read_short(reader.fd, bytes, 10), 3);
    EXPECT_EQ(OSAPI::read_short(reader.fd, bytes, 10), 0);
    writer.close();
    EXPECT_EQ(OSAPI::read_short(reader.fd, bytes, 10), 0) << "the end looks the same";
}

TEST_F(ReadShort, ThrowsTheSystemsReason) {
    EXPECT_EQ(message_without_line_of([&] { OSAPI::read_short(never_open, bytes, 1); }),
              "read: Bad file descriptor" + in_read_short);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::read_short(fd, nullptr, 1); }),
              "read: Bad address" + in_read_short);
}

// ---- Positioned writes -----------------------------------------------------------------------

TEST_F(Pwrite, WritesWhereItWasAskedTo) {
    EXPECT_EQ(OSAPI::pwrite(fd, "abc", 3, 4), 3);
    EXPECT_EQ(OSAPI::pwrite(fd, "x", 1, 12), 1);
    EXPECT_EQ(OSAPI::pwrite(fd, "none", 0, 0), 0);
    EXPECT_EQ(bytes_of(path), std::string("0123abc789\0\0x", 13));
    EXPECT_EQ(::lseek(fd, 0, SEEK_CUR), 0) << "the file position stays";
}

TEST_F(Pwrite, OfNothingTouchesNothing) {
    EXPECT_EQ(OSAPI::pwrite(never_open, nullptr, 0, 0), 0);
}

TEST_F(Pwrite, ReachesBeyond32Bits) {
    EXPECT_EQ(OSAPI::pwrite(fd, "far", 3, 5000000000), 3);
    EXPECT_EQ(OSAPI::getsize(fd), 5000000003u);
}

TEST_F(Pwrite, ThrowsTheSystemsReason) {
    const FileDescriptor full(::open("/dev/full", O_WRONLY));
    EXPECT_EQ(message_without_line_of([] { OSAPI::pwrite(never_open, "a", 1, 0); }),
              "write: Bad file descriptor" + in_pwrite);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::pwrite(full.fd, "a", 1, 0); }),
              "write: No space left on device" + in_pwrite);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::pwrite(fd, "a", 1, u64(-1)); }),
              "write: Invalid argument" + in_pwrite);
}

// ---- lseek -----------------------------------------------------------------------------------

TEST_F(Lseek, ReturnsTheNewFilePosition) {
    EXPECT_EQ(OSAPI::lseek(fd, 3, SEEK_SET), 3);
    EXPECT_EQ(OSAPI::lseek(fd, 4, SEEK_CUR), 7);
    EXPECT_EQ(OSAPI::lseek(fd, -2, SEEK_END), 8);
    EXPECT_EQ(OSAPI::lseek(fd, 5000000000, SEEK_SET), 5000000000);
    EXPECT_EQ(OSAPI::lseek(fd, 0, SEEK_CUR), 5000000000);
}

TEST_F(Lseek, ThrowsTheSystemsReason) {
    OSAPI::Pipe pipe;
    pipe.open();
    EXPECT_EQ(message_without_line_of([&] { OSAPI::lseek(fd, -1, SEEK_SET); }),
              "lseek: Invalid argument" + in_lseek);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::lseek(fd, 0, 77); }),
              "lseek: Invalid argument" + in_lseek);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::lseek(pipe.read_end.fd, 0, SEEK_CUR); }),
              "lseek: Illegal seek" + in_lseek);
}

// ---- truncate, datasync, sync ----------------------------------------------------------------

TEST_F(Truncate, CutsAndLengthens) {
    OSAPI::truncate(fd, 4);
    EXPECT_EQ(bytes_of(path), "0123");
    OSAPI::truncate(fd, 6);
    EXPECT_EQ(bytes_of(path), std::string("0123\0\0", 6));
    OSAPI::truncate(fd, 5000000000);
    EXPECT_EQ(OSAPI::getsize(fd), 5000000000u);
    OSAPI::truncate(fd, 0);
    EXPECT_EQ(bytes_of(path), "");
}

TEST_F(Truncate, ThrowsTheSystemsReason) {
    const FileDescriptor read_only(::open(path.c_str(), O_RDONLY));
    const std::string place = in("void OSAPI::truncate(fd_t, s64)");
    EXPECT_EQ(message_without_line_of([] { OSAPI::truncate(never_open, 0); }),
              "ftruncate: Bad file descriptor" + place);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::truncate(read_only.fd, 0); }),
              "ftruncate: Invalid argument" + place);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::truncate(fd, -1); }),
              "ftruncate: Invalid argument" + place);
    EXPECT_EQ(bytes_of(path), "0123456789");
}

TEST(Datasync, PassesForAFileAndThrowsForAPipe) {
    const ScratchFolder folder;
    const FileDescriptor fd(OSAPI::open(folder.file("file").c_str(), OPEN_WRITE));
    EXPECT_NO_THROW(OSAPI::datasync(fd.fd));
    OSAPI::Pipe pipe;
    pipe.open();
    EXPECT_EQ(message_without_line_of([&] { OSAPI::datasync(pipe.write_end.fd); }),
              "fdatasync: Invalid argument" + in("void OSAPI::datasync(fd_t)"));
}

} // namespace
