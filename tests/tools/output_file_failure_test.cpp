// Every system call of an output file fails in its turn.

#include "tests/scratch_folder.h"
#include "tools/failure.h"
#include "tools/output_file.h"

#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <set>
#include <sys/types.h>

using namespace velmora;

namespace {

// The calls that fail, and how; writes go through for the first `writable` bytes.
struct Faults {
    std::set<std::string> calls;
    int error = 0;
    std::size_t writable = 0;
    bool interrupts = false; // write gives EINTR and a part by turns
    int opened = 0, closed = 0;

    bool hit(const char* call) const {
        if (calls.count(call) == 0)
            return false;
        errno = error;
        return true;
    }
};

Faults faults;

class OutputFileFailure : public testing::Test {
protected:
    const ScratchFolder folder;
    const std::string path = folder.write("sky.exr", "old");

    void SetUp() override { faults = Faults(); }
    void TearDown() override { faults = Faults(); }

    std::string failure_of_write() const {
        try {
            write_file(path, std::string(100000, 'x'));
        } catch (const WorkFailure& failure) {
            return failure.what();
        }
        return "no failure";
    }

    void expect_old_file_alone() const {
        EXPECT_EQ(folder.read("sky.exr"), "old");
        EXPECT_EQ(folder.names(), std::vector<std::string>{"sky.exr"});
        EXPECT_EQ(faults.opened, faults.closed);
    }
};

} // namespace

extern "C" {
int __real_open(const char* path, int flags, mode_t mode);
ssize_t __real_write(int fd, const void* bytes, size_t count);
int __real_fsync(int fd);
int __real_close(int fd);
int __real_rename(const char* from, const char* to);
int __real_unlink(const char* path);

int __wrap_open(const char* path, int flags, ...);
ssize_t __wrap_write(int fd, const void* bytes, size_t count);
int __wrap_fsync(int fd);
int __wrap_close(int fd);
int __wrap_rename(const char* from, const char* to);
int __wrap_unlink(const char* path);
}

int __wrap_open(const char* path, int flags, ...) {
    if (faults.hit("open"))
        return -1;
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const int fd = __real_open(path, flags, mode);
    faults.opened += fd != -1;
    return fd;
}

ssize_t __wrap_write(int fd, const void* bytes, size_t count) {
    if (faults.interrupts) {
        static bool interrupt = false;
        interrupt = !interrupt;
        errno = EINTR;
        return interrupt ? -1 : __real_write(fd, bytes, std::min<size_t>(count, 4096));
    }
    if (faults.calls.count("write") == 0)
        return __real_write(fd, bytes, count);
    if (faults.writable == 0) {
        errno = faults.error;
        return -1;
    }
    const ssize_t written = __real_write(fd, bytes, std::min(count, faults.writable));
    faults.writable -= size_t(written);
    return written;
}

int __wrap_fsync(int fd) {
    return faults.hit("fsync") ? -1 : __real_fsync(fd);
}

// Releases the descriptor also when it fails, as the system does.
int __wrap_close(int fd) {
    faults.closed++;
    const int result = __real_close(fd);
    return faults.hit("close") ? -1 : result;
}

int __wrap_rename(const char* from, const char* to) {
    return faults.hit("rename") ? -1 : __real_rename(from, to);
}

int __wrap_unlink(const char* path) {
    return faults.hit("unlink") ? -1 : __real_unlink(path);
}

TEST_F(OutputFileFailure, SaysWhyAndKeepsTheOldFileWhicheverCallFails) {
    const struct {
        const char* call;
        int error;
        const char* reason;
    } cases[] = {
        {"open", EACCES, "Permission denied"},
        {"open", ENOSPC, "No space left on device"},
        {"open", EROFS, "Read-only file system"},
        {"write", ENOSPC, "No space left on device"},
        {"write", EDQUOT, "Disk quota exceeded"},
        {"write", EIO, "Input/output error"},
        {"write", EFBIG, "File too large"},
        {"fsync", EIO, "Input/output error"},
        {"fsync", ENOSPC, "No space left on device"},
        {"close", EIO, "Input/output error"},
        {"rename", EXDEV, "Invalid cross-device link"},
        {"rename", EACCES, "Permission denied"},
    };
    for (const auto& c : cases) {
        faults = Faults();
        faults.calls = {c.call};
        faults.error = c.error;
        EXPECT_EQ(failure_of_write(), path + ": " + c.reason) << c.call;
        expect_old_file_alone();
    }
}

TEST_F(OutputFileFailure, KeepsTheOldFileWhenTheDiskFillsHalfWay) {
    faults.calls = {"write"};
    faults.error = ENOSPC;
    faults.writable = 65536;
    EXPECT_EQ(failure_of_write(), path + ": No space left on device");
    expect_old_file_alone();
}

TEST_F(OutputFileFailure, LeavesNoFileWhereNoneWas) {
    std::filesystem::remove(path);
    faults.calls = {"write"};
    faults.error = ENOSPC;
    EXPECT_EQ(failure_of_write(), path + ": No space left on device");
    EXPECT_EQ(folder.names(), std::vector<std::string>());
}

TEST_F(OutputFileFailure, ReportsTheFirstFailureWhenCleaningUpFailsToo) {
    faults.calls = {"write", "close", "unlink"};
    faults.error = EIO;
    EXPECT_EQ(failure_of_write(), path + ": Input/output error");
    EXPECT_EQ(folder.read("sky.exr"), "old");
    EXPECT_EQ(faults.opened, faults.closed);
}

TEST_F(OutputFileFailure, GoesOnWhenAWriteIsInterruptedOrShort) {
    faults.interrupts = true;
    EXPECT_EQ(failure_of_write(), "no failure");
    EXPECT_EQ(folder.read("sky.exr"), std::string(100000, 'x'));
    EXPECT_EQ(folder.names(), std::vector<std::string>{"sky.exr"});
}
