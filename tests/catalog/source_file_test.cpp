// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/source_file.h"
#include "tests/catalog/failures.h"
#include "tests/catalog/gzip.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

namespace velmora {

static std::vector<std::string> lines_of(const std::string& path) {
    SourceFile file(path);
    std::vector<std::string> lines;
    std::string_view line;
    while (file.next_line(line))
        lines.emplace_back(line);
    return lines;
}

typedef std::vector<std::string> Lines;

TEST(SourceFile, GivesLinesWithoutTheirEnds) {
    const ScratchFolder folder;
    EXPECT_EQ(lines_of(folder.write("a", "one\ntwo\n\nfour\n")), (Lines{"one", "two", "", "four"}));
    EXPECT_EQ(lines_of(folder.write("b", "one\r\ntwo\r\n")), (Lines{"one", "two"}));
}

TEST(SourceFile, TakesALastLineWithoutAnEnd) {
    const ScratchFolder folder;
    EXPECT_EQ(lines_of(folder.write("a", "one\ntwo")), (Lines{"one", "two"}));
    EXPECT_EQ(lines_of(folder.write("b", "one\ntwo\r")), (Lines{"one", "two"}));
}

TEST(SourceFile, KeepsCarriageReturnsInsideALine) {
    const ScratchFolder folder;
    EXPECT_EQ(lines_of(folder.write("a", "o\rne\n")), (Lines{"o\rne"}));
}

TEST(SourceFile, GivesNoLineOfAnEmptyFile) {
    const ScratchFolder folder;
    EXPECT_EQ(lines_of(folder.write("a", "")), Lines());
    EXPECT_EQ(lines_of(folder.write("b", gzip(""))), Lines());
}

TEST(SourceFile, UnpacksGzipWhateverTheName) {
    const ScratchFolder folder;
    EXPECT_EQ(lines_of(folder.write("a.csv", gzip("one\ntwo\n"))), (Lines{"one", "two"}));
    EXPECT_EQ(lines_of(folder.write("b.gz", "one\ntwo\n")), (Lines{"one", "two"}));
}

TEST(SourceFile, UnpacksMembersOneAfterTheOther) {
    const ScratchFolder folder;
    EXPECT_EQ(lines_of(folder.write("a", gzip("one\ntw") + gzip("o\n"))), (Lines{"one", "two"}));
}

TEST(SourceFile, GivesTheSameLinesHoweverTheyFallIntoItsBuffer) {
    const ScratchFolder folder;
    Lines expected;
    std::string text;
    for (int i = 0; i < 20000; i++) {
        expected.push_back(std::to_string(i) + std::string(i % 97, 'x'));
        text += expected.back() + (i % 3 ? "\n" : "\r\n");
    }
    EXPECT_EQ(lines_of(folder.write("a", text)), expected);
    EXPECT_EQ(lines_of(folder.write("b", gzip(text))), expected);
}

TEST(SourceFile, ShowsItsHeadWithoutTakingIt) {
    const ScratchFolder folder;
    SourceFile file(folder.write("a", gzip("one\ntwo\n")));
    EXPECT_EQ(file.head(), "one\ntwo\n");
    EXPECT_EQ(file.head(), "one\ntwo\n");
    std::string_view line;
    ASSERT_TRUE(file.next_line(line));
    EXPECT_EQ(line, "one");
}

TEST(SourceFile, ShowsAHeadOfLimitedLength) {
    const ScratchFolder folder;
    SourceFile file(folder.write("a", std::string(100000, 'x')));
    EXPECT_EQ(file.head(), std::string(4096, 'x'));
}

TEST(SourceFile, ReadsPipes) {
    const ScratchFolder folder;
    const std::string path = folder.file("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::thread writer([&] { folder.write("pipe", gzip("one\ntwo\n")); });
    SourceFile file(path);
    EXPECT_EQ(file.head(), "one\ntwo\n");
    std::string_view line;
    EXPECT_TRUE(file.next_line(line));
    EXPECT_TRUE(file.next_line(line));
    EXPECT_EQ(line, "two");
    EXPECT_FALSE(file.next_line(line));
    writer.join();
}

TEST(SourceFile, TakesLinesUpToTheLongest) {
    const ScratchFolder folder;
    const std::string longest(4096, 'x');
    EXPECT_EQ(lines_of(folder.write("a", longest + "\n")), (Lines{longest}));
    EXPECT_EQ(lines_of(folder.write("b", longest + "\r\n" + longest)), (Lines{longest, longest}));
}

TEST(SourceFile, RefusesLongerLines) {
    const ScratchFolder folder;
    for (const uword length : {4097, 4098, 4099, 65535, 65536, 65537, 1000000}) {
        const std::string path = folder.write("a", "one\n" + std::string(length, 'x') + "\n");
        EXPECT_EQ(catalog_error_of([&] { lines_of(path); }),
                  path + ", line 2: longer than 4096 bytes")
            << length;
    }
    const std::string endless = folder.write("b", gzip(std::string(50000000, '\0')));
    EXPECT_EQ(catalog_error_of([&] { lines_of(endless); }),
              endless + ", line 1: longer than 4096 bytes");
}

TEST(SourceFile, RefusesNulBytes) {
    const ScratchFolder folder;
    const std::string path = folder.write("a", std::string("one\nt\0o\n", 8));
    EXPECT_EQ(catalog_error_of([&] { lines_of(path); }), path + ", line 2: holds a NUL byte");
}

// Whatever is cut off, the trailer of 8 bytes included.
TEST(SourceFile, RefusesGzipDataThatEndTooEarly) {
    const ScratchFolder folder;
    const std::string packed = gzip("one\ntwo\n");
    for (uword length = 2; length < packed.size(); length++) {
        const std::string path = folder.write("a", packed.substr(0, length));
        EXPECT_EQ(catalog_error_of([&] { SourceFile(path).head(); }),
                  path + ": the gzip data end too early")
            << length;
    }
}

TEST(SourceFile, RefusesDamagedGzipData) {
    const ScratchFolder folder;
    std::string packed = gzip("one\ntwo\n");
    packed[packed.size() - 6] ^= 1; // the checksum
    const std::string path = folder.write("a", packed);
    EXPECT_EQ(catalog_error_of([&] { SourceFile(path).head(); }),
              path + ": the gzip data are damaged");
}

// A second member that is cut or spoilt anywhere, its first byte included, is not just left out.
TEST(SourceFile, RefusesFurtherMembersThatAreCutOrDamaged) {
    const ScratchFolder folder;
    const std::string first = gzip("one\n"), second = gzip("two\n");
    for (uword length = 1; length < second.size(); length++) {
        const std::string path = folder.write("a", first + second.substr(0, length));
        EXPECT_EQ(catalog_error_of([&] { SourceFile(path).head(); }),
                  path + ": the gzip data end too early")
            << length;
    }
    for (const std::string& other : {"x" + second.substr(1), second.substr(0, 1) + "x",
                                     std::string("three\n"), std::string("\0x", 2)}) {
        const std::string path = folder.write("a", first + other);
        EXPECT_EQ(catalog_error_of([&] { SourceFile(path).head(); }),
                  path + ": the gzip data are damaged");
    }
}

TEST(SourceFile, LetsZerosFollowGzipData) {
    const ScratchFolder folder;
    for (const uword zeros : {1, 2, 512, 65536, 200000})
        EXPECT_EQ(lines_of(folder.write("a", gzip("one\n") + std::string(zeros, '\0'))),
                  (Lines{"one"}))
            << zeros;
}

TEST(SourceFile, SaysAfterWhichLineGzipDataEnd) {
    const ScratchFolder folder;
    std::string text;
    for (u32 i = 0, noise = 1; i < 100000; i++, noise = noise * 1664525 + 1013904223)
        text += std::to_string(noise) + "\n";
    const std::string packed = gzip(text);
    const std::string path = folder.write("a", packed.substr(0, packed.size() - 1));
    EXPECT_EQ(catalog_error_of([&] { lines_of(path); }),
              path + ": the gzip data end too early after line 100000");
}

TEST(SourceFile, RefusesFoldersAndWhatIsNotThere) {
    const ScratchFolder folder;
    EXPECT_EQ(catalog_error_of([&] { SourceFile file(folder.file("")); }),
              folder.file("") + ": is a directory, not a file");
    const std::string path = folder.file("none");
    EXPECT_EQ(message_without_place_of([&] { SourceFile file(path); }),
              "opening file \"" + path + "\": No such file or directory");
}

// Address 0 of this process's own memory cannot be read.
TEST(SourceFile, ReportsThatTheSystemCannotRead) {
    EXPECT_EQ(catalog_error_of([] { SourceFile("/proc/self/mem").head(); }),
              "/proc/self/mem: reading: Input/output error");
}

} // namespace velmora
