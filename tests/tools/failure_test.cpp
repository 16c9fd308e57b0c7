// SPDX-License-Identifier: BSD-3-Clause
#include "tools/failure.h"

#include "tests/failing_memory.h"
#include "tests/tools/standard_error.h"
#include "tools/say.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

using namespace velmora;

namespace {

// What is said, and what it comes to, while no memory is to be had from the `nth` request on.
template <class Work>
std::string said_without_memory(int nth, Work work) {
    StandardError error;
    std::string failed;
    {
        const FailingMemory memory(nth, INT_MAX);
        try {
            work();
        } catch (const std::bad_alloc&) {
            failed = "(std::bad_alloc)";
        }
    }
    return error.text() + failed;
}

} // namespace

TEST(Say, WritesALine) {
    StandardError error;
    say("sky.exr: written");
    say({"stats: ", "", "one", " frame"});
    say("");
    EXPECT_EQ(error.text(), "velmora: sky.exr: written\nvelmora: stats: one frame\nvelmora: \n");
}

TEST(Say, NeedsNoMemory) {
    const std::string long_line(100000, 'x');
    EXPECT_EQ(said_without_memory(1, [&] { say(long_line); }), "velmora: " + long_line + "\n");
}

TEST(Say, LetsNoControlThrough) {
    StandardError error;
    say("a\x1b[2Jb\r\nvelmora: forged\xc2\x9b\xe2\x80\xa8\xff");
    EXPECT_EQ(error.text(),
              "velmora: a\\x1b[2Jb\\x0d\\x0avelmora: forged\\xc2\\x9b\\xe2\\x80\\xa8\\xff\n");
}

// Characters and escapes come through whole wherever the blocks of the line end.
TEST(Say, WritesLinesOfAnyLength) {
    for (std::size_t length = PIPE_BUF - 20; length < PIPE_BUF + 20; length++) {
        const std::string plain(length, 'x'), tail = "\u2605\x1b\u2605";
        StandardError error;
        say(plain + tail + plain);
        EXPECT_TRUE(error.text() == "velmora: " + plain + "\u2605\\x1b\u2605" + plain + "\n")
            << length;
    }
}

TEST(Say, WritesALineInOnePiece) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_DIRECT), 0); // in which every write is a packet of its own
    const int before = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    say({"a", "b\n", "c"});
    dup2(before, STDERR_FILENO);
    close(before);
    char packet[100];
    const ssize_t count = read(ends[0], packet, sizeof packet);
    EXPECT_EQ(std::string(packet, std::size_t(count)), "velmora: ab\\x0ac\n");
    close(ends[0]);
    close(ends[1]);
}

// A pipe that does not block, and is read slowly, gets all of it.
TEST(Say, WaitsForASlowReader) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    const std::string line(1000000, 'x');
    std::string got;
    const int before = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    close(ends[1]);
    std::thread reader([&] {
        char block[5000];
        for (ssize_t count; (count = read(ends[0], block, sizeof block)) != 0;)
            if (count > 0)
                got.append(block, std::size_t(count));
    });
    say(line);
    dup2(before, STDERR_FILENO); // the reader comes to the end
    close(before);
    reader.join();
    close(ends[0]);
    EXPECT_TRUE(got == "velmora: " + line + "\n") << got.size();
}

TEST(Failure, IsToldWithoutMemory) {
    const std::string expected = "velmora: failed: out of memory\n";
    int status = -1;
    const auto work = [&] { status = exit_status_of([] { throw std::bad_alloc(); }); };
    EXPECT_EQ(said_without_memory(1, work), expected);
    EXPECT_EQ(status, EXIT_FAILED);
}

// The texts are there already when they are told.
TEST(Failure, IsToldWithItsTextWhenMemoryRunsOutLater) {
    const struct {
        std::exception_ptr thrown;
        const char* said;
        int status;
    } cases[] = {
        {std::make_exception_ptr(WorkFailure("a name that is long", "a reason that is long")),
         "velmora: a name that is long: a reason that is long\n", EXIT_FAILED},
        {std::make_exception_ptr(UsageFailure("a name that is long", "a reason that is long")),
         "velmora: a name that is long: a reason that is long\n", EXIT_USAGE},
        {std::make_exception_ptr(AssertXception("a == b", "file", "function", 7)),
         "velmora: failed: internal check failed: a == b\n", EXIT_FAILED},
        {std::make_exception_ptr(StrXception("file", "function", 7, "write: %s", "No space")),
         "velmora: failed: write: No space\n", EXIT_FAILED},
        {std::make_exception_ptr(std::runtime_error("a text that is longer than 16 characters")),
         "velmora: failed: a text that is longer than 16 characters\n", EXIT_FAILED},
    };
    for (const auto& c : cases) {
        int status = -1;
        const auto work = [&] {
            status = exit_status_of([&] { std::rethrow_exception(c.thrown); });
        };
        EXPECT_EQ(said_without_memory(1, work), c.said);
        EXPECT_EQ(status, c.status) << c.said;
    }
}
