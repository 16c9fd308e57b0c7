// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/osapi.h"

#include "tests/message_of.h"
#include "tests/osapi/files.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

using OSAPI::AtomicFileWrite;
using OSAPI::FileDescriptor;
using OSAPI::OPEN_EXCL;
using OSAPI::OPEN_READ;
using OSAPI::OPEN_WRITE;

namespace {

typedef std::vector<std::string> Names;

void write_text(const AtomicFileWrite& file, const std::string& text) {
    OSAPI::write(file.fd, text.data(), text.size());
}

bool is_open(int fd) {
    return fcntl(fd, F_GETFD) != -1;
}

// ---- The class -------------------------------------------------------------------------------

TEST(AtomicFileWrite, HoldsItsFieldsInOrder) {
    const ScratchFolder folder;
    const std::string path = folder.file("out.bin");
    AtomicFileWrite file(path.c_str(), OPEN_WRITE);
    const FileDescriptor owner(file.fd);
    EXPECT_STREQ(file.path.str, path.c_str());
    EXPECT_STREQ(file.temp_path.str, (path + ".inprogress").c_str());
    EXPECT_NE(file.fd, -1);
    EXPECT_FALSE(file.done);

    const char* base = reinterpret_cast<const char*>(&file);
    EXPECT_EQ(reinterpret_cast<const char*>(&file.path) - base, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&file.temp_path) - base, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&file.fd) - base, 16);
    EXPECT_EQ(reinterpret_cast<const char*>(&file.done) - base, 20);
    EXPECT_FALSE(std::is_polymorphic<AtomicFileWrite>::value);
    EXPECT_FALSE(std::is_copy_constructible<AtomicFileWrite>::value);
    EXPECT_FALSE(std::is_copy_assignable<AtomicFileWrite>::value);
    EXPECT_FALSE(std::is_nothrow_destructible<AtomicFileWrite>::value);
}

TEST(AtomicFileWrite, TakesPercentSignsInNamesAsTheyAre) {
    const ScratchFolder folder;
    AtomicFileWrite file(folder.file("100%d%s").c_str(), OPEN_WRITE);
    const FileDescriptor owner(file.fd);
    EXPECT_EQ(folder.names(), Names({"100%d%s.inprogress"}));
    file.complete();
    EXPECT_EQ(folder.names(), Names({"100%d%s"}));
}

// ---- Writing and completing ------------------------------------------------------------------

TEST(AtomicFileWrite, TheFinalNameAppearsOnCompletion) {
    const ScratchFolder folder;
    const std::string path = folder.file("out");
    for (bool sync : {true, false}) {
        AtomicFileWrite file(path.c_str(), OPEN_WRITE);
        const FileDescriptor owner(file.fd);
        write_text(file, "bytes");
        EXPECT_EQ(folder.names(), Names({"out.inprogress"}));
        sync ? file.complete() : file.complete_nosync();
        EXPECT_TRUE(file.done);
        EXPECT_EQ(folder.names(), Names({"out"}));
        EXPECT_EQ(bytes_of(path), "bytes");
        ASSERT_EQ(unlink(path.c_str()), 0);
    }
}

TEST(AtomicFileWrite, TheOldFileStaysWholeUntilThen) {
    const ScratchFolder folder;
    const std::string path = folder.write("out", "the old bytes");
    AtomicFileWrite file(path.c_str(), OPEN_WRITE);
    const FileDescriptor owner(file.fd);
    write_text(file, "new");
    EXPECT_EQ(bytes_of(path), "the old bytes");
    file.complete();
    EXPECT_EQ(bytes_of(path), "new");
}

TEST(AtomicFileWrite, EmptiesATemporaryFileThatWasLeft) {
    const ScratchFolder folder;
    folder.write("out.inprogress", "left by another");
    AtomicFileWrite file(folder.file("out").c_str(), OPEN_READ | OPEN_WRITE);
    const FileDescriptor owner(file.fd);
    EXPECT_EQ(fcntl(file.fd, F_GETFL) & O_ACCMODE, O_RDWR);
    EXPECT_EQ(OSAPI::getsize(file.fd), 0u);
}

TEST(AtomicFileWrite, MakesItsFileWithMode0664) {
    const ScratchFolder folder;
    const std::string path = folder.file("out");
    const mode_t before = umask(0);
    AtomicFileWrite file(path.c_str(), OPEN_WRITE);
    umask(before);
    const FileDescriptor owner(file.fd);
    file.complete();
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, mode_t(0664));
}

TEST(AtomicFileWrite, NeverClosesItsDescriptor) {
    const ScratchFolder folder;
    const std::string path = folder.file("out");
    const char* const endings[] = {"complete", "complete_nosync", "abort", "destructor"};
    for (const std::string ending : endings) {
        FileDescriptor owner;
        {
            AtomicFileWrite file(path.c_str(), OPEN_WRITE);
            owner.init(file.fd);
            if (ending == "complete")
                file.complete();
            else if (ending == "complete_nosync")
                file.complete_nosync();
            else if (ending == "abort")
                file.abort();
            EXPECT_TRUE(is_open(owner.fd)) << ending;
        }
        EXPECT_TRUE(is_open(owner.fd)) << ending;
    }
}

TEST(AtomicFileWrite, ASecondCompletionFails) {
    const ScratchFolder folder;
    const std::string path = folder.file("out");
    AtomicFileWrite file(path.c_str(), OPEN_WRITE);
    const FileDescriptor owner(file.fd);
    file.complete();
    const std::string message =
        "rename(" + path + ".inprogress," + path +
        "): No such file or directory in <void OSAPI::rename(const char*, const char*)> "
        "(osapi-unix:LINE)";
    EXPECT_EQ(message_without_line_of([&] { file.complete(); }), message);
    EXPECT_EQ(message_without_line_of([&] { file.complete_nosync(); }), message);
    EXPECT_TRUE(exists(path));
}

// ---- Aborting --------------------------------------------------------------------------------

TEST(AtomicFileWrite, AbortRemovesTheTemporaryFileAndLeavesTheOldOne) {
    const ScratchFolder folder;
    const std::string path = folder.write("out", "old");
    AtomicFileWrite file(path.c_str(), OPEN_WRITE);
    const FileDescriptor owner(file.fd);
    write_text(file, "new");
    file.abort();
    EXPECT_TRUE(file.done);
    EXPECT_EQ(folder.names(), Names({"out"}));
    EXPECT_EQ(bytes_of(path), "old");
}

TEST(AtomicFileWrite, ItsDestructorAbortsWhatIsNotDone) {
    const ScratchFolder folder;
    const std::string path = folder.write("out", "old");
    FileDescriptor owner;
    {
        AtomicFileWrite file(path.c_str(), OPEN_WRITE);
        owner.init(file.fd);
        write_text(file, "new");
    }
    EXPECT_EQ(folder.names(), Names({"out"}));
    EXPECT_EQ(bytes_of(path), "old");
}

TEST(AtomicFileWrite, AnExceptionOnTheWayAborts) {
    const ScratchFolder folder;
    FileDescriptor owner;
    EXPECT_THROW(
        {
            AtomicFileWrite file(folder.file("out").c_str(), OPEN_WRITE);
            owner.init(file.fd);
            throw AssertXception("a", "b", "c", 1);
        },
        AssertXception);
    EXPECT_TRUE(folder.names().empty());
}

TEST(AtomicFileWrite, ItsDestructorLeavesTheNextWriterAlone) {
    const ScratchFolder folder;
    const std::string path = folder.file("out");
    FileDescriptor completed_fd, aborted_fd;
    {
        AtomicFileWrite completed(path.c_str(), OPEN_WRITE);
        completed_fd.init(completed.fd);
        completed.complete();
        AtomicFileWrite aborted(path.c_str(), OPEN_WRITE);
        aborted_fd.init(aborted.fd);
        aborted.abort();
        folder.write("out.inprogress", "the next writer's");
    }
    EXPECT_EQ(bytes_of(path + ".inprogress"), "the next writer's");
}

TEST(AtomicFileWrite, AbortIsSilentWhenTheTemporaryFileIsGone) {
    const ScratchFolder folder;
    AtomicFileWrite file(folder.file("out").c_str(), OPEN_WRITE);
    const FileDescriptor owner(file.fd);
    ASSERT_EQ(unlink(file.temp_path.str), 0);
    EXPECT_NO_THROW(file.abort());
    EXPECT_TRUE(file.done);
}

// ---- Failures --------------------------------------------------------------------------------

TEST(AtomicFileWrite, NamesTheTemporaryFileThatCannotBeOpened) {
    const ScratchFolder folder;
    const int before = open_descriptors();
    folder.write("taken.inprogress", "");
    folder.folder("folder.inprogress");
    struct {
        const char* name;
        int flags;
        const char* reason;
    } const cases[] = {
        {"missing/out", OPEN_WRITE, "No such file or directory"},
        {"folder", OPEN_WRITE, "Is a directory"},
        {"taken", OPEN_WRITE | OPEN_EXCL, "File exists"},
    };
    for (const auto& c : cases) {
        const std::string path = folder.file(c.name);
        EXPECT_EQ(message_without_line_of([&] { AtomicFileWrite file(path.c_str(), c.flags); }),
                  "opening file \"" + path + ".inprogress\": " + c.reason +
                      " in <OSAPI::fd_t OSAPI::open(const char*, int)> (osapi-unix:LINE)");
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(folder.names(), Names({"folder.inprogress", "taken.inprogress"}));
}

// An empty name is a name like any other to the message, and "" to the system.
TEST(AtomicFileWrite, NamesAnEmptyFinalNameAsItIs) {
    const ScratchFolder folder;
    EXPECT_EQ(status_of_child([&] {
                  if (chdir(folder.path().c_str()) != 0)
                      return false;
                  AtomicFileWrite file("", OPEN_WRITE);
                  return message_without_line_of([&] { file.complete(); }) ==
                         "rename(.inprogress,): No such file or directory in "
                         "<void OSAPI::rename(const char*, const char*)> (osapi-unix:LINE)";
              }),
              0);
}

TEST(AtomicFileWrite, IsNotDoneWhenItCannotBeRenamed) {
    const ScratchFolder folder;
    const std::string path = folder.folder("out");
    FileDescriptor owner;
    {
        AtomicFileWrite file(path.c_str(), OPEN_WRITE);
        owner.init(file.fd);
        EXPECT_EQ(message_without_line_of([&] { file.complete(); }),
                  "rename(" + path + ".inprogress," + path +
                      "): Is a directory in <void OSAPI::rename(const char*, const char*)> "
                      "(osapi-unix:LINE)");
        EXPECT_FALSE(file.done);
        EXPECT_EQ(folder.names(), Names({"out", "out.inprogress"}));
    }
    EXPECT_EQ(folder.names(), Names({"out"})); // the destructor aborted
}

TEST(AtomicFileWrite, ThrowsWhenTheTemporaryFileCannotBeRemoved) {
    const ScratchFolder folder;
    const std::string path = folder.file("out");
    const std::string message =
        "unlink(" + path +
        ".inprogress): Is a directory in <void OSAPI::rm_ifexist(const char*)> "
        "(osapi-unix:LINE)";
    FileDescriptor owner;
    EXPECT_EQ(message_without_line_of([&] {
                  AtomicFileWrite file(path.c_str(), OPEN_WRITE);
                  owner.init(file.fd);
                  EXPECT_EQ(unlink(file.temp_path.str), 0);
                  EXPECT_EQ(mkdir(file.temp_path.str, 0777), 0);
                  EXPECT_EQ(message_without_line_of([&] { file.abort(); }), message);
                  EXPECT_FALSE(file.done);
              }),
              message); // and again from the destructor
}

// ---- One writer at a time --------------------------------------------------------------------

TEST(AtomicFileWrite, ExclusiveGivesAWriteOfItsOwn) {
    const ScratchFolder folder;
    const std::string path = folder.file("out");
    const std::unique_ptr<AtomicFileWrite> file(AtomicFileWrite::exclusive(path.c_str()));
    ASSERT_NE(file, nullptr);
    const FileDescriptor owner(file->fd);
    EXPECT_STREQ(file->path.str, path.c_str());
    EXPECT_STREQ(file->temp_path.str, (path + ".inprogress").c_str());
    EXPECT_FALSE(file->done);
    EXPECT_EQ(fcntl(file->fd, F_GETFL) & O_ACCMODE, O_WRONLY);
    EXPECT_TRUE(fcntl(file->fd, F_GETFD) & FD_CLOEXEC);
    write_text(*file, "bytes");
    file->complete();
    EXPECT_EQ(bytes_of(path), "bytes");
}

TEST(AtomicFileWrite, ExclusiveRefusesASecondWriterUntilTheFirstIsDone) {
    const ScratchFolder folder;
    const std::string path = folder.file("out");
    const char* const endings[] = {"complete", "abort", "destructor"};
    for (const std::string ending : endings) {
        std::unique_ptr<AtomicFileWrite> first(AtomicFileWrite::exclusive(path.c_str()));
        ASSERT_NE(first, nullptr) << ending;
        const FileDescriptor owner(first->fd);
        errno = 0;
        EXPECT_EQ(AtomicFileWrite::exclusive(path.c_str()), nullptr);
        EXPECT_EQ(errno, EEXIST);
        EXPECT_TRUE(exists(path + ".inprogress")) << ending;
        if (ending == "complete")
            first->complete();
        else if (ending == "abort")
            first->abort();
        else
            first.reset();
        const std::unique_ptr<AtomicFileWrite> second(AtomicFileWrite::exclusive(path.c_str()));
        ASSERT_NE(second, nullptr) << ending;
        OSAPI::close(second->fd);
    }
}

TEST(AtomicFileWrite, ExclusiveLeavesAnyReasonInErrno) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "");
    const int before = open_descriptors();
    errno = 0;
    EXPECT_EQ(AtomicFileWrite::exclusive(folder.file("missing/out").c_str()), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(AtomicFileWrite::exclusive((file + "/out").c_str()), nullptr);
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(AtomicFileWrite, ExclusiveMindsTheTemporaryNameOnly) {
    const ScratchFolder folder;
    const std::string path = folder.write("out", "old");
    const std::unique_ptr<AtomicFileWrite> file(AtomicFileWrite::exclusive(path.c_str()));
    ASSERT_NE(file, nullptr);
    const FileDescriptor owner(file->fd);
    file->complete_nosync();
    EXPECT_EQ(bytes_of(path), "");
}

} // namespace
