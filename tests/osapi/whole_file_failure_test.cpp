// SPDX-License-Identifier: BSD-3-Clause

// A whole file against a system that refuses: every call fails in its turn, alone and with the
// clean-up after it.
#include "osapi/whole_file.h"

#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/osapi/system_calls.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <vector>

using namespace velmora;

namespace {

typedef std::vector<std::string> Names;

// One call of a write that goes wrong, and what is said.
struct Failure {
    const char* call;
    int nth, error;
    std::string message;
};

class WholeFileFailure : public testing::Test {
protected:
    const ScratchFolder folder;
    const std::string path = folder.file("sky"), temporary = path + ".inprogress";

    // In the order of the calls, for a file that replaces another. After the renaming only the
    // folder is left to wait for.
    const std::vector<Failure> failures = {
        {"lstat", 1, EIO, "lstat(" + path + "): Input/output error"},
        {"open", 1, EROFS, "opening file \"" + temporary + "\": Read-only file system"},
        {"open", 1, ENOSPC, "opening file \"" + temporary + "\": No space left on device"},
        {"fstat", 1, EIO, "fstat: Input/output error"},
        {"flock", 1, EIO, "flock: Input/output error"},
        {"fcntl", 1, EMFILE, "fcntl: Too many open files"},
        {"open", 2, EMFILE, "opening folder \"" + folder.file("") + "\": Too many open files"},
        {"write", 1, ENOSPC, "write: No space left on device"},
        {"write", 2, EDQUOT, "write: Disk quota exceeded"},
        {"fchmod", 1, EPERM, "fchmod: Operation not permitted"},
        {"fsync", 1, EIO, "fsync: Input/output error"},
        {"close", 1, EIO, "close: Input/output error"},
        {"rename", 1, EACCES, "rename(" + temporary + "," + path + "): Permission denied"},
    };

    void write() const {
        write_whole_file(path.c_str(), [](OSAPI::fd_t fd) {
            OSAPI::write(fd, "one ", 4);
            OSAPI::write(fd, "two", 3);
        });
    }

    // What a write says in which that call fails and, with them, each of `others` once.
    std::string said_when(const Failure& failure, const Names& others = {}) const {
        SystemCalls calls;
        for (const std::string& other : others)
            calls.fail(other, EPERM);
        calls.fail(failure.call, failure.error, failure.nth);
        return message_without_place_of([&] { write(); });
    }

    // What a write says when a call gives that result.
    std::string said_with(const std::string& call, int nth, long result, int error,
                          const std::string& output = "") const {
        SystemCalls calls;
        calls.answer(call, nth, result, error, output);
        return message_without_place_of([&] { write(); });
    }
};

// What lstat says of a file of that owner, the first of another file system.
std::string status_of_another(uid_t owner, mode_t kind = S_IFREG) {
    struct stat status = {};
    status.st_dev = 99;
    status.st_ino = 1;
    status.st_nlink = 1;
    status.st_mode = kind | 0644;
    status.st_uid = owner;
    return {reinterpret_cast<const char*>(&status), sizeof status};
}

const std::string none = "(no StrXception)";

} // namespace

TEST_F(WholeFileFailure, OfAnyCallIsReportedAndLeavesTheOldFileAlone) {
    folder.write("sky", "the old file");
    const int before = open_descriptors();
    for (const Failure& failure : failures) {
        EXPECT_EQ(said_when(failure), failure.message);
        EXPECT_EQ(folder.read("sky"), "the old file") << failure.message;
        EXPECT_EQ(folder.names(), Names{"sky"}) << failure.message;
        EXPECT_EQ(open_descriptors(), before) << failure.message;
    }
}

TEST_F(WholeFileFailure, LeavesNothingWhereNothingWas) {
    const int before = open_descriptors();
    for (const Failure& failure : failures) {
        if (std::string(failure.call) == "fchmod")
            continue; // there is no mode to keep
        EXPECT_EQ(said_when(failure), failure.message);
        EXPECT_EQ(folder.names(), Names()) << failure.message;
        EXPECT_EQ(open_descriptors(), before) << failure.message;
    }
}

// In a child, which two exceptions at once would end.
TEST_F(WholeFileFailure, IsTheFirstOneWhenTheCleanUpFailsToo) {
    folder.write("sky", "the old file");
    for (const Failure& failure : failures) {
        const bool closed = std::string(failure.call) == "rename";
        const Names clean_up = closed ? Names{"unlink"} : Names{"close", "unlink"};
        unlink(temporary.c_str()); // which the one before has left
        EXPECT_EQ(status_of_child([&] {
                      const int before = open_descriptors();
                      return said_when(failure, clean_up) == failure.message &&
                             folder.read("sky") == "the old file" && open_descriptors() == before;
                  }),
                  0)
            << failure.message;
    }
}

TEST_F(WholeFileFailure, OfTheWriterIsReportedWhenTheCleanUpFailsToo) {
    folder.write("sky", "the old file");
    EXPECT_EQ(status_of_child([&] {
                  const int before = open_descriptors();
                  std::string said;
                  SystemCalls calls;
                  calls.fail("close", EIO);
                  calls.fail("unlink", EACCES);
                  try {
                      write_whole_file(path.c_str(),
                                       [](OSAPI::fd_t) { throw std::runtime_error("no more"); });
                  } catch (const std::runtime_error& error) {
                      said = error.what();
                  }
                  return said == "no more" && folder.read("sky") == "the old file" &&
                         open_descriptors() == before;
              }),
              0);
}

TEST_F(WholeFileFailure, LeavesRoomForTheNextWriter) {
    for (const Failure& failure : failures) {
        EXPECT_EQ(said_when(failure, {"unlink"}), failure.message);
        write();
        EXPECT_EQ(folder.read("sky"), "one two") << failure.message;
        EXPECT_EQ(folder.names(), Names{"sky"}) << failure.message;
    }
}

// A failed close reports lost bytes, so it comes before the renaming. The lock, which
// another descriptor holds, is given up after that.
TEST_F(WholeFileFailure, IsLookedForInThisOrder) {
    folder.write("sky", "the old file");
    SystemCalls calls;
    write();
    EXPECT_EQ(calls.names(),
              "lstat open fstat flock lstat fcntl open write write fchmod fsync close "
              "lstat rename lstat fsync close close ");
}

TEST_F(WholeFileFailure, OfTheFoldersSyncIsReportedThoughTheFileIsThere) {
    const Failure failure = {"fsync", 2, EIO, "fsync: Input/output error"};
    const int before = open_descriptors();
    EXPECT_EQ(said_when(failure), failure.message);
    EXPECT_EQ(folder.read("sky"), "one two");
    EXPECT_EQ(folder.names(), Names{"sky"});
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(WholeFileFailure, IsNotThatTheFolderCannotBeReadOrSynced) {
    EXPECT_EQ(said_when({"open", 2, EACCES, ""}), none);
    EXPECT_EQ(said_when({"fsync", 2, EINVAL, ""}), none);
    EXPECT_EQ(folder.read("sky"), "one two");
}

// ---- Locks -----------------------------------------------------------------------------------

TEST_F(WholeFileFailure, IsNotThatThereAreNoLocks) {
    for (const int error : {ENOLCK, ENOSYS, EOPNOTSUPP}) {
        EXPECT_EQ(said_when({"flock", 1, error, ""}), none);
        EXPECT_EQ(folder.read("sky"), "one two");
        EXPECT_EQ(folder.names(), Names{"sky"});
    }
}

TEST_F(WholeFileFailure, IsReportedForAFileThatIsThereWhereThereAreNoLocks) {
    folder.write("sky.inprogress", "left or in use");
    for (const int error : {ENOLCK, ENOSYS, EOPNOTSUPP})
        EXPECT_EQ(said_when({"flock", 1, error, ""}),
                  "opening file \"" + temporary +
                      "\": may be in use, as this file system has no locks");
    EXPECT_EQ(folder.read("sky.inprogress"), "left or in use");
}

TEST_F(WholeFileFailure, IsNotAnInterruptedLock) {
    EXPECT_EQ(said_when({"flock", 1, EINTR, ""}), none);
    EXPECT_EQ(folder.read("sky"), "one two");
}

// Another took the new file for one that was left, and holds its lock: it goes on, and removes it.
TEST_F(WholeFileFailure, LeavesTheNewFileToWhoLockedItFirst) {
    const int before = open_descriptors();
    EXPECT_EQ(said_when({"flock", 1, EWOULDBLOCK, ""}),
              "opening file \"" + temporary + "\": is being written by another process");
    EXPECT_EQ(folder.names(), Names{"sky.inprogress"});
    EXPECT_EQ(open_descriptors(), before);
}

// ---- A name that changes hands between two calls ---------------------------------------------

// The second lstat is that of the name after the lock.
TEST_F(WholeFileFailure, StartsOverWhenTheNewFileLostItsNameBeforeTheLock) {
    const int before = open_descriptors();
    SystemCalls calls;
    calls.fail("lstat", ENOENT, 2);
    // The file is still there in truth, as another's: one that was left, which is removed.
    write();
    EXPECT_EQ(calls.count("flock"), 3);
    EXPECT_EQ(folder.read("sky"), "one two");
    EXPECT_EQ(folder.names(), Names{"sky"});
    EXPECT_EQ(open_descriptors(), before);
}

// Of a file that is found, the name is looked up before it is opened and after it is locked.
TEST_F(WholeFileFailure, LeavesAFoundFileThatIsAnotherAfterTheLock) {
    folder.write("sky.inprogress", "left");
    SystemCalls calls;
    calls.answer("lstat", 3, 0, 0, status_of_another(geteuid()));
    write();
    EXPECT_EQ(calls.count("unlink"), 1) << "in the second round";
    EXPECT_EQ(calls.count("flock"), 3) << "twice of the one found, once of the new one";
    EXPECT_EQ(folder.read("sky"), "one two");
    EXPECT_EQ(folder.names(), Names{"sky"});
}

TEST_F(WholeFileFailure, LeavesAFoundFileThatHasGoneBeforeItIsOpened) {
    folder.write("sky.inprogress", "left");
    for (const int error : {ENOENT, ELOOP, ENXIO}) {
        folder.write("sky.inprogress", "left");
        EXPECT_EQ(said_when({"open", 2, error, ""}), none);
        EXPECT_EQ(folder.names(), Names{"sky"});
    }
}

TEST_F(WholeFileFailure, OfAnyCallAboutAFoundFileIsReportedAndLeavesIt) {
    const std::vector<Failure> about_found = {
        {"lstat", 2, EIO, "opening file \"" + temporary + "\": Input/output error"},
        {"open", 2, EMFILE, "opening file \"" + temporary + "\": Too many open files"},
        {"flock", 1, EIO, "flock: Input/output error"},
        {"fstat", 1, EIO, "fstat: Input/output error"},
        {"unlink", 1, EACCES, "unlink(" + temporary + "): Permission denied"},
    };
    folder.write("sky.inprogress", "left");
    const int before = open_descriptors();
    for (const Failure& failure : about_found) {
        EXPECT_EQ(said_when(failure), failure.message);
        EXPECT_EQ(folder.read("sky.inprogress"), "left") << failure.message;
        EXPECT_EQ(folder.names(), Names{"sky.inprogress"}) << failure.message;
        EXPECT_EQ(open_descriptors(), before) << failure.message;
    }
}

// Where the name is never to be had, there is an end.
TEST_F(WholeFileFailure, ComesAfterManyTries) {
    SystemCalls calls;
    for (int nth = 1; nth <= 1000; nth += 2) {
        calls.fail("open", EEXIST, nth);
        calls.fail("open", ENOENT, nth + 1);
    }
    EXPECT_EQ(message_without_place_of([&] { write(); }),
              "opening file \"" + temporary + "\": is being written by another process");
    EXPECT_EQ(calls.count("open"), 199) << "100 that create, and 99 of what is there";
}

TEST_F(WholeFileFailure, IsReportedWhenTheFinalNameIsAnotherUsersAfterTheRenaming) {
    const std::string message =
        "rename(" + temporary + "," + path + "): the file was replaced by another user";
    // The fourth lstat is that of the final name.
    EXPECT_EQ(said_with("lstat", 4, 0, 0, status_of_another(geteuid() + 1)), message);
    EXPECT_EQ(said_with("lstat", 4, 0, 0, status_of_another(geteuid(), S_IFLNK)), message);
}

TEST_F(WholeFileFailure, IsNotThatTheNextWriterWasQuickOrTheFileWasMovedOn) {
    EXPECT_EQ(said_with("lstat", 4, 0, 0, status_of_another(geteuid())), none);
    EXPECT_EQ(said_with("lstat", 4, -1, ENOENT), none);
}
