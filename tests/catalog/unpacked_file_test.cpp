// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/unpacked_file.h"
#include "tests/catalog/gzip.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>

namespace velmora {

// All bytes of the file, read `room` at a time, or what is wrong with them.
static std::string read_of(const std::string& path, uword room) {
    std::string bytes, block(room, '#');
    try {
        UnpackedFile file(path);
        while (const uword count = file.read(&block[0], room))
            bytes.append(block, 0, count);
    } catch (const UnpackError& error) {
        return error.what();
    }
    return bytes;
}

TEST(UnpackedFile, GivesTheSameBytesWhateverTheRoom) {
    const ScratchFolder folder;
    const std::string text = "one\ntwo\r\nthree";
    const std::string bytes = text + std::string("\0\x1f\x8b", 3) + text;
    for (const std::string& file :
         {bytes, gzip(bytes), gzip(text) + gzip(bytes.substr(text.size()))})
        for (const uword room : {1, 2, 3, 7, 1000})
            EXPECT_EQ(read_of(folder.write("file", file), room), bytes) << room;
}

TEST(UnpackedFile, IsPlainWithLessThanTheTwoBytesOfGzip) {
    const ScratchFolder folder;
    for (const char* bytes : {"", "\x1f", "x", "\x1f\x8c"})
        EXPECT_EQ(read_of(folder.write("file", bytes), 10), bytes);
}

TEST(UnpackedFile, ReportsWhatIsWrongInGzipData) {
    const ScratchFolder folder;
    const std::string packed = gzip("one\ntwo\n");
    EXPECT_EQ(read_of(folder.write("cut", packed.substr(0, packed.size() - 1)), 10),
              "the gzip data end too early");
    EXPECT_EQ(read_of(folder.write("more", packed + "xyz"), 10), "the gzip data are damaged");
    EXPECT_EQ(read_of(folder.write("zeros", packed + std::string(3, '\0')), 10), "one\ntwo\n");
    EXPECT_EQ(read_of(folder.write("both", packed + std::string(3, '\0') + packed), 10),
              "the gzip data are damaged");
}

} // namespace velmora
