// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/whole_file.h"

#include "core/xception.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace velmora;

static void write_text(OSAPI::fd_t fd, const std::string& text) {
    OSAPI::write(fd, text.data(), text.size());
}

TEST(WholeFile, HoldsWhatWasWritten) {
    const ScratchFolder folder;
    write_whole_file(folder.file("a").c_str(), [](OSAPI::fd_t fd) {
        write_text(fd, "one ");
        write_text(fd, "two");
    });
    EXPECT_EQ(folder.read("a"), "one two");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"a"});
}

TEST(WholeFile, ReplacesTheOneBefore) {
    const ScratchFolder folder;
    folder.write("a", "a long text from before");
    write_whole_file(folder.file("a").c_str(), [](OSAPI::fd_t fd) { write_text(fd, "new"); });
    EXPECT_EQ(folder.read("a"), "new");
}

TEST(WholeFile, DoesNotShowBeforeItIsWhole) {
    const ScratchFolder folder;
    folder.write("a", "old");
    write_whole_file(folder.file("a").c_str(), [&](OSAPI::fd_t fd) {
        write_text(fd, "new");
        EXPECT_EQ(folder.read("a"), "old");
        EXPECT_EQ(folder.names(), (std::vector<std::string>{"a", "a.inprogress"}));
    });
}

TEST(WholeFile, StaysAsItWasWhenTheWriterThrows) {
    const ScratchFolder folder;
    folder.write("a", "old");
    OSAPI::fd_t written = -1;
    EXPECT_THROW(write_whole_file(folder.file("a").c_str(),
                                  [&](OSAPI::fd_t fd) {
                                      written = fd;
                                      write_text(fd, "half");
                                      throw std::runtime_error("no more");
                                  }),
                 std::runtime_error);
    EXPECT_EQ(folder.read("a"), "old");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"a"});
    struct stat status;
    EXPECT_EQ(fstat(written, &status), -1) << "the descriptor is still open";
}

TEST(WholeFile, SaysWhyItCannotBeMade) {
    const ScratchFolder folder;
    try {
        write_whole_file(folder.file("none/a").c_str(), [](OSAPI::fd_t) { FAIL(); });
        FAIL();
    } catch (const StrXception& failure) {
        const std::string message = failure.message.str;
        EXPECT_EQ(message.substr(0, message.find(" in <")), "opening file \"" +
                                                                folder.file("none/a") +
                                                                ".inprogress\": No such file or "
                                                                "directory");
    }
}
