// A whole file against a system that refuses: every call fails in its turn, alone and with the
// clean-up behind it.
#include "osapi/whole_file.h"

#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/osapi/system_calls.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>

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
    const std::string path = folder.file("sky");

    const std::vector<Failure> failures = {
        {"open", 1, EROFS, "opening file \"" + path + ".inprogress\": Read-only file system"},
        {"open", 1, ENOSPC, "opening file \"" + path + ".inprogress\": No space left on device"},
        {"write", 1, ENOSPC, "write: No space left on device"},
        {"write", 2, EDQUOT, "write: Disk quota exceeded"},
        {"fsync", 1, EIO, "fsync: Input/output error"},
        {"close", 1, EIO, "close: Input/output error"},
        {"rename", 1, EACCES, "rename(" + path + ".inprogress," + path + "): Permission denied"},
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
};

} // namespace

TEST_F(WholeFileFailure, OfAnyCallIsToldAndLeavesTheOldFileAlone) {
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
        EXPECT_EQ(said_when(failure), failure.message);
        EXPECT_EQ(folder.names(), Names()) << failure.message;
        EXPECT_EQ(open_descriptors(), before) << failure.message;
    }
}

// In a child, which two exceptions at once would end. Closing is clean-up until the file is whole,
// then a step of its own, before the rename.
TEST_F(WholeFileFailure, IsTheFirstOneWhenTheCleanUpFailsToo) {
    folder.write("sky", "the old file");
    for (const Failure& failure : failures) {
        const bool closed = std::string(failure.call) == "rename";
        const Names clean_up = closed ? Names{"unlink"} : Names{"close", "unlink"};
        EXPECT_EQ(status_of_child([&] {
                      const int before = open_descriptors();
                      return said_when(failure, clean_up) == failure.message &&
                             folder.read("sky") == "the old file" && open_descriptors() == before;
                  }),
                  0)
            << failure.message;
    }
}

TEST_F(WholeFileFailure, OfTheWriterIsToldWhenTheCleanUpFailsToo) {
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

// A close that fails tells of bytes that were lost: so it comes before the rename.
TEST_F(WholeFileFailure, IsLookedForInThisOrder) {
    SystemCalls calls;
    write();
    EXPECT_EQ(calls.names(), "open fcntl fcntl write write fsync close rename ");
}
