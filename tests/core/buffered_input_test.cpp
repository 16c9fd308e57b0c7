// SPDX-License-Identifier: BSD-3-Clause
#include "core/io.h"

#include "tests/core/streams.h"
#include "tests/message_of.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

typedef std::vector<std::string> Calls;

// What one read of `n` bytes gives; its result must be their number.
std::string take(Input& input, int n) {
    std::string bytes(std::size_t(n) + 1, '#');
    const int count = input.read(&bytes[0], n);
    EXPECT_GE(count, 0);
    EXPECT_LE(count, n);
    EXPECT_EQ(bytes.substr(std::size_t(count)), std::string(bytes.size() - std::size_t(count), '#'))
        << "more was written than was given";
    return bytes.substr(0, std::size_t(count));
}

std::string line_of(BufferedInput& input) {
    const String line = input.readline();
    return line.str ? line.str : "";
}

Calls lines_of(const std::string& data, int bufsize) {
    MemoryInput source(data);
    BufferedInput input(source, bufsize);
    Calls lines;
    for (std::string line = line_of(input); !line.empty(); line = line_of(input))
        lines.push_back(line);
    return lines;
}

const char in_unread[] = " in <void BufferedInput::unread(char)> (io:LINE)";

// ---- The interface ---------------------------------------------------------------------------

// The functions follow one another in the table: both destructors, then these.
TEST(Input, HoldsItsFunctionsInOrder) {
    auto* source = new MemoryInput("abc");
    Input* input = source;
    void* const* slots;
    std::memcpy(&slots, static_cast<const void*>(input), sizeof slots);
    typedef s64 (*Curpos)(const Input*);
    typedef int (*Read)(Input*, char*, int);
    typedef s64 (*Seek)(Input*, s64);
    char buffer[8];
    EXPECT_EQ(reinterpret_cast<Read>(slots[3])(input, buffer, 2), 2);
    EXPECT_EQ(reinterpret_cast<Curpos>(slots[2])(input), 2);
    reinterpret_cast<Seek>(slots[4])(input, 7);
    reinterpret_cast<Seek>(slots[5])(input, 9);
    EXPECT_EQ(source->calls, Calls({"read 2", "start 7", "curpos 9"}));
    reinterpret_cast<void (*)(Input*)>(slots[1])(input);
}

TEST(BufferedInput, IsAnInputThatCannotBeCopied) {
    EXPECT_TRUE((std::is_base_of<Input, BufferedInput>::value));
    EXPECT_TRUE(std::is_abstract<Input>::value);
    EXPECT_FALSE(std::is_copy_constructible<BufferedInput>::value);
    EXPECT_FALSE(std::is_copy_assignable<BufferedInput>::value);
    EXPECT_TRUE(std::is_nothrow_destructible<BufferedInput>::value);
}

TEST(BufferedInput, LeavesItsSourceAloneUntilItIsRead) {
    MemoryInput source("abc");
    source.position = 2;
    {
        const BufferedInput input(source, 16);
        EXPECT_EQ(input.curpos(), 0) << "positions count from the source's position at the start";
    }
    EXPECT_EQ(source.calls, Calls());
}

// ---- Reading ---------------------------------------------------------------------------------

TEST(BufferedInput, GivesTheSameBytesForEverySizeOfBufferAndRead) {
    const std::string all = "0123456789abcdefghijk";
    for (int bufsize = 0; bufsize <= 8; bufsize++)
        for (std::size_t length = 0; length <= all.size(); length++)
            for (int step = 1; step <= 12; step++) {
                MemoryInput source(all.substr(0, length));
                BufferedInput input(source, bufsize);
                std::string got;
                for (;;) {
                    const std::string piece = take(input, step);
                    got += piece;
                    EXPECT_EQ(input.curpos(), s64(got.size()));
                    if (int(piece.size()) < step)
                        break;
                }
                EXPECT_EQ(got, source.data) << bufsize << ' ' << step;
            }
}

TEST(BufferedInput, ReadsNothingForNothing) {
    MemoryInput source("abc");
    BufferedInput input(source, 2), unbuffered(source, 0);
    char byte = '#';
    for (int n : {0, -1, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(input.read(&byte, n), 0);
        EXPECT_EQ(unbuffered.read(&byte, n), 0);
    }
    EXPECT_EQ(byte, '#');
    EXPECT_EQ(source.calls, Calls());
}

TEST(BufferedInput, FillsItsWholeBufferForASmallRead) {
    MemoryInput source("0123456789");
    BufferedInput input(source, 4);
    EXPECT_EQ(take(input, 1), "0");
    EXPECT_EQ(take(input, 3), "123");
    EXPECT_EQ(source.calls, Calls({"read 4"}));
    EXPECT_EQ(take(input, 3), "456");
    EXPECT_EQ(take(input, 3), "789"); // one waits, and the rest is short of the buffer
    EXPECT_EQ(source.calls, Calls({"read 4", "read 4", "read 4"}));
}

TEST(BufferedInput, ReadsStraightThroughWhatFillsTheBuffer) {
    MemoryInput source("0123456789");
    BufferedInput input(source, 4);
    EXPECT_EQ(take(input, 4), "0123");
    EXPECT_EQ(take(input, 5), "45678");
    EXPECT_EQ(source.calls, Calls({"read 4", "read 5"}));
}

TEST(BufferedInput, ReadsTheRestStraightThroughAfterWhatWasBuffered) {
    MemoryInput source("0123456789");
    BufferedInput input(source, 4);
    EXPECT_EQ(take(input, 1), "0");
    EXPECT_EQ(take(input, 7), "1234567"); // three buffered, four straight
    EXPECT_EQ(source.calls, Calls({"read 4", "read 4"}));
    EXPECT_EQ(input.curpos(), 8);
}

TEST(BufferedInput, WithoutABufferIsItsSource) {
    MemoryInput source("abcdef");
    source.results = {3, 2, -7};
    BufferedInput input(source, 0);
    EXPECT_EQ(take(input, 5), "abc"); // a short read is no end here
    EXPECT_EQ(take(input, 5), "de");
    char byte;
    EXPECT_EQ(input.read(&byte, 1), -7);
    EXPECT_EQ(input.curpos(), 5 - 7) << "the result is added as it is";
    EXPECT_EQ(source.calls, Calls({"read 5", "read 5", "read 1"}));
}

// ---- The end ---------------------------------------------------------------------------------

TEST(BufferedInput, StaysAtTheEnd) {
    for (int bufsize : {4096, 8, 3}) {
        MemoryInput source("abcde");
        BufferedInput input(source, bufsize);
        EXPECT_EQ(take(input, 10), "abcde");
        source.data += "more";
        const Calls before = source.calls;
        EXPECT_EQ(take(input, 10), "");
        EXPECT_EQ(take(input, 1), "");
        EXPECT_EQ(source.calls, before) << "the source is not asked again";
        EXPECT_EQ(input.seek_from_start(3), 3);
        EXPECT_EQ(take(input, 10), "demore");
    }
}

TEST(BufferedInput, TakesAShortReadForTheEnd) {
    MemoryInput source("abcdefgh");
    source.results = {3};
    BufferedInput input(source, 4);
    EXPECT_EQ(take(input, 2), "ab");
    EXPECT_EQ(take(input, 2), "c");
    EXPECT_EQ(take(input, 2), "");

    MemoryInput direct("abcdefgh");
    direct.results = {3};
    BufferedInput through(direct, 4);
    EXPECT_EQ(take(through, 6), "abc");
    EXPECT_EQ(take(through, 6), "");
}

// ---- Errors beneath --------------------------------------------------------------------------

TEST(BufferedInput, TakesAnErrorWhileFillingForTheEnd) {
    MemoryInput source("abcdefgh");
    source.results = {4, -1};
    BufferedInput input(source, 4);
    EXPECT_EQ(take(input, 2), "ab");
    EXPECT_EQ(take(input, 3), "cd");
    EXPECT_EQ(take(input, 3), "");
    EXPECT_EQ(input.curpos(), 4);
}

TEST(BufferedInput, AddsAnErrorOfADirectReadToWhatItHandedOut) {
    MemoryInput source("abcdefgh");
    source.results = {-3};
    BufferedInput input(source, 4);
    char bytes[16];
    EXPECT_EQ(input.read(bytes, 4), -3);
    EXPECT_EQ(input.curpos(), -3);

    MemoryInput second("abcdefgh");
    second.results = {4, -1};
    BufferedInput behind(second, 4);
    EXPECT_EQ(take(behind, 1), "a");
    EXPECT_EQ(behind.read(bytes, 8), 2); // three bytes and an error of -1
    EXPECT_EQ(std::string(bytes, 3), "bcd");
    EXPECT_EQ(behind.curpos(), 3);
    EXPECT_EQ(take(behind, 8), "") << "an error ends the data";
}

// ---- Pushing back ----------------------------------------------------------------------------

TEST(BufferedInput, GivesAPushedBackByteFirst) {
    for (int n : {1, 2, 4, 6}) {
        MemoryInput source("abcdefgh");
        BufferedInput input(source, 4);
        EXPECT_EQ(take(input, 2), "ab");
        input.unread('X');
        EXPECT_EQ(input.curpos(), 1);
        EXPECT_EQ(take(input, n), std::string("Xcdefgh").substr(0, std::size_t(n)));
        EXPECT_EQ(input.curpos(), 1 + n);
    }
}

TEST(BufferedInput, TakesOneByteBackOnly) {
    MemoryInput source("abc");
    BufferedInput input(source, 4);
    input.unread('x'); // before anything was read, too
    EXPECT_EQ(input.curpos(), -1);
    EXPECT_EQ(message_without_line_of([&] { input.unread('y'); }),
              std::string("can't unread more than 1 byte") + in_unread);
    EXPECT_EQ(input.curpos(), -1);
    EXPECT_EQ(take(input, 1), "x");
    EXPECT_EQ(input.curpos(), 0);
    EXPECT_EQ(source.calls, Calls());
    input.unread('z');
    EXPECT_EQ(take(input, 4), "zabc");
}

TEST(BufferedInput, GivesAPushedBackByteAtTheEndToo) {
    MemoryInput source("ab");
    BufferedInput input(source, 4);
    EXPECT_EQ(take(input, 4), "ab");
    input.unread('b');
    EXPECT_EQ(take(input, 4), "b");
    EXPECT_EQ(take(input, 4), "");
    EXPECT_EQ(input.curpos(), 2);
}

TEST(BufferedInput, TakesEveryByteBackButFF) {
    for (int value = 0; value < 256; value++) {
        const char byte = static_cast<char>(value);
        MemoryInput source(std::string(2, byte));
        BufferedInput input(source, 4);
        EXPECT_EQ(take(input, 1), std::string(1, byte));
        input.unread(byte);
        EXPECT_EQ(input.curpos(), 0) << "the position moves for a lost byte, too";
        EXPECT_EQ(take(input, 4), std::string(value == 0xff ? 1 : 2, byte)) << value;
        EXPECT_EQ(input.curpos(), value == 0xff ? 1 : 2);
    }
}

TEST(BufferedInput, TakesFFBackAgainAndAgain) {
    MemoryInput source("a");
    BufferedInput input(source, 4);
    input.unread('\xff');
    EXPECT_NO_THROW(input.unread('\xff')); // none is there to be in the way
    EXPECT_EQ(input.curpos(), -2);
}

TEST(BufferedInput, WithoutABufferNeverGivesBackWhatWasPushedBack) {
    MemoryInput source("ab");
    BufferedInput input(source, 0);
    EXPECT_EQ(take(input, 1), "a");
    input.unread('a');
    EXPECT_EQ(input.curpos(), 0);
    EXPECT_EQ(take(input, 1), "b");
    EXPECT_EQ(message_without_line_of([&] { input.unread('b'); }),
              std::string("can't unread more than 1 byte") + in_unread);
}

// ---- Lines -----------------------------------------------------------------------------------

TEST(BufferedInput, CutsLinesAtEveryKindOfEnd) {
    const struct {
        std::string data;
        Calls lines;
    } cases[] = {
        {"", {}},
        {"a", {"a"}},
        {"a\nb", {"a\n", "b"}},
        {"a\rb\r", {"a\r", "b\r"}},
        {"a\r\nb", {"a\r\n", "b"}},
        {"a\n\rb", {"a\n\r", "b"}},
        {"a\n\n", {"a\n", "\n"}},
        {"a\r\r\n", {"a\r", "\r\n"}},
        {"\r\n\r\n", {"\r\n", "\r\n"}},
        {"\n\r\n", {"\n\r", "\n"}},
        {"\r\n\r", {"\r\n", "\r"}},
        {"\x80\xfe\n\x7f", {"\x80\xfe\n", "\x7f"}},
    };
    for (const auto& c : cases)
        for (int bufsize : {1, 2, 3, 5, 4096})
            EXPECT_EQ(lines_of(c.data, bufsize), c.lines) << c.data << ' ' << bufsize;
}

TEST(BufferedInput, CutsLinesOfAnyLength) {
    const std::string longest(300000, 'x');
    EXPECT_EQ(lines_of(longest + "\n" + longest, 4096), Calls({longest + "\n", longest}));
}

TEST(BufferedInput, LeavesNULsOutOfLines) {
    EXPECT_EQ(lines_of(std::string("a\0b\0\nc", 6), 4), Calls({"ab\n", "c"}));
}

// Looking for the second half of the end before it pushes the line's first byte back.
TEST(BufferedInput, LosesFFAtTheStartOfALine) {
    EXPECT_EQ(lines_of("\xff"
                       "a\n\xff"
                       "b\xff\nc",
                       4),
              Calls({"\xff"
                     "a\n",
                     "b\xff\n", "c"}));
}

TEST(BufferedInput, KnowsWhereItsLinesStart) {
    MemoryInput source("one\r\ntwo\nthree");
    BufferedInput input(source, 4);
    const s64 starts[] = {0, 5, 9, 14};
    for (s64 start : starts) {
        EXPECT_EQ(input.curpos(), start);
        input.readline();
    }
    EXPECT_EQ(input.curpos(), 14);
}

// Nothing is pushed back when the end of a line is the end of the data.
TEST(BufferedInput, StaysAtTheEndAfterItsLastLine) {
    for (const std::string end : {"\n", "\r", "\r\n", "\n\r"}) {
        MemoryInput source("ab" + end);
        BufferedInput input(source, 16);
        EXPECT_EQ(line_of(input), "ab" + end);
        EXPECT_EQ(input.curpos(), s64(2 + end.size()));
        EXPECT_EQ(take(input, 4), "");
    }
}

// A byte at a time is as much as a buffer of one byte, or none, holds: errors show.
TEST(BufferedInput, ThrowsForAnErrorInALineWhereItSeesOne) {
    for (int bufsize : {0, 1}) {
        MemoryInput source("abc");
        source.results = {1, 1, -1};
        BufferedInput input(source, bufsize);
        EXPECT_EQ(message_without_line_of([&] { input.readline(); }),
                  "read error in <String BufferedInput::readline()> (io:LINE)");
    }
    MemoryInput source("abc");
    source.results = {2, -1};
    BufferedInput input(source, 2);
    EXPECT_EQ(line_of(input), "ab");
}

TEST(BufferedInput, TakesAnErrorAfterALineForItsEnd) {
    MemoryInput source("a\nb");
    source.results = {1, 1, -1};
    BufferedInput input(source, 1);
    EXPECT_EQ(line_of(input), "a\n");
}

TEST(BufferedInput, WithoutABufferLosesTheFirstByteOfTheSecondLine) {
    MemoryInput source("a\nbc\ndef");
    BufferedInput input(source, 0);
    EXPECT_EQ(line_of(input), "a\n");
    EXPECT_EQ(message_without_line_of([&] { input.readline(); }),
              std::string("can't unread more than 1 byte") + in_unread);
}

// ---- Seeking ---------------------------------------------------------------------------------

TEST(BufferedInput, SeeksTheSourceFromItsStart) {
    MemoryInput source("0123456789");
    BufferedInput input(source, 4);
    EXPECT_EQ(take(input, 2), "01");
    EXPECT_EQ(input.seek_from_start(6), 6);
    EXPECT_EQ(input.curpos(), 6);
    EXPECT_EQ(take(input, 2), "67");
    EXPECT_EQ(input.seek_from_curpos(-5), 3);
    EXPECT_EQ(take(input, 2), "34");
    EXPECT_EQ(input.seek_from_curpos(2), 7);
    EXPECT_EQ(take(input, 1), "7");
    EXPECT_EQ(source.calls,
              Calls({"read 4", "start 6", "read 4", "start 3", "read 4", "start 7", "read 4"}));
}

TEST(BufferedInput, KeepsEverythingWhenASeekChangesNothing) {
    MemoryInput source("abcde");
    BufferedInput input(source, 4);
    EXPECT_EQ(take(input, 2), "ab");
    input.unread('X');
    EXPECT_EQ(input.seek_from_start(1), 1);
    EXPECT_EQ(input.seek_from_curpos(0), 1);
    EXPECT_EQ(take(input, 3), "Xcd");
    EXPECT_EQ(source.calls, Calls({"read 4"}));

    EXPECT_EQ(take(input, 9), "e"); // the end is kept, too
    source.data += "more";
    EXPECT_EQ(input.seek_from_start(5), 5);
    EXPECT_EQ(take(input, 4), "");
}

TEST(BufferedInput, ForgetsWhatWasPushedBackWhenItSeeks) {
    MemoryInput source("abcdef");
    BufferedInput input(source, 4);
    EXPECT_EQ(take(input, 2), "ab");
    input.unread('X');
    input.seek_from_start(2); // where it would have been
    EXPECT_EQ(take(input, 2), "cd");
    input.unread('X');
    EXPECT_EQ(input.seek_from_curpos(-1), 2);
    EXPECT_NO_THROW(input.unread('Y'));
    EXPECT_EQ(take(input, 2), "Yc");
}

// What was buffered is gone before the source is asked, and stays gone when that fails.
TEST(BufferedInput, ForgetsBeforeASeekThatFails) {
    class Unseekable : public MemoryInput {
    public:
        using MemoryInput::MemoryInput;
        s64 seek_from_start(s64) override { throw std::runtime_error("no seeking"); }
    };
    const std::function<void(Input&)> seeks[] = {
        [](Input& input) { input.seek_from_start(9); },
        [](Input& input) { input.seek_from_curpos(7); },
    };
    for (const auto& seek : seeks) {
        Unseekable source("abcdef");
        BufferedInput input(source, 4);
        EXPECT_EQ(take(input, 3), "abc");
        input.unread('X');
        EXPECT_THROW(seek(input), std::runtime_error);
        EXPECT_EQ(input.curpos(), 2);
        EXPECT_EQ(take(input, 2), "ef") << "neither X nor the buffered d";

        EXPECT_EQ(take(input, 1), ""); // the end is forgotten, too
        source.data += "g";
        EXPECT_EQ(take(input, 1), "");
        EXPECT_THROW(seek(input), std::runtime_error);
        EXPECT_EQ(take(input, 1), "g");
    }
}

TEST(BufferedInput, TakesItsPositionFromItsSource) {
    class Stuck : public MemoryInput {
    public:
        Stuck() : MemoryInput("abc") {}
        s64 seek_from_start(s64) override { return 42; }
    } source;
    BufferedInput input(source, 4);
    EXPECT_EQ(input.seek_from_start(7), 42);
    EXPECT_EQ(input.curpos(), 42);
    EXPECT_EQ(input.seek_from_curpos(-2), 42);
}

// ---- Stacking --------------------------------------------------------------------------------

TEST(BufferedInput, CanBeStacked) {
    MemoryInput source("one\ntwo\n");
    BufferedInput lower(source, 3);
    BufferedInput upper(lower, 5);
    EXPECT_EQ(line_of(upper), "one\n");
    EXPECT_EQ(upper.seek_from_start(4), 4);
    EXPECT_EQ(line_of(upper), "two\n");
    EXPECT_EQ(line_of(upper), "");
}

// What derives from it reads its lines through its own read.
TEST(BufferedInput, CutsLinesThroughItsOwnRead) {
    class Upper : public BufferedInput {
    public:
        using BufferedInput::BufferedInput;
        int read(char* buf, int n) override {
            const int count = BufferedInput::read(buf, n);
            for (int i = 0; i < count; i++)
                buf[i] = char(std::toupper(buf[i]));
            return count;
        }
    };
    MemoryInput source("one\ntwo");
    Upper input(source, 8);
    EXPECT_EQ(line_of(input), "ONE\n");
    EXPECT_EQ(line_of(input), "TWO");
}

// 2^32 leaves nothing in 32 bits, as a position and as a way.
TEST(BufferedInput, SeeksBeyond32Bits) {
    const s64 wrap = s64(1) << 32;
    MemoryInput source("abcdef");
    BufferedInput input(source, 8);
    EXPECT_EQ(input.seek_from_start(wrap), wrap);
    EXPECT_EQ(input.curpos(), wrap);
    EXPECT_EQ(input.seek_from_curpos(wrap), 2 * wrap);
    EXPECT_EQ(input.seek_from_curpos(-wrap), wrap);
    EXPECT_EQ(input.seek_from_start(0), 0);
    EXPECT_EQ(source.calls, std::vector<std::string>({"start 4294967296", "start 8589934592",
                                                      "start 4294967296", "start 0"}));
}

} // namespace
