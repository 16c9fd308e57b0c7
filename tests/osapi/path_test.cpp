#include "osapi/osapi.h"

#include "tests/core/observed.h"
#include "tests/osapi/files.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

using OSAPI::OPEN_DIRECT;
using OSAPI::OPEN_EXCL;
using OSAPI::OPEN_READ;
using OSAPI::OPEN_WRITE;

namespace {

const int read_write = OPEN_READ | OPEN_WRITE;

// ---- file_exists -----------------------------------------------------------------------------

TEST(FileExists, FindsFilesAndFolders) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "");
    for (int flags : {0, int(OPEN_READ), int(OPEN_WRITE), read_write}) {
        EXPECT_TRUE(OSAPI::file_exists(file.c_str(), flags)) << flags;
        EXPECT_TRUE(OSAPI::file_exists(folder.path().c_str(), flags)) << flags;
    }
}

TEST(FileExists, IsFalseAndSilentWhateverIsWrong) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "");
    const std::string loop = folder.file("loop"), dangling = folder.file("dangling");
    ASSERT_EQ(symlink("loop", loop.c_str()), 0);
    ASSERT_EQ(symlink("nowhere", dangling.c_str()), 0);
    const std::string paths[] = {folder.file("missing"),
                                 file + "/below",
                                 loop,
                                 dangling,
                                 "",
                                 folder.file(std::string(5000, 'x'))};
    for (const std::string& path : paths)
        for (int flags : {0, int(OPEN_READ), int(OPEN_WRITE), read_write}) {
            bool found = true;
            EXPECT_EQ(stderr_of([&] {
                          EXPECT_NO_THROW(found = OSAPI::file_exists(path.c_str(), flags));
                      }),
                      "");
            EXPECT_FALSE(found) << path << ' ' << flags;
        }
}

TEST(FileExists, AsksForThePermissionsThatTheFlagsName) {
    const ScratchFolder folder;
    struct {
        mode_t mode;
        bool found, readable, writable, both;
    } const cases[] = {
        {0000, true, false, false, false},
        {0444, true, true, false, false},
        {0222, true, false, true, false},
        {0666, true, true, true, true},
    };
    for (const auto& c : cases) {
        const std::string path = folder.write("file" + std::to_string(c.mode), "");
        ASSERT_EQ(chmod(path.c_str(), c.mode), 0);
        EXPECT_TRUE(holds_unprivileged([&] {
            const char* name = path.c_str();
            return OSAPI::file_exists(name, 0) == c.found &&
                   OSAPI::file_exists(name, OPEN_READ) == c.readable &&
                   OSAPI::file_exists(name, OPEN_WRITE) == c.writable &&
                   OSAPI::file_exists(name, read_write) == c.both;
        })) << c.mode;
    }
}

TEST(FileExists, IgnoresTheOtherFlags) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    EXPECT_TRUE(holds_unprivileged([&] {
        const int others = OPEN_DIRECT | OPEN_EXCL;
        return OSAPI::file_exists(path.c_str(), others) &&
               OSAPI::file_exists(path.c_str(), OPEN_READ | others) &&
               !OSAPI::file_exists(path.c_str(), OPEN_WRITE | others);
    }));
}

TEST(FileExists, CreatesNothing) {
    const ScratchFolder folder;
    EXPECT_FALSE(OSAPI::file_exists(folder.file("new").c_str(), OPEN_WRITE));
    EXPECT_TRUE(folder.names().empty());
}

// ---- is_directory ----------------------------------------------------------------------------

TEST(IsDirectory, TellsFoldersFromTheRest) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "");
    const std::string to_folder = folder.file("to_folder"), to_file = folder.file("to_file");
    ASSERT_EQ(symlink(".", to_folder.c_str()), 0);
    ASSERT_EQ(symlink("file", to_file.c_str()), 0);
    EXPECT_TRUE(OSAPI::is_directory(folder.path().c_str()));
    EXPECT_TRUE(OSAPI::is_directory(to_folder.c_str()));
    EXPECT_TRUE(OSAPI::is_directory("/"));
    EXPECT_FALSE(OSAPI::is_directory(file.c_str()));
    EXPECT_FALSE(OSAPI::is_directory(to_file.c_str()));
    EXPECT_FALSE(OSAPI::is_directory("/dev/null"));
}

TEST(IsDirectory, ThrowsForWhatCannotBeAsked) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "");
    const std::string loop = folder.file("loop");
    ASSERT_EQ(symlink("loop", loop.c_str()), 0);
    struct {
        std::string path, reason;
    } const cases[] = {
        {folder.file("missing"), "No such file or directory"},
        {file + "/below", "Not a directory"},
        {loop, "Too many levels of symbolic links"},
        {"", "No such file or directory"},
        {folder.file(std::string(300, '%')), "File name too long"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(message_without_line_of([&] { OSAPI::is_directory(c.path.c_str()); }),
                  "stat(" + c.path + "): " + c.reason +
                      " in <bool OSAPI::is_directory(const char*)> (osapi-unix:LINE)");
}

// ---- rm_ifexist ------------------------------------------------------------------------------

TEST(RmIfexist, RemovesAFile) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "bytes");
    folder.write("other", "");
    OSAPI::rm_ifexist(file.c_str());
    EXPECT_EQ(folder.names(), std::vector<std::string>({"other"}));
}

TEST(RmIfexist, AMissingFileIsSuccess) {
    const ScratchFolder folder;
    EXPECT_NO_THROW(OSAPI::rm_ifexist(folder.file("missing").c_str()));
    EXPECT_NO_THROW(OSAPI::rm_ifexist(folder.file("missing/below").c_str()));
}

TEST(RmIfexist, RemovesALinkAndNotItsTarget) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "bytes"), link = folder.file("link");
    ASSERT_EQ(symlink("file", link.c_str()), 0);
    OSAPI::rm_ifexist(link.c_str());
    EXPECT_FALSE(exists(link));
    EXPECT_EQ(bytes_of(file), "bytes");
}

TEST(RmIfexist, ThrowsForEverythingElse) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", ""), below = folder.folder("below");
    struct {
        std::string path, reason;
    } const cases[] = {
        {below, "Is a directory"},
        {file + "/below", "Not a directory"},
        {folder.file(std::string(300, '%')), "File name too long"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(message_without_line_of([&] { OSAPI::rm_ifexist(c.path.c_str()); }),
                  "unlink(" + c.path + "): " + c.reason +
                      " in <void OSAPI::rm_ifexist(const char*)> (osapi-unix:LINE)");
    EXPECT_TRUE(exists(below));
    EXPECT_TRUE(exists(file));
}

TEST(RmIfexist, ThrowsWhereTheFolderMayNotBeWritten) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "");
    ASSERT_EQ(chmod(folder.path().c_str(), 0555), 0);
    EXPECT_TRUE(holds_unprivileged([&] {
        return message_without_line_of([&] { OSAPI::rm_ifexist(file.c_str()); }) ==
               "unlink(" + file +
                   "): Permission denied in <void OSAPI::rm_ifexist(const char*)> "
                   "(osapi-unix:LINE)";
    }));
    EXPECT_TRUE(exists(file));
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
}

// ---- rename ----------------------------------------------------------------------------------

TEST(Rename, MovesAndReplaces) {
    const ScratchFolder folder;
    const std::string from = folder.write("from", "new"), to = folder.write("to", "old");
    OSAPI::rename(from.c_str(), to.c_str());
    EXPECT_EQ(bytes_of(to), "new");
    EXPECT_EQ(folder.names(), std::vector<std::string>({"to"}));
}

TEST(Rename, ThrowsWithBothNames) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "bytes"), below = folder.folder("below");
    struct {
        std::string from, to, reason;
    } const cases[] = {
        {folder.file("missing"), folder.file("to"), "No such file or directory"},
        {file, folder.file("missing/to"), "No such file or directory"},
        {file, below, "Is a directory"},
        {below, file, "Not a directory"},
        {file, file + "/below", "Not a directory"},
        {folder.file("100%d"), folder.file("%s"), "No such file or directory"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(message_without_line_of([&] { OSAPI::rename(c.from.c_str(), c.to.c_str()); }),
                  "rename(" + c.from + "," + c.to + "): " + c.reason +
                      " in <void OSAPI::rename(const char*, const char*)> (osapi-unix:LINE)");
    EXPECT_EQ(bytes_of(file), "bytes");
    EXPECT_TRUE(exists(below));
}

} // namespace
