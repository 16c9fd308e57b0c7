// SPDX-License-Identifier: BSD-3-Clause
#include "core/io.h"

#include "tests/core/streams.h"
#include "tests/message_of.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

typedef std::vector<std::string> Calls;

int put(Output& output, const std::string& text) {
    return output.write(text.data(), int(text.size()));
}

const char write_error[] = "write error in <void BufferedOutput::flush()> (io:LINE)";

// ---- The interface ---------------------------------------------------------------------------

// The functions follow one another in the table: both destructors, then these.
TEST(Output, HoldsItsFunctionsInOrder) {
    auto* target = new MemoryOutput;
    Output* output = target;
    void* const* slots;
    std::memcpy(&slots, static_cast<const void*>(output), sizeof slots);
    typedef s64 (*Curpos)(const Output*);
    typedef int (*Write)(Output*, const char*, int);
    typedef s64 (*Seek)(Output*, s64);
    EXPECT_EQ(reinterpret_cast<Write>(slots[3])(output, "ab", 2), 2);
    EXPECT_EQ(reinterpret_cast<Curpos>(slots[2])(output), 2);
    reinterpret_cast<Seek>(slots[4])(output, 7);
    reinterpret_cast<Seek>(slots[5])(output, 9);
    EXPECT_EQ(target->calls, Calls({"write ab", "start 7", "curpos 9"}));
    reinterpret_cast<void (*)(Output*)>(slots[1])(output);
}

TEST(BufferedOutput, IsAnOutputThatCannotBeCopied) {
    EXPECT_TRUE((std::is_base_of<Output, BufferedOutput>::value));
    EXPECT_TRUE(std::is_abstract<Output>::value);
    EXPECT_FALSE(std::is_copy_constructible<BufferedOutput>::value);
    EXPECT_FALSE(std::is_copy_assignable<BufferedOutput>::value);
    EXPECT_FALSE(std::is_nothrow_destructible<BufferedOutput>::value);
}

TEST(BufferedOutput, LeavesItsTargetAloneUntilItIsWritten) {
    MemoryOutput target;
    target.position = 5;
    {
        const BufferedOutput output(target, 16);
        EXPECT_EQ(output.curpos(), 0) << "positions count from the target's position at the start";
    }
    EXPECT_EQ(target.calls, Calls());
}

// ---- Writing ---------------------------------------------------------------------------------

TEST(BufferedOutput, WritesTheSameBytesForEverySizeOfBufferAndWrite) {
    const std::string all = "0123456789abcdefghijk";
    for (int bufsize = 0; bufsize <= 8; bufsize++)
        for (std::size_t step = 1; step <= 12; step++)
            for (int most = 1; most <= 3; most++) {
                MemoryOutput target;
                {
                    BufferedOutput output(target, bufsize);
                    for (std::size_t at = 0; at < all.size(); at += step) {
                        const std::string piece = all.substr(at, step);
                        // A target that takes little at a time: flush goes on until all is taken.
                        if (int(piece.size()) <= bufsize)
                            target.results.assign(20, most);
                        else {
                            output.flush();
                            target.results.clear();
                        }
                        EXPECT_EQ(put(output, piece), int(piece.size()));
                        EXPECT_EQ(output.curpos(), s64(at + piece.size()));
                    }
                }
                EXPECT_EQ(target.data, all) << bufsize << ' ' << step << ' ' << most;
            }
}

TEST(BufferedOutput, CollectsWhatFitsAndFlushesWhatDoesNot) {
    MemoryOutput target;
    BufferedOutput output(target, 4);
    EXPECT_EQ(put(output, "ab"), 2);
    EXPECT_EQ(put(output, "cd"), 2); // full, but nothing has asked for room
    EXPECT_EQ(target.calls, Calls());
    EXPECT_EQ(put(output, "e"), 1);
    EXPECT_EQ(target.calls, Calls({"write abcd"}));
    EXPECT_EQ(put(output, "fghi"), 4);
    EXPECT_EQ(target.calls, Calls({"write abcd", "write e"}));
    EXPECT_EQ(put(output, "jklmn"), 5); // larger than the buffer: straight through
    EXPECT_EQ(target.calls, Calls({"write abcd", "write e", "write fghi", "write jklmn"}));
    EXPECT_EQ(output.curpos(), 14);
}

TEST(BufferedOutput, TakesNothingForNothing) {
    MemoryOutput target;
    BufferedOutput output(target, 2);
    EXPECT_EQ(put(output, "ab"), 2);
    EXPECT_EQ(output.write(nullptr, 0), 0);
    EXPECT_EQ(output.write(nullptr, -5), 0);
    EXPECT_EQ(output.curpos(), 2);
    EXPECT_EQ(target.calls, Calls());
}

TEST(BufferedOutput, WithoutABufferIsItsTarget) {
    MemoryOutput target;
    target.results = {2, -7};
    BufferedOutput output(target, 0);
    EXPECT_EQ(put(output, "abc"), 2);
    EXPECT_EQ(output.curpos(), 2);
    EXPECT_EQ(put(output, "c"), -7);
    EXPECT_EQ(output.curpos(), 2 - 7) << "the result is added as it is";
    EXPECT_EQ(put(output, ""), 0);
    EXPECT_NO_THROW(output.flush());
    EXPECT_EQ(target.calls, Calls({"write abc", "write c", "write "}));
}

TEST(BufferedOutput, GivesTheResultOfADirectWriteAsItIs) {
    MemoryOutput target;
    target.results = {2, -1};
    BufferedOutput output(target, 2);
    EXPECT_EQ(put(output, "abc"), 2);
    EXPECT_EQ(put(output, "abc"), -1);
    EXPECT_EQ(output.curpos(), 1);
}

// ---- Flushing --------------------------------------------------------------------------------

TEST(BufferedOutput, FlushesUntilEverythingIsTaken) {
    MemoryOutput target;
    target.results = {2, 0, 0, 1};
    BufferedOutput output(target, 8);
    put(output, "abcde");
    output.flush();
    EXPECT_EQ(target.calls,
              Calls({"write abcde", "write cde", "write cde", "write cde", "write de"}));
    EXPECT_EQ(target.data, "abcde");
    output.flush();
    EXPECT_EQ(target.calls.size(), 5u) << "nothing is left";
    EXPECT_EQ(output.curpos(), 5);
}

TEST(BufferedOutput, KeepsWhatAFailedFlushDidNotWrite) {
    MemoryOutput target;
    target.results = {2, -1};
    BufferedOutput output(target, 8);
    put(output, "abcde");
    EXPECT_EQ(message_without_line_of([&] { output.flush(); }), write_error);
    EXPECT_EQ(target.data, "ab");
    put(output, "f");
    output.flush();
    EXPECT_EQ(target.data, "abcdef");
}

TEST(BufferedOutput, TakesNothingWhenItCannotMakeRoom) {
    MemoryOutput target;
    BufferedOutput output(target, 4);
    put(output, "abc");
    for (const char* more : {"de", "defgh"}) {
        target.results = {-1};
        EXPECT_EQ(message_without_line_of([&] { put(output, more); }), write_error);
        EXPECT_EQ(output.curpos(), 3);
    }
    output.flush();
    EXPECT_EQ(target.data, "abc");
}

// ---- Seeking ---------------------------------------------------------------------------------

TEST(BufferedOutput, FlushesBeforeItSeeksTheTargetFromItsStart) {
    MemoryOutput target;
    BufferedOutput output(target, 8);
    put(output, "abcd");
    EXPECT_EQ(output.seek_from_start(6), 6);
    put(output, "gh");
    EXPECT_EQ(output.seek_from_curpos(-7), 1);
    put(output, "B");
    EXPECT_EQ(output.curpos(), 2);
    output.flush();
    EXPECT_EQ(target.calls, Calls({"write abcd", "start 6", "write gh", "start 1", "write B"}));
    EXPECT_EQ(target.data, "aBcd..gh");
}

// 2^32 leaves nothing in 32 bits, as a position and as a way.
TEST(BufferedOutput, SeeksBeyond32Bits) {
    class Endless : public MemoryOutput {
    public:
        int write(const char*, int n) override { return n; }
    };
    const s64 wrap = s64(1) << 32;
    Endless target;
    BufferedOutput output(target, 8);
    EXPECT_EQ(output.seek_from_start(wrap), wrap);
    put(output, "ab");
    EXPECT_EQ(output.curpos(), wrap + 2);
    EXPECT_EQ(output.seek_from_curpos(wrap), 2 * wrap + 2);
    EXPECT_EQ(output.seek_from_curpos(-wrap - 2), wrap);
    EXPECT_EQ(output.seek_from_start(0), 0);
    EXPECT_EQ(target.calls,
              Calls({"start 4294967296", "start 8589934594", "start 4294967296", "start 0"}));
}

TEST(BufferedOutput, DoesNotFlushWhenASeekChangesNothing) {
    MemoryOutput target;
    BufferedOutput output(target, 8);
    put(output, "abcd");
    EXPECT_EQ(output.seek_from_start(4), 4);
    EXPECT_EQ(output.seek_from_curpos(0), 4);
    EXPECT_EQ(target.calls, Calls());
}

TEST(BufferedOutput, DoesNotSeekWhenItCannotFlush) {
    const std::function<void(Output&)> seeks[] = {
        [](Output& output) { output.seek_from_start(0); },
        [](Output& output) { output.seek_from_curpos(-1); },
    };
    for (const auto& seek : seeks) {
        MemoryOutput target;
        target.results = {-1};
        BufferedOutput output(target, 8);
        put(output, "abcd");
        EXPECT_EQ(message_without_line_of([&] { seek(output); }), write_error);
        EXPECT_EQ(output.curpos(), 4);
        EXPECT_EQ(target.calls, Calls({"write abcd"}));
    }
}

// ---- The destructor --------------------------------------------------------------------------

TEST(BufferedOutput, FlushesWhenItGoes) {
    MemoryOutput target;
    { put(*std::make_unique<BufferedOutput>(target, 8), "abcd"); }
    EXPECT_EQ(target.data, "abcd");
}

// The buffer is freed: the address sanitizer would report it.
TEST(BufferedOutput, ThrowsFromItsDestructorWhenItCannotFlush) {
    MemoryOutput target;
    target.results = {1, -1};
    EXPECT_EQ(message_without_line_of([&] {
                  BufferedOutput output(target, 8);
                  put(output, "abcd");
              }),
              write_error);
    EXPECT_EQ(target.calls, Calls({"write abcd", "write bcd"})) << "it tries once";
}

TEST(BufferedOutput, ThrowsWhateverItsTargetThrows) {
    class Throwing : public MemoryOutput {
    public:
        int write(const char*, int) override { throw std::runtime_error("no more"); }
    } target;
    EXPECT_THROW(
        {
            BufferedOutput output(target, 8);
            put(output, "abcd");
        },
        std::runtime_error);
}

TEST(BufferedOutput, LeavesTheFirstFailureAloneWhenItCannotFlush) {
    MemoryOutput target;
    target.results = {-1};
    try {
        BufferedOutput output(target, 8);
        put(output, "abcd");
        throw std::runtime_error("the first");
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "the first");
    }
    EXPECT_EQ(target.calls, Calls({"write abcd"})) << "it still tries";
}

TEST(BufferedOutput, CanBeStacked) {
    MemoryOutput target;
    {
        BufferedOutput lower(target, 3);
        BufferedOutput upper(lower, 5);
        put(upper, "abcd");
        put(upper, "efg");
        EXPECT_EQ(upper.seek_from_start(1), 1);
        put(upper, "B");
    }
    EXPECT_EQ(target.data, "aBcdefg");
}

} // namespace
