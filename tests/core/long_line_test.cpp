// SPDX-License-Identifier: BSD-3-Clause

// A line of more than 4 GiB. Its bytes are all the same, so the pages that hold them are too: the
// test takes as much memory as the block that is mapped again and again.

#include "core/io.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

extern "C" {
void* __real_realloc(void* block, std::size_t bytes);
void __real_free(void* block);
}

namespace {

const std::size_t gigabyte = std::size_t(1) << 30;
const std::size_t shared_part = 4 * gigabyte, own_part = gigabyte / 64;
const std::size_t piece = gigabyte / 16;

// Where large blocks are while one is in use, else null.
char* large_block = nullptr;

// Memory of which the first 4 GiB are the same pages, and the rest its own.
char* map_large_block() {
    const int pages = memfd_create("pages", 0);
    if (pages == -1 || ftruncate(pages, off_t(piece)) != 0)
        std::abort();
    void* const start = mmap(nullptr, shared_part + own_part, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (start == MAP_FAILED)
        std::abort();
    char* const block = static_cast<char*>(start);
    for (std::size_t at = 0; at < shared_part; at += piece)
        if (mmap(block + at, piece, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, pages, 0) ==
            MAP_FAILED)
            std::abort();
    close(pages);
    return block;
}

// A stream of `length` - 1 times x and a newline.
class OneLine : public BufferedInput {
public:
    OneLine(Input& src, u64 length) : BufferedInput(src, 1), left(length) {}

    int read(char* buf, int) override {
        if (left == 0)
            return 0;
        *buf = --left == 0 ? '\n' : 'x';
        return 1;
    }

private:
    u64 left;
};

class NoInput : public Input {
public:
    s64 curpos() const override { return 0; }
    int read(char*, int) override { return 0; }
    s64 seek_from_start(s64) override { return 0; }
    s64 seek_from_curpos(s64) override { return 0; }
};

} // namespace

extern "C" {

void* __wrap_realloc(void* block, std::size_t bytes) {
    if (block && block == large_block)
        return block;
    if (bytes < gigabyte || large_block)
        return __real_realloc(block, bytes);
    large_block = map_large_block();
    std::memcpy(large_block, block, bytes / 2); // the array doubles
    __real_free(block);
    return large_block;
}

void __wrap_free(void* block) {
    if (!block || block != large_block)
        return __real_free(block);
    munmap(large_block, shared_part + own_part);
    large_block = nullptr;
}
}

TEST(LongLine, OfMoreThan4GigabytesIsReadWhole) {
    const u64 length = shared_part + 3;
    NoInput none;
    OneLine input(none, length);
    const String line = input.readline();
    ASSERT_EQ(line.len(), length);
    EXPECT_EQ(line.str[0], 'x');
    EXPECT_EQ(line.str[length - 1], '\n');
    EXPECT_EQ(input.readline().str, nullptr);
}
