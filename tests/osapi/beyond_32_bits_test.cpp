// SPDX-License-Identifier: BSD-3-Clause

// Sizes, positions and times that take more than 32 bits, on sparse files and reserved memory. Each
// differs from what is left of it in 32 bits.
#include "osapi/osapi.h"

#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

using OSAPI::DiskFile;
using OSAPI::FileInput;
using OSAPI::FileOutput;
using OSAPI::OPEN_READ;

namespace {

const s64 far = 5000000000;
const s64 wrap = s64(1) << 32; // nothing of it is left in 32 bits

// A file of `far` zeros and the text "end".
class SparseFile : public testing::Test {
protected:
    const ScratchFolder folder;
    const std::string path = folder.write("file", "start");
    DiskFile file{::open(path.c_str(), O_RDWR)};

    SparseFile() { EXPECT_EQ(::pwrite(file.fd, "end", 3, far), 3); }
    ~SparseFile() noexcept override {}

    std::string bytes_at(s64 position, std::size_t n) {
        std::string bytes(n, '#');
        bytes.resize(std::size_t(::pread(file.fd, &bytes[0], n, position)));
        return bytes;
    }
};

typedef SparseFile Beyond32Bits;

TEST_F(Beyond32Bits, SizesAreWhole) {
    EXPECT_EQ(OSAPI::getsize(file.fd), u64(far + 3));
    EXPECT_EQ(OSAPI::getsize(path.c_str()), u64(far + 3));
}

TEST_F(Beyond32Bits, InputsReadAndSeek) {
    FileInput input(file);
    char bytes[8] = "#######";
    EXPECT_EQ(input.seek_from_start(far), far);
    EXPECT_EQ(input.read(bytes, 2), 2);
    EXPECT_EQ(input.curpos(), far + 2);
    EXPECT_EQ(input.seek_from_curpos(-far), 2);
    EXPECT_EQ(input.read(bytes + 2, 3), 3);
    EXPECT_EQ(input.seek_from_curpos(wrap), wrap + 5) << "a way of which 32 bits see nothing";
    EXPECT_EQ(input.seek_from_start(5), 5) << "a place that looks the same in 32 bits";
    EXPECT_EQ(input.seek_from_curpos(far - 5), far);
    EXPECT_EQ(input.read(bytes + 5, 2), 2);
    EXPECT_STREQ(bytes, "enarten");
}

TEST_F(Beyond32Bits, OutputsWriteAndSeek) {
    FileOutput output(file);
    EXPECT_EQ(output.seek_from_start(far), far);
    EXPECT_EQ(output.write("E", 1), 1);
    EXPECT_EQ(output.curpos(), far + 1);
    EXPECT_EQ(output.seek_from_curpos(-far), 1);
    EXPECT_EQ(output.write("T", 1), 1);
    EXPECT_EQ(output.seek_from_curpos(wrap), wrap + 2) << "a way of which 32 bits see nothing";
    EXPECT_EQ(output.write("w", 1), 1);
    EXPECT_EQ(output.seek_from_start(3), 3) << "a place that looks the same in 32 bits";
    EXPECT_EQ(output.write("R", 1), 1);
    EXPECT_EQ(output.seek_from_curpos(far), far + 4);
    EXPECT_EQ(output.write("!", 1), 1);
    EXPECT_EQ(bytes_at(0, 5), "sTaRt");
    EXPECT_EQ(bytes_at(wrap + 1, 3), std::string("\0w\0", 3));
    EXPECT_EQ(bytes_at(far, 8), std::string("End\0!", 5));
}

// The system's position decides, also when it is not where the stream believes to be.
TEST_F(Beyond32Bits, OutputsSeekFromWhereTheDescriptorIs) {
    FileOutput output(file);
    ASSERT_EQ(::lseek(file.fd, far, SEEK_SET), far);
    EXPECT_EQ(output.seek_from_curpos(-2), far - 2);
    EXPECT_EQ(output.curpos(), far - 2);
}

TEST_F(Beyond32Bits, MappingsAreWhole) {
    const u64 mapped_before = OSAPI::getsize(file.fd);
    {
        const OSAPI::FileMapping mapping(path.c_str(), OPEN_READ);
        EXPECT_EQ(mapping.size, mapped_before);
        EXPECT_EQ(std::string(static_cast<const char*>(mapping.data) + far, 3), "end");
    }
    const OSAPI::FileMapping part(file.fd, uword(far + 1), OPEN_READ);
    EXPECT_EQ(part.size, uword(far + 1));
    EXPECT_EQ(static_cast<const char*>(part.data)[far], 'e');
}

// How much address space this process uses, in pages.
long pages_used() {
    long pages = 0;
    FILE* const statm = fopen("/proc/self/statm", "r");
    if (statm && fscanf(statm, "%ld", &pages) != 1)
        pages = -1;
    if (statm)
        fclose(statm);
    return pages;
}

TEST_F(Beyond32Bits, MappingsGoWhole) {
    const long before = pages_used(), far_pages = far / OSAPI::get_page_size();
    {
        const OSAPI::FileMapping mapping(path.c_str(), OPEN_READ);
        EXPECT_GE(pages_used(), before + far_pages);
    }
    EXPECT_LT(pages_used(), before + far_pages / 10);
}

TEST(AnonMapping, IsWholeBeyond32Bits) {
    const OSAPI::AnonMapping mapping(uword(far), false);
    EXPECT_EQ(mapping.size, uword(far));
    static_cast<char*>(mapping.data)[far - 1] = 'x';
    EXPECT_EQ(static_cast<const char*>(mapping.data)[far - 1], 'x');
}

TEST(Mtime, IsWholeAfter2038) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "");
    for (const OSAPI::FileTime time : {s64(2147483648), wrap + 7, far}) { // 2038, 2106, 2128
        OSAPI::set_mtime(path.c_str(), time);
        EXPECT_EQ(OSAPI::get_mtime(path.c_str()), time);
        EXPECT_EQ(OSAPI::get_mtime_ifexist(path.c_str()), time);
        EXPECT_EQ(DiskFile(OSAPI::open(path.c_str(), OPEN_READ)).get_mtime(), time);
    }
    OSAPI::set_mtime(path.c_str(), wrap);
    EXPECT_EQ(OSAPI::get_mtime(path.c_str()), wrap) << "no missing file, whose time is 0";
}

} // namespace
