// The writer against a system that refuses: the calls below fail when a test says so.
#include "catalog/database_writer.h"
#include "tests/catalog/failures.h"
#include "tests/scratch_folder.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <gtest/gtest.h>
#include <sys/types.h>

namespace {

// Lets `passes` calls through and fails all later ones with `error`, when that is not 0.
struct Trap {
    int passes;
    int error;

    bool springs() {
        if (error == 0 || passes-- > 0)
            return false;
        errno = error;
        return true;
    }
};

Trap close_trap, fsync_trap, rename_trap, unlink_trap, write_trap;
size_t longest_write;

} // namespace

extern "C" {

int __real_close(int fd);
int __real_fsync(int fd);
int __real_rename(const char* from, const char* to);
int __real_unlink(const char* path);
ssize_t __real_write(int fd, const void* bytes, size_t n);

int __wrap_close(int fd) {
    // As a failing close does, it releases the descriptor all the same.
    const int status = __real_close(fd);
    return close_trap.springs() ? -1 : status;
}

int __wrap_fsync(int fd) {
    return fsync_trap.springs() ? -1 : __real_fsync(fd);
}

int __wrap_rename(const char* from, const char* to) {
    return rename_trap.springs() ? -1 : __real_rename(from, to);
}

int __wrap_unlink(const char* path) {
    return unlink_trap.springs() ? -1 : __real_unlink(path);
}

ssize_t __wrap_write(int fd, const void* bytes, size_t n) {
    if (write_trap.springs())
        return -1;
    return __real_write(fd, bytes, longest_write ? std::min(n, longest_write) : n);
}

} // extern "C"

namespace velmora {

typedef std::vector<std::string> Names;

class DatabaseWriterFailure : public testing::Test {
protected:
    ScratchFolder folder;

    void TearDown() override { disarm(); }

    static void disarm() {
        close_trap = fsync_trap = rename_trap = unlink_trap = write_trap = {0, 0};
        longest_write = 0;
    }

    // Writes `count` stars over an old file and gives what is said; checks that the old file is
    // whole and alone.
    std::string failure_to_write(uword count) {
        folder.write("sky", "the old file");
        const std::string said = xception_of([&] { write(count); });
        disarm();
        EXPECT_EQ(folder.read("sky"), "the old file");
        EXPECT_EQ(folder.names(), Names{"sky"});
        return said;
    }

    void write(uword count) {
        write_star_database(folder.file("sky"), std::vector<star>(count, star()));
    }
};

TEST_F(DatabaseWriterFailure, OfTheFirstWriteLeavesTheOldFile) {
    write_trap = {0, ENOSPC};
    EXPECT_EQ(failure_to_write(3), "write: No space left on device");
}

TEST_F(DatabaseWriterFailure, OfALaterWriteLeavesTheOldFile) {
    write_trap = {2, ENOSPC};
    EXPECT_EQ(failure_to_write(20000), "write: No space left on device");
}

TEST_F(DatabaseWriterFailure, OfSyncLeavesTheOldFile) {
    fsync_trap = {0, EIO};
    EXPECT_EQ(failure_to_write(3), "fsync: Input/output error");
}

TEST_F(DatabaseWriterFailure, OfCloseLeavesTheOldFile) {
    close_trap = {0, EIO};
    EXPECT_EQ(failure_to_write(3), "close: Input/output error");
}

TEST_F(DatabaseWriterFailure, OfRenameLeavesTheOldFile) {
    const std::string path = folder.file("sky");
    rename_trap = {0, EACCES};
    EXPECT_EQ(failure_to_write(3),
              "rename(" + path + ".inprogress," + path + "): Permission denied");
}

TEST_F(DatabaseWriterFailure, LeavesNothingWhereNothingWas) {
    write_trap = {0, ENOSPC};
    EXPECT_EQ(xception_of([&] { write(3); }), "write: No space left on device");
    EXPECT_EQ(folder.names(), Names());
}

// The clean-up fails as well: the first failure is told, and nothing ends the program.
TEST_F(DatabaseWriterFailure, IsTheOneToldWhenTheCleanUpFailsToo) {
    write_trap = {0, ENOSPC};
    close_trap = {0, EIO};
    unlink_trap = {0, EACCES};
    EXPECT_EQ(xception_of([&] { write(3); }), "write: No space left on device");
    disarm();
    EXPECT_EQ(folder.names(), Names{"sky.inprogress"});
}

TEST_F(DatabaseWriterFailure, IsNoneWhenWritesAreShort) {
    write(1000);
    const std::string whole = folder.read("sky");
    longest_write = 7;
    write(1000);
    EXPECT_EQ(folder.read("sky"), whole);
    EXPECT_EQ(whole.size(), 1001u * 32);
}

TEST_F(DatabaseWriterFailure, LeavesRoomForTheNextWriter) {
    write_trap = {0, ENOSPC};
    EXPECT_EQ(failure_to_write(3), "write: No space left on device");
    write(3);
    EXPECT_EQ(folder.read("sky").size(), 4u * 32);
}

} // namespace velmora
