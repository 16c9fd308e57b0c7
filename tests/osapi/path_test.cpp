// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/osapi.h"

#include "tests/core/observed.h"
#include "tests/osapi/child.h"
#include "tests/osapi/files.h"
#include "tests/osapi/place.h"
#include "tests/scratch_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
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

TEST(IsDirectory, DistinguishesFoldersFromTheRest) {
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

// ---- getsize ---------------------------------------------------------------------------------

TEST(GetsizeOfAPath, IsTheSizeInBytes) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes"), link = folder.file("link");
    ASSERT_EQ(symlink("file", link.c_str()), 0);
    EXPECT_EQ(OSAPI::getsize(path.c_str()), 5u);
    EXPECT_EQ(OSAPI::getsize(link.c_str()), 5u);
    ASSERT_EQ(truncate(path.c_str(), 5000000001), 0); // a hole, not bytes
    EXPECT_EQ(OSAPI::getsize(path.c_str()), 5000000001u);
}

TEST(GetsizeOfAPath, DoesNotNameItWhenItThrows) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "");
    const std::string place = in("u64 OSAPI::getsize(const char*)");
    EXPECT_EQ(message_without_line_of([&] { OSAPI::getsize(folder.file("missing").c_str()); }),
              "stat: No such file or directory" + place);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::getsize((file + "/below").c_str()); }),
              "stat: Not a directory" + place);
}

// ---- Times -----------------------------------------------------------------------------------

TEST(Mtime, IsWhatWasSet) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    for (const OSAPI::FileTime time : {1, 1234567890, -5, 2147483647}) {
        OSAPI::set_mtime(path.c_str(), time);
        EXPECT_EQ(OSAPI::get_mtime(path.c_str()), time);
        EXPECT_EQ(OSAPI::get_mtime_ifexist(path.c_str()), time);
        struct stat status;
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_atime, time) << "the time of access is set, too";
    }
    EXPECT_TRUE((std::is_same<OSAPI::FileTime, s64>::value));
}

TEST(Mtime, OfAMissingFileIsZeroOrAFailure) {
    const ScratchFolder folder;
    for (const std::string& path : {folder.file("missing"), folder.file("none/below")}) {
        EXPECT_EQ(OSAPI::get_mtime_ifexist(path.c_str()), 0);
        EXPECT_EQ(message_without_line_of([&] { OSAPI::get_mtime(path.c_str()); }),
                  "stat(" + path + "): No such file or directory" +
                      in("OSAPI::FileTime OSAPI::get_mtime(const char*)"));
    }
}

// A file of 1970 looks like a missing one: the reason is whatever failed last.
TEST(Mtime, OfExactlyZeroIsAFailureWithAStaleReason) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    OSAPI::set_mtime(path.c_str(), 0);
    EXPECT_EQ(OSAPI::get_mtime_ifexist(path.c_str()), 0);
    errno = EDOM;
    EXPECT_EQ(message_without_line_of([&] { OSAPI::get_mtime(path.c_str()); }),
              "stat(" + path + "): Numerical argument out of domain" +
                  in("OSAPI::FileTime OSAPI::get_mtime(const char*)"));
}

TEST(Mtime, ThrowsForEverythingElse) {
    const ScratchFolder folder;
    const std::string below = folder.write("file", "") + "/below";
    const std::string missing = folder.file("missing");
    for (const auto get : {OSAPI::get_mtime, OSAPI::get_mtime_ifexist})
        EXPECT_EQ(message_without_line_of([&] { get(below.c_str()); }),
                  "stat(" + below + "): Not a directory" +
                      in("OSAPI::FileTime OSAPI::get_mtime_ifexist(const char*)"));
    EXPECT_EQ(message_without_line_of([&] { OSAPI::set_mtime(missing.c_str(), 1); }),
              "utime(" + missing + "): No such file or directory" +
                  in("void OSAPI::set_mtime(const char*, FileTime)"));
}

TEST(Mtime, OfAnothersFileMayNotBeSet) {
    EXPECT_TRUE(holds_unprivileged([] {
        return message_without_line_of([] { OSAPI::set_mtime("/dev/null", 1); }) ==
               "utime(/dev/null): Operation not permitted" +
                   in("void OSAPI::set_mtime(const char*, FileTime)");
    }));
}

// ---- mkdir, make_named_pipe ------------------------------------------------------------------

TEST(Mkdir, MakesAFolderWithMode0777LessTheMask) {
    const ScratchFolder folder;
    const std::string path = folder.file("new");
    const mode_t before = umask(027);
    OSAPI::mkdir(path.c_str());
    umask(before);
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(status.st_mode & 0777, mode_t(0750));
}

TEST(Mkdir, ThrowsForWhatIsThereOrCannotBe) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "");
    struct {
        std::string path, reason;
    } const cases[] = {
        {file, "File exists"},
        {folder.path(), "File exists"},
        {folder.file("missing/new"), "No such file or directory"},
        {file + "/new", "Not a directory"},
        {folder.file(std::string(300, '%')), "File name too long"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(message_without_line_of([&] { OSAPI::mkdir(c.path.c_str()); }),
                  "mkdir(" + c.path + "): " + c.reason + in("void OSAPI::mkdir(const char*)"));
}

TEST(MakeNamedPipe, MakesOneWithMode0664LessTheMask) {
    const ScratchFolder folder;
    const std::string path = folder.file("pipe");
    const mode_t before = umask(002);
    OSAPI::make_named_pipe(path.c_str());
    umask(before);
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
    EXPECT_EQ(status.st_mode & 0777, mode_t(0664));
}

TEST(MakeNamedPipe, MakesOneThatProcessesMeetAt) {
    const ScratchFolder folder;
    const std::string path = folder.file("pipe");
    OSAPI::make_named_pipe(path.c_str());
    const Child writer([&] {
        const int fd = ::open(path.c_str(), O_WRONLY);
        return ::write(fd, "through the pipe", 16) == 16 ? 0 : 1;
    });
    const OSAPI::FileDescriptor fd(OSAPI::open(path.c_str(), OPEN_READ));
    char bytes[17] = "";
    EXPECT_EQ(OSAPI::read(fd.fd, bytes, 16), 16);
    EXPECT_STREQ(bytes, "through the pipe");
    EXPECT_EQ(message_without_line_of([&] { OSAPI::read(fd.fd, bytes, 1); }),
              "unexpected EOF" + in("sword OSAPI::read(int, char*, uword)"));
}

TEST(MakeNamedPipe, ThrowsForWhatIsThereOrCannotBe) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", ""), missing = folder.file("missing/pipe");
    const std::string place = in("void OSAPI::make_named_pipe(const char*)");
    EXPECT_EQ(message_without_line_of([&] { OSAPI::make_named_pipe(file.c_str()); }),
              "mknod(" + file + "): File exists" + place);
    EXPECT_EQ(message_without_line_of([&] { OSAPI::make_named_pipe(missing.c_str()); }),
              "mknod(" + missing + "): No such file or directory" + place);
}

// ---- Read-only folders -----------------------------------------------------------------------

TEST(ReadOnlyFolder, RefusesEveryChange) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", ""), fresh = folder.file("new");
    ASSERT_EQ(chmod(folder.path().c_str(), 0555), 0);
    const auto refuses = [&](const std::string& call, void (*change)(const char*),
                             const std::string& path) {
        return message_without_place_of([&] { change(path.c_str()); }) ==
               call + "(" + path + "): Permission denied";
    };
    EXPECT_TRUE(holds_unprivileged([&] { return refuses("mkdir", OSAPI::mkdir, fresh); }));
    EXPECT_TRUE(
        holds_unprivileged([&] { return refuses("mknod", OSAPI::make_named_pipe, fresh); }));
    EXPECT_TRUE(holds_unprivileged([&] { return refuses("unlink", OSAPI::rm, file); }));
    EXPECT_TRUE(holds_unprivileged([&] { return refuses("unlink", OSAPI::rm_ifexist, file); }));
    EXPECT_TRUE(holds_unprivileged([&] {
        return message_without_place_of([&] { OSAPI::rename(file.c_str(), fresh.c_str()); }) ==
               "rename(" + file + "," + fresh + "): Permission denied";
    }));
    EXPECT_TRUE(holds_unprivileged([&] {
        return message_without_place_of([&] {
                   OSAPI::AtomicFileWrite write(file.c_str(), OPEN_WRITE);
               }) == "opening file \"" + file + ".inprogress\": Permission denied";
    }));
    EXPECT_TRUE(holds_unprivileged([&] {
        return message_without_place_of([&] { OSAPI::UNIXServerSocket socket(fresh.c_str()); }) ==
               "bind: Permission denied";
    }));
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    EXPECT_EQ(folder.names(), std::vector<std::string>({"file"}));
}

// ---- rm --------------------------------------------------------------------------------------

TEST(Rm, RemovesAFileThatIsThere) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "bytes"), link = folder.file("link");
    ASSERT_EQ(symlink("file", link.c_str()), 0);
    OSAPI::rm(link.c_str());
    EXPECT_EQ(folder.names(), std::vector<std::string>({"file"}));
    OSAPI::rm(file.c_str());
    EXPECT_TRUE(folder.names().empty());
    EXPECT_EQ(message_without_line_of([&] { OSAPI::rm(file.c_str()); }),
              "unlink(" + file + "): No such file or directory" +
                  in("void OSAPI::rm(const char*)"));
    EXPECT_EQ(message_without_line_of([&] { OSAPI::rm(folder.path().c_str()); }),
              "unlink(" + folder.path() + "): Is a directory" + in("void OSAPI::rm(const char*)"));
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

// ---- Remover ---------------------------------------------------------------------------------

TEST(Remover, HoldsAPathAndNothingElse) {
    EXPECT_EQ(sizeof(OSAPI::Remover), sizeof(String));
    EXPECT_FALSE(std::is_copy_constructible<OSAPI::Remover>::value);
    EXPECT_FALSE(std::is_copy_assignable<OSAPI::Remover>::value);
    EXPECT_FALSE(std::is_nothrow_destructible<OSAPI::Remover>::value);
}

TEST(Remover, RemovesItsFileWhenItGoes) {
    const ScratchFolder folder;
    const std::string one = folder.write("one", ""), two = folder.write("two", "");
    {
        const OSAPI::Remover by_text(one.c_str()), by_string(String(two.c_str()));
        EXPECT_STREQ(by_text.path.str, one.c_str());
        EXPECT_STREQ(by_string.path.str, two.c_str());
        EXPECT_TRUE(exists(one));
    }
    EXPECT_TRUE(folder.names().empty());
}

TEST(Remover, IsSilentWhenNothingIsThere) {
    const ScratchFolder folder;
    EXPECT_NO_THROW(OSAPI::Remover(folder.file("missing").c_str()));
    EXPECT_NO_THROW(OSAPI::Remover(""));
}

TEST(Remover, ThrowsWhatIsInItsWay) {
    const ScratchFolder folder;
    const std::string message =
        "unlink(" + folder.path() + "): Is a directory" + in("void OSAPI::rm_ifexist(const char*)");
    EXPECT_EQ(message_without_line_of([&] { OSAPI::Remover remover(folder.path().c_str()); }),
              message);
}

TEST(Remover, LeavesTheFirstFailureAlone) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "");
    for (const std::string& path : {folder.path(), file})
        EXPECT_THROW(
            {
                const OSAPI::Remover remover(path.c_str());
                throw std::runtime_error("the first");
            },
            std::runtime_error);
    EXPECT_TRUE(folder.names().empty()) << "it still removes";
}

} // namespace
