// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/osapi.h"

#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <thread>
#include <type_traits>

using OSAPI::fd_t;
using OSAPI::FileDescriptor;
using OSAPI::OPEN_DIRECT;
using OSAPI::OPEN_EXCL;
using OSAPI::OPEN_READ;
using OSAPI::OPEN_WRITE;

namespace {

const fd_t never_open = 1000000;

bool is_open(fd_t fd) {
    return fcntl(fd, F_GETFD) != -1;
}

bool closes_on_exec(fd_t fd) {
    return fcntl(fd, F_GETFD) & FD_CLOEXEC;
}

// A mask for the modes of new files, for as long as it lives.
class Umask {
public:
    explicit Umask(mode_t mask) : before(umask(mask)) {}
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;
    ~Umask() { umask(before); }

private:
    mode_t before;
};

// ---- Open modes ------------------------------------------------------------------------------

TEST(OpenModes, HaveTheseValues) {
    EXPECT_EQ(int(OPEN_READ), 1);
    EXPECT_EQ(int(OPEN_WRITE), 2);
    EXPECT_EQ(int(OPEN_DIRECT), 4);
    EXPECT_EQ(int(OPEN_EXCL), 8);
    EXPECT_TRUE((std::is_same<fd_t, s32>::value));
}

TEST(OpenModes, SelectTheAccessAndWhetherTheFileIsEmptied) {
    const ScratchFolder folder;
    struct {
        int flags, access;
        const char* bytes;
    } const cases[] = {
        {0, O_RDONLY, "bytes"},
        {OPEN_READ, O_RDONLY, "bytes"},
        {OPEN_WRITE, O_WRONLY, ""},
        {OPEN_READ | OPEN_WRITE, O_RDWR, ""},
    };
    for (const auto& c : cases) {
        const std::string path = folder.write("file", "bytes");
        const fd_t fd = OSAPI::open(path.c_str(), c.flags);
        EXPECT_EQ(fcntl(fd, F_GETFL) & O_ACCMODE, c.access) << c.flags;
        EXPECT_EQ(bytes_of(path), c.bytes) << c.flags;
        OSAPI::close(fd);
    }
}

TEST(OpenModes, WritingCreatesAndReadingDoesNot) {
    const ScratchFolder folder;
    for (int flags : {0, 1, 2, 3}) {
        const std::string path = folder.file(std::to_string(flags));
        const fd_t fd = OSAPI::open_can_fail(path.c_str(), flags);
        EXPECT_EQ(exists(path), flags >= 2);
        EXPECT_EQ(fd != -1, flags >= 2);
        if (fd != -1)
            OSAPI::close(fd);
    }
}

TEST(OpenModes, NewFilesHaveMode0664LessTheMask) {
    const ScratchFolder folder;
    struct {
        mode_t mask, mode;
    } const cases[] = {{0, 0664}, {022, 0644}, {077, 0600}};
    for (const auto& c : cases)
        for (int flags : {2, 3, 10}) {
            const Umask mask(c.mask);
            const std::string path = folder.file(std::to_string(c.mask) + std::to_string(flags));
            OSAPI::close(OSAPI::open(path.c_str(), flags));
            struct stat status;
            ASSERT_EQ(stat(path.c_str(), &status), 0);
            EXPECT_EQ(status.st_mode & 07777, c.mode) << flags;
        }
}

TEST(OpenModes, ExclusiveRefusesWhatIsThere) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    const fd_t fd = OSAPI::open_can_fail(path.c_str(), OPEN_WRITE | OPEN_EXCL);
    EXPECT_EQ(fd, -1);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(bytes_of(path), "bytes");
}

TEST(OpenModes, EveryDescriptorClosesOnExec) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    for (int flags : {0, 1, 2, 3, 9}) {
        const fd_t fd = OSAPI::open(path.c_str(), flags);
        EXPECT_TRUE(closes_on_exec(fd)) << flags;
        OSAPI::close(fd);
    }
}

// ---- Opening ---------------------------------------------------------------------------------

TEST(Open, NamesThePathAndTheReason) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", ""), loop = folder.file("loop");
    ASSERT_EQ(symlink("loop", loop.c_str()), 0);
    struct {
        std::string path;
        int flags, error;
        const char* reason;
    } const cases[] = {
        {folder.file("missing"), OPEN_READ, ENOENT, "No such file or directory"},
        {folder.file("100%d of \"%s\""), 0, ENOENT, "No such file or directory"},
        {folder.file("missing/file"), OPEN_WRITE, ENOENT, "No such file or directory"},
        {file + "/below", OPEN_READ, ENOTDIR, "Not a directory"},
        {folder.path(), OPEN_WRITE, EISDIR, "Is a directory"},
        {folder.path(), 3, EISDIR, "Is a directory"},
        {loop, OPEN_READ, ELOOP, "Too many levels of symbolic links"},
        {file, OPEN_WRITE | OPEN_EXCL, EEXIST, "File exists"},
        {folder.file(std::string(300, 'x')), OPEN_READ, ENAMETOOLONG, "File name too long"},
    };
    const int before = open_descriptors();
    for (const auto& c : cases) {
        errno = 0;
        EXPECT_EQ(OSAPI::open_can_fail(c.path.c_str(), c.flags), -1);
        EXPECT_EQ(errno, c.error) << c.path;
        EXPECT_EQ(message_without_line_of([&] { OSAPI::open(c.path.c_str(), c.flags); }),
                  "opening file \"" + c.path + "\": " + c.reason +
                      " in <OSAPI::fd_t OSAPI::open(const char*, int)> (osapi-unix:LINE)");
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST(Open, NeedsThePermission) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    EXPECT_TRUE(holds_unprivileged([&] {
        OSAPI::close(OSAPI::open(path.c_str(), OPEN_READ));
        return message_without_line_of([&] { OSAPI::open(path.c_str(), OPEN_WRITE); }) ==
               "opening file \"" + path +
                   "\": Permission denied in <OSAPI::fd_t OSAPI::open(const char*, int)> "
                   "(osapi-unix:LINE)";
    }));
}

TEST(CloseOnExec, MarksTheDescriptor) {
    const FileDescriptor fd(::open("/dev/null", O_RDONLY));
    ASSERT_FALSE(closes_on_exec(fd.fd));
    OSAPI::close_on_exec(fd.fd);
    EXPECT_TRUE(closes_on_exec(fd.fd));
    OSAPI::close_on_exec(fd.fd);
    EXPECT_TRUE(closes_on_exec(fd.fd));
}

TEST(CloseOnExec, ThrowsForWhatIsNotOpen) {
    for (fd_t fd : {never_open, -1})
        EXPECT_EQ(message_without_line_of([&] { OSAPI::close_on_exec(fd); }),
                  "fcntl: Bad file descriptor in <void OSAPI::close_on_exec(fd_t)> "
                  "(osapi-unix:LINE)");
}

// ---- Closing, writing, size, sync ------------------------------------------------------------

TEST(Close, Closes) {
    const fd_t fd = ::open("/dev/null", O_RDONLY);
    OSAPI::close(fd);
    EXPECT_FALSE(is_open(fd));
}

TEST(Close, ThrowsForWhatIsNotOpen) {
    for (fd_t fd : {never_open, -1})
        EXPECT_EQ(message_without_line_of([&] { OSAPI::close(fd); }),
                  "close: Bad file descriptor in <void OSAPI::close(fd_t)> "
                  "(osapi-unix:LINE)");
}

TEST(Write, WritesEveryByteAtTheFilePosition) {
    const ScratchFolder folder;
    const std::string path = folder.file("file"), bytes("a\0b", 3);
    const FileDescriptor fd(OSAPI::open(path.c_str(), OPEN_WRITE));
    EXPECT_EQ(OSAPI::write(fd.fd, bytes.data(), 3), 3);
    EXPECT_EQ(OSAPI::write(fd.fd, "xyz", 2), 2);
    EXPECT_EQ(bytes_of(path), bytes + "xy");
    EXPECT_TRUE((std::is_same<decltype(OSAPI::write(0, "", 0)), sword>::value));
}

TEST(Write, OfNothingTouchesNothing) {
    const ScratchFolder folder;
    const FileDescriptor fd(OSAPI::open(folder.file("file").c_str(), OPEN_WRITE));
    EXPECT_EQ(OSAPI::write(fd.fd, "abc", 0), 0);
    EXPECT_EQ(OSAPI::getsize(fd.fd), 0u);
    EXPECT_EQ(OSAPI::write(never_open, nullptr, 0), 0);
}

// The pipe holds 64 KiB and does not block: the rest goes through as the reader makes room.
TEST(Write, GoesOnWhileTheReaderIsSlow) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    std::string sent(1000000, 0), received;
    for (std::size_t i = 0; i < sent.size(); i++)
        sent[i] = char(i % 251);
    std::thread reader([&] {
        char piece[5000];
        while (received.size() < sent.size()) {
            const ssize_t n = ::read(ends[0], piece, sizeof piece);
            if (n > 0)
                received.append(piece, n);
            else
                std::this_thread::yield();
        }
    });
    EXPECT_EQ(OSAPI::write(ends[1], sent.data(), sent.size()), sword(sent.size()));
    reader.join();
    EXPECT_TRUE(received == sent);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(Write, ThrowsForEveryOtherFailure) {
    const std::string in = " in <sword OSAPI::write(int, const char*, uword)> (osapi-unix:LINE)";
    const FileDescriptor read_only(::open("/dev/null", O_RDONLY));
    const FileDescriptor full(::open("/dev/full", O_WRONLY));
    EXPECT_EQ(message_without_line_of([] { OSAPI::write(never_open, "a", 1); }),
              "write: Bad file descriptor" + in);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::write(read_only.fd, "a", 1); }),
              "write: Bad file descriptor" + in);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::write(full.fd, "a", 1); }),
              "write: No space left on device" + in);

    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ::close(ends[0]);
    const auto before = signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::write(ends[1], "a", 1); }),
              "write: Broken pipe" + in);
    signal(SIGPIPE, before);
    ::close(ends[1]);
}

TEST(Getsize, IsTheSizeInBytes) {
    const ScratchFolder folder;
    for (const s64 size : {s64(0), s64(1), s64(4096), s64(5000000001)}) {
        const std::string path = folder.write("file", "");
        ASSERT_EQ(truncate(path.c_str(), size), 0); // a hole, not bytes
        const FileDescriptor fd(OSAPI::open(path.c_str(), OPEN_READ));
        EXPECT_EQ(OSAPI::getsize(fd.fd), u64(size));
    }
    EXPECT_TRUE((std::is_same<decltype(OSAPI::getsize(0)), u64>::value));
}

TEST(Getsize, ThrowsForWhatIsNotOpen) {
    EXPECT_EQ(message_without_line_of([] { OSAPI::getsize(never_open); }),
              "fstat: Bad file descriptor in <u64 OSAPI::getsize(fd_t)> "
              "(osapi-unix:LINE)");
}

TEST(Sync, PassesForAFileAndThrowsForAPipe) {
    const ScratchFolder folder;
    const FileDescriptor fd(OSAPI::open(folder.file("file").c_str(), OPEN_WRITE));
    EXPECT_NO_THROW(OSAPI::sync(fd.fd));

    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::sync(ends[1]); }),
              "fsync: Invalid argument in <void OSAPI::sync(fd_t)> (osapi-unix:LINE)");
    ::close(ends[0]);
    ::close(ends[1]);
}

// ---- FileDescriptor --------------------------------------------------------------------------

TEST(FileDescriptor, IsOneDescriptor) {
    EXPECT_EQ(sizeof(FileDescriptor), sizeof(fd_t));
    EXPECT_FALSE(std::is_polymorphic<FileDescriptor>::value);
    EXPECT_FALSE(std::is_copy_constructible<FileDescriptor>::value);
    EXPECT_FALSE(std::is_copy_assignable<FileDescriptor>::value);
    EXPECT_FALSE(std::is_nothrow_destructible<FileDescriptor>::value);
}

TEST(FileDescriptor, StartsClosed) {
    FileDescriptor fd;
    EXPECT_EQ(fd.fd, -1);
    EXPECT_FALSE(fd.is_open());
    EXPECT_NO_THROW(fd.close());
}

TEST(FileDescriptor, AnyValueButMinusOneCountsAsOpen) {
    FileDescriptor fd;
    for (fd_t value : {0, -2, 1000000, -2147483647 - 1}) {
        fd.fd = value;
        EXPECT_TRUE(fd.is_open()) << value;
    }
    fd.fd = -1;
}

TEST(FileDescriptor, TakesADescriptorOver) {
    FileDescriptor fd;
    const fd_t opened = ::open("/dev/null", O_RDONLY);
    fd.init(opened);
    EXPECT_TRUE(fd.is_open());
    EXPECT_EQ(fd.fd, opened);
}

TEST(FileDescriptor, RefusesASecondDescriptor) {
    FileDescriptor fd;
    const fd_t opened = ::open("/dev/null", O_RDONLY);
    fd.init(opened);
    try {
        fd.init(opened + 1);
        FAIL();
    } catch (AssertXception& x) {
        EXPECT_STREQ(x.expr, "!is_open()");
        EXPECT_STREQ(x.file, "osapi-unix");
        EXPECT_STREQ(x.function, "void OSAPI::FileDescriptor::init(OSAPI::fd_t)");
        EXPECT_GT(x.line, 0);
    }
    EXPECT_EQ(fd.fd, opened);
    EXPECT_TRUE(is_open(opened));
}

TEST(FileDescriptor, ClosesOnceAndCanBeUsedAgain) {
    FileDescriptor fd(::open("/dev/null", O_RDONLY));
    const fd_t first = fd.fd;
    fd.close();
    EXPECT_FALSE(fd.is_open());
    EXPECT_FALSE(is_open(first));
    EXPECT_NO_THROW(fd.close());
    fd.init(::open("/dev/null", O_RDONLY));
    EXPECT_TRUE(fd.is_open());
}

TEST(FileDescriptor, ClosesWhenItGoes) {
    const int before = open_descriptors();
    fd_t opened;
    {
        const FileDescriptor fd(::open("/dev/null", O_RDONLY));
        opened = fd.fd;
        EXPECT_EQ(open_descriptors(), before + 1);
    }
    EXPECT_FALSE(is_open(opened));
    EXPECT_EQ(open_descriptors(), before);
}

TEST(FileDescriptor, IsClosedEvenWhenClosingThrows) {
    FileDescriptor fd(never_open);
    EXPECT_EQ(message_without_line_of([&] { fd.close(); }),
              "close: Bad file descriptor in <void OSAPI::close(fd_t)> (osapi-unix:LINE)");
    EXPECT_FALSE(fd.is_open());
}

TEST(FileDescriptor, ThrowsFromItsDestructorToo) {
    EXPECT_EQ(message_without_line_of([] { FileDescriptor fd(never_open); }),
              "close: Bad file descriptor in <void OSAPI::close(fd_t)> (osapi-unix:LINE)");
}

} // namespace
