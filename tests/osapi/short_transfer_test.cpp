// SPDX-License-Identifier: BSD-3-Clause

// Reads and writes that move less than they were asked to, at every length, and are interrupted.
#include "osapi/osapi.h"

#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/osapi/place.h"
#include "tests/osapi/system_calls.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <string>
#include <vector>

using OSAPI::fd_t;
using OSAPI::FileDescriptor;

namespace {

typedef std::vector<std::string> Calls;

const std::string bytes = "0123456789abcdefghijk";

// The four that move everything, each from or to offset 3.
struct Transfer {
    const char* call;
    bool writes;
    std::function<sword(fd_t, char*, uword)> move;
};

const Transfer transfers[] = {
    {"read", false,
     [](fd_t fd, char* buf, uword n) {
         ::lseek(fd, 3, SEEK_SET);
         return OSAPI::read(fd, buf, n);
     }},
    {"pread", false, [](fd_t fd, char* buf, uword n) { return OSAPI::pread(fd, buf, n, 3); }},
    {"write", true,
     [](fd_t fd, char* buf, uword n) {
         ::lseek(fd, 3, SEEK_SET);
         return OSAPI::write(fd, buf, n);
     }},
    {"pwrite", true, [](fd_t fd, char* buf, uword n) { return OSAPI::pwrite(fd, buf, n, 3); }},
};

class ShortTransfer : public testing::Test {
protected:
    const ScratchFolder folder;
    const std::string path = folder.write("file", "---" + bytes);
    const fd_t fd = ::open(path.c_str(), O_RDWR);

    ~ShortTransfer() override { ::close(fd); }

    // Moves the first `n` bytes and looks where they came to.
    void expect_moved(const Transfer& transfer, std::size_t n) {
        std::string buffer = transfer.writes ? bytes : std::string(bytes.size(), '#');
        if (transfer.writes)
            folder.write("file", "");
        EXPECT_EQ(transfer.move(fd, &buffer[0], n), sword(n));
        if (transfer.writes)
            EXPECT_EQ(bytes_of(path), std::string(3, '\0') + bytes.substr(0, n));
        else
            EXPECT_EQ(buffer, bytes.substr(0, n) + std::string(bytes.size() - n, '#'));
        folder.write("file", "---" + bytes);
    }
};

TEST_F(ShortTransfer, GoesOnAtEveryLength) {
    for (const Transfer& transfer : transfers)
        for (std::size_t n = 1; n <= bytes.size(); n++)
            for (std::size_t most = 1; most <= n; most++) {
                SystemCalls calls;
                calls.shorten(transfer.call, most);
                expect_moved(transfer, n);
                EXPECT_EQ(calls.count(transfer.call), int((n + most - 1) / most))
                    << transfer.call << ' ' << n << ' ' << most;
            }
}

TEST_F(ShortTransfer, GoesOnWhenItIsInterruptedAnywhere) {
    const int pieces = 7; // of three bytes
    for (const Transfer& transfer : transfers)
        for (int nth = 1; nth <= pieces; nth++)
            for (const int error : {EINTR, EAGAIN}) {
                SystemCalls calls;
                calls.shorten(transfer.call, 3);
                for (int again = 0; again < 3; again++)
                    calls.fail(transfer.call, error, nth + again);
                expect_moved(transfer, bytes.size());
                EXPECT_EQ(calls.count(transfer.call), pieces + 3) << transfer.call << ' ' << nth;
            }
}

TEST_F(ShortTransfer, ThrowsAFailureAnywhere) {
    for (const Transfer& transfer : transfers)
        for (int nth = 1; nth <= 7; nth++) {
            SystemCalls calls;
            calls.shorten(transfer.call, 3);
            calls.fail(transfer.call, EIO, nth);
            std::string buffer = bytes;
            EXPECT_EQ(message_without_place_of([&] { transfer.move(fd, &buffer[0], 21); }),
                      std::string(transfer.writes ? "write" : "read") + ": Input/output error");
            EXPECT_EQ(calls.count(transfer.call), nth);
        }
}

TEST_F(ShortTransfer, EndsAtTheEndOfTheFile) {
    for (const Transfer& transfer : transfers)
        for (std::size_t length = 0; length < bytes.size() && !transfer.writes; length++) {
            folder.write("file", "---" + bytes.substr(0, length));
            SystemCalls calls;
            calls.shorten(transfer.call, 4);
            std::string buffer(bytes.size(), '#');
            EXPECT_EQ(message_without_place_of([&] { transfer.move(fd, &buffer[0], 21); }),
                      "unexpected EOF");
            EXPECT_EQ(buffer.substr(0, length), bytes.substr(0, length))
                << "what was there is read";
        }
}

TEST_F(ShortTransfer, AsksAgainWhenNothingWasWritten) {
    for (const Transfer& transfer : transfers)
        if (transfer.writes) {
            SystemCalls calls;
            for (const int nth : {1, 2, 4})
                calls.answer(transfer.call, nth, 0, 0);
            calls.shorten(transfer.call, 20);
            expect_moved(transfer, bytes.size());
            EXPECT_EQ(calls.count(transfer.call), 5);
        }
}

TEST_F(ShortTransfer, MovesTheOffsetAlong) {
    std::string buffer = bytes;
    SystemCalls calls;
    calls.shorten("pread", 8);
    calls.shorten("pwrite", 8);
    OSAPI::pread(fd, &buffer[0], 21, 3);
    OSAPI::pwrite(fd, &buffer[0], 21, 5000000000);
    EXPECT_EQ(calls.made,
              Calls({"pread(21, 3)", "pread(13, 11)", "pread(5, 19)", "pwrite(21, 5000000000)",
                     "pwrite(13, 5000000008)", "pwrite(5, 5000000016)"}));
}

// The system takes or gives no more than 2 GiB at once; nothing is touched, the calls only get the
// size.
TEST(LongTransfer, CountsBeyond32Bits) {
    char untouched;
    for (const Transfer& transfer : transfers) {
        SystemCalls calls;
        for (const int nth : {1, 2})
            calls.answer(transfer.call, nth, 2147479552, 0);
        calls.answer(transfer.call, 3, 705040897, 0);
        EXPECT_EQ(transfer.move(-1, &untouched, 5000000001), 5000000001);
        const std::string name = transfer.call;
        Calls made;
        for (const std::string& call : calls.made)
            if (call.compare(0, name.size() + 1, name + '(') == 0)
                made.push_back(call.substr(name.size()));
        const bool positioned = name[0] == 'p';
        EXPECT_EQ(made, positioned ? Calls({"(5000000001, 3)", "(2852520449, 2147479555)",
                                            "(705040897, 4294959107)"})
                                   : Calls({"(5000000001)", "(2852520449)", "(705040897)"}))
            << name;
    }
}

TEST(ReadShort, AsksForAndGivesMoreThan32Bits) {
    SystemCalls calls;
    calls.answer("read", 1, 5000000000, 0);
    EXPECT_EQ(OSAPI::read_short(-1, nullptr, 5000000001), 5000000000);
    EXPECT_EQ(calls.made, Calls({"read(5000000001)"}));
}

// ---- read_short ------------------------------------------------------------------------------

TEST_F(ShortTransfer, IsWhatReadShortGives) {
    for (std::size_t most = 1; most <= 5; most++) {
        ::lseek(fd, 3, SEEK_SET);
        SystemCalls calls;
        calls.shorten("read", most);
        char buffer[5];
        EXPECT_EQ(OSAPI::read_short(fd, buffer, 5), sword(most));
        EXPECT_EQ(std::string(buffer, most), bytes.substr(0, most));
        EXPECT_EQ(calls.made, Calls({"read(5)"}));
    }
}

TEST(ReadShort, AsksAgainWhenItIsInterruptedAndNotWhenNothingIsThere) {
    char buffer[5];
    SystemCalls calls;
    calls.fail("read", EINTR, 1);
    calls.fail("read", EINTR, 2);
    calls.answer("read", 3, 2, 0, "ab");
    EXPECT_EQ(OSAPI::read_short(0, buffer, 5), 2);
    EXPECT_EQ(std::string(buffer, 2), "ab");
    calls.fail("read", EINTR, 1);
    calls.fail("read", EAGAIN, 2);
    EXPECT_EQ(OSAPI::read_short(0, buffer, 5), 0);
    EXPECT_EQ(calls.count("read"), 5);
}

// ---- Buffered streams over such files --------------------------------------------------------

TEST_F(ShortTransfer, IsNoEndForWritesThroughABuffer) {
    for (std::size_t most = 1; most <= 8; most++) {
        folder.write("file", "");
        ::lseek(fd, 0, SEEK_SET);
        SystemCalls calls;
        calls.shorten("write", most);
        {
            OSAPI::BufferedFileOutput out(fd, 5, false);
            for (std::size_t at = 0; at < bytes.size(); at += 3)
                out.buffered.write(&bytes[at], 3);
        }
        EXPECT_EQ(bytes_of(path), bytes);
    }
}

TEST_F(ShortTransfer, IsTheEndForReadsThroughABuffer) {
    for (std::size_t most = 1; most < 8; most++) {
        OSAPI::DiskFile file(::open(path.c_str(), O_RDONLY));
        OSAPI::FileInput input(file);
        BufferedInput buffered(input, 8);
        SystemCalls calls;
        calls.shorten("read", most);
        char buffer[20];
        EXPECT_EQ(buffered.read(buffer, 7), int(most));
        EXPECT_EQ(buffered.read(buffer, 7), 0);
    }
}

} // namespace
