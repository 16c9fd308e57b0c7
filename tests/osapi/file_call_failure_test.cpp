// SPDX-License-Identifier: BSD-3-Clause

// The system calls about files, descriptors and folders made to fail, and the arguments they get.
#include "osapi/osapi.h"

#include "tests/osapi/failing_call.h"
#include "tests/osapi/place.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <glob.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <vector>

using OSAPI::fd_t;
using OSAPI::FileDescriptor;
using OSAPI::OPEN_READ;
using OSAPI::OPEN_WRITE;

namespace {

typedef std::vector<std::string> Calls;

TEST(FileCallFailure, IsReportedInFullAndLeavesNothing) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes"), fresh = folder.file("new");
    const char *const name = path.c_str(), *const other = fresh.c_str();
    const std::string dir = folder.path();
    const char* const here = dir.c_str();
    OSAPI::pollfd polled = {0, POLLIN, 0};
    char bytes[8];
    struct stat status;
    Array<String> listed;
    const FileDescriptor held(some_descriptor());
    expect_reported({
        // By descriptor.
        {"read", 1, EIO, [&] { OSAPI::read(0, bytes, 4); },
         "read: Input/output error" + in("sword OSAPI::read(int, char*, uword)")},
        {"pread", 1, EIO, [&] { OSAPI::pread(0, bytes, 4, 0); },
         "read: Input/output error" + in("sword OSAPI::pread(int, char*, uword, u64)")},
        {"read", 1, ECONNRESET, [&] { OSAPI::read_short(0, bytes, 4); },
         "read: Connection reset by peer" + in("sword OSAPI::read_short(int, char*, uword)")},
        {"pwrite", 1, EDQUOT, [&] { OSAPI::pwrite(0, bytes, 4, 0); },
         "write: Disk quota exceeded" + in("sword OSAPI::pwrite(int, const char*, uword, u64)")},
        {"lseek", 1, EOVERFLOW, [] { OSAPI::lseek(0, 0, SEEK_CUR); },
         "lseek: Value too large for defined data type" + in("s64 OSAPI::lseek(fd_t, s64, int)")},
        {"ftruncate", 1, EINTR, [] { OSAPI::truncate(0, 0); },
         "ftruncate: Interrupted system call" + in("void OSAPI::truncate(fd_t, s64)")},
        {"fdatasync", 1, EIO, [] { OSAPI::datasync(0); },
         "fdatasync: Input/output error" + in("void OSAPI::datasync(fd_t)")},
        {"dup", 1, EMFILE, [] { OSAPI::dup(0); },
         "dup: Too many open files" + in("OSAPI::fd_t OSAPI::dup(fd_t)")},
        {"dup2", 1, EBUSY, [] { OSAPI::dup2(0, 1); },
         "dup2: Device or resource busy" + in("void OSAPI::dup2(fd_t, fd_t)")},
        {"fcntl", 1, EIO, [&] { OSAPI::set_blocking(held.fd, false); },
         "fcntl: Input/output error" + in("void OSAPI::set_blocking(fd_t, bool)")},
        {"fcntl", 2, EPERM, [&] { OSAPI::set_blocking(held.fd, true); },
         "fcntl: Operation not permitted" + in("void OSAPI::set_blocking(fd_t, bool)")},
        {"poll", 1, ENOMEM, [&] { OSAPI::poll(&polled, 1, 0, true); },
         "poll: Cannot allocate memory" + in("int OSAPI::poll(pollfd*, unsigned int, int, bool)")},
        {"ioctl", 1, ENOTTY, [&] { FileDescriptor(some_descriptor()).ioctl(FIONREAD, bytes); },
         "ioctl: Inappropriate ioctl for device" +
             in("int OSAPI::FileDescriptor::ioctl(int, char*)")},
        {"pipe", 1, EMFILE, [] { OSAPI::Pipe().open(); },
         "pipe: Too many open files" + in("void OSAPI::Pipe::open()")},
        {"fstat", 1, EIO, [&] { OSAPI::DiskFile(some_descriptor()).stat(&status); },
         "fstat: Input/output error" + in("void OSAPI::DiskFile::stat(stat*) const")},

        // By path.
        {"stat", 1, EACCES, [=] { OSAPI::getsize(name); },
         "stat: Permission denied" + in("u64 OSAPI::getsize(const char*)")},
        {"stat", 1, EACCES, [=] { OSAPI::get_mtime_ifexist(name); },
         "stat(" + path + "): Permission denied" +
             in("OSAPI::FileTime OSAPI::get_mtime_ifexist(const char*)")},
        {"stat", 1, EIO, [=] { OSAPI::get_mtime(name); },
         "stat(" + path + "): Input/output error" +
             in("OSAPI::FileTime OSAPI::get_mtime_ifexist(const char*)")},
        {"stat", 1, ENOENT, [=] { OSAPI::get_mtime(name); },
         "stat(" + path + "): No such file or directory" +
             in("OSAPI::FileTime OSAPI::get_mtime(const char*)")},
        {"utime", 1, EROFS, [=] { OSAPI::set_mtime(name, 5); },
         "utime(" + path + "): Read-only file system" +
             in("void OSAPI::set_mtime(const char*, FileTime)")},
        {"mkdir", 1, ENOSPC, [=] { OSAPI::mkdir(other); },
         "mkdir(" + fresh + "): No space left on device" + in("void OSAPI::mkdir(const char*)")},
        {"mknod", 1, EPERM, [=] { OSAPI::make_named_pipe(other); },
         "mknod(" + fresh + "): Operation not permitted" +
             in("void OSAPI::make_named_pipe(const char*)")},
        {"unlink", 1, ENOENT, [=] { OSAPI::rm(name); },
         "unlink(" + path + "): No such file or directory" + in("void OSAPI::rm(const char*)")},
        {"unlink", 1, EROFS, [=] { OSAPI::Remover remover(name); },
         "unlink(" + path + "): Read-only file system" + in("void OSAPI::rm_ifexist(const char*)")},

        // Folders.
        {"chdir", 1, EACCES, [=] { OSAPI::chdir(here); },
         "chdir(" + dir + "): Permission denied" + in("void OSAPI::chdir(const char*)")},
        {"getcwd", 1, ENOENT, [] { OSAPI::getcwd(); },
         "getcwd: No such file or directory" + in("String OSAPI::getcwd()")},
        {"getcwd", 1, EACCES, [=] { OSAPI::ScopedChdir scope(here); },
         "getcwd: Permission denied" + in("String OSAPI::getcwd()")},
        {"chdir", 1, EIO, [=] { OSAPI::ScopedChdir scope(here); },
         "chdir(" + dir + "): Input/output error" + in("void OSAPI::chdir(const char*)")},
        {"opendir", 1, EMFILE, [&] { OSAPI::lsdir(here, listed); },
         "opendir(\"" + dir + "\"): Too many open files" +
             in("void OSAPI::lsdir(const char*, Array<String>&)")},
        {"readdir", 1, EIO, [&] { OSAPI::lsdir(here, listed); },
         "readdir(\"" + dir + "\"): Input/output error" +
             in("void OSAPI::lsdir(const char*, Array<String>&)")},
        {"readdir", 3, ESTALE, [&] { OSAPI::lsdir(here, listed); },
         "readdir(\"" + dir + "\"): Stale file handle" +
             in("void OSAPI::lsdir(const char*, Array<String>&)")},
        {"closedir", 1, EIO, [&] { OSAPI::lsdir(here, listed); },
         "closedir(\"" + dir + "\"): Input/output error" +
             in("void OSAPI::lsdir(const char*, Array<String>&)")},

        // Streams of files.
        {"close", 1, EIO,
         [=] { OSAPI::BufferedFileOutput out(OSAPI::open(name, OPEN_WRITE), 8, true); },
         "close: Input/output error" + in("void OSAPI::close(fd_t)")},
    });
    EXPECT_EQ(folder.names(), Calls({"file"}));
}

// ---- What the calls get ----------------------------------------------------------------------

TEST(FileCalls, GetTheseArguments) {
    const struct {
        std::function<void()> action;
        std::string call;
    } cases[] = {
        {[] { OSAPI::mkdir("p"); }, "mkdir(p, 0777)"},
        {[] { OSAPI::make_named_pipe("p"); }, "mknod(p, " +
                                                  [] {
                                                      char mode[20];
                                                      snprintf(mode, sizeof mode, "%#o",
                                                               unsigned(S_IFIFO | 0664));
                                                      return std::string(mode);
                                                  }() +
                                                  ", 0)"},
        {[] { OSAPI::set_mtime("p", 5000000000); }, "utime(p, 5000000000, 5000000000)"},
        {[] { OSAPI::rm("p"); }, "unlink(p)"},
        {[] { OSAPI::chdir("p"); }, "chdir(p)"},
        {[] { OSAPI::truncate(0, 5000000000); }, "ftruncate(5000000000)"},
        {[] { OSAPI::lseek(0, -5000000000, SEEK_END); }, "lseek(-5000000000, 2)"},
        {[] { OSAPI::dup2(3, 4); }, "dup2(3, 4)"},
        {[] { OSAPI::sync(); }, "sync()"},
        {[] { FileDescriptor().ioctl(int(0x80045430u), nullptr); }, "ioctl(0x80045430)"},
        {[] { OSAPI::poll(nullptr, 3, 77, true); }, "poll(3, 77)"},
        {[] { OSAPI::yield(); }, "sched_yield()"},
        {[] { OSAPI::sleep(9); }, "sleep(9)"},
        {[] { OSAPI::pause(); }, "pause()"},
    };
    for (const auto& c : cases) {
        SystemCalls calls;
        calls.answer(c.call.substr(0, c.call.find('(')), 1, 0, 0);
        c.action();
        EXPECT_EQ(calls.made, Calls({c.call}));
    }
}

TEST(FileCalls, AreNotMadeForNothing) {
    SystemCalls calls;
    char byte;
    OSAPI::chdir(".");
    OSAPI::dup2(7, 7);
    OSAPI::read(7, &byte, 0);
    OSAPI::pread(7, &byte, 0, 0);
    OSAPI::write(7, &byte, 0);
    OSAPI::pwrite(7, &byte, 0, 0);
    OSAPI::basename("a/b");
    OSAPI::dirname("a/b");
    OSAPI::extension("a.b");
    OSAPI::DiskFile file;
    OSAPI::FileInput input(file);
    OSAPI::FileOutput output(file);
    input.seek_from_start(0);
    input.seek_from_curpos(0);
    output.seek_from_start(0);
    output.seek_from_curpos(0);
    OSAPI::UNIXServerSocket().close();
    OSAPI::TCPServerSocket().close();
    OSAPI::ChildProcess().stop();
    FileDescriptor().close();
    EXPECT_EQ(calls.made, Calls());
}

// The modes of a descriptor: O_NONBLOCK set, or turned over, and the rest as it was.
TEST(FileCalls, SetBlockingGetsTheseFlags) {
    const struct {
        int before;
        bool blocking;
        int after;
    } cases[] = {
        {O_RDWR, false, O_RDWR | O_NONBLOCK},    {O_RDWR | O_NONBLOCK, false, O_RDWR | O_NONBLOCK},
        {O_RDWR | O_NONBLOCK, true, O_RDWR},     {O_RDWR, true, O_RDWR | O_NONBLOCK},
        {O_APPEND, true, O_APPEND | O_NONBLOCK},
    };
    for (const auto& c : cases) {
        SystemCalls calls;
        calls.answer("fcntl", 1, c.before, 0);
        calls.answer("fcntl", 2, 0, 0);
        OSAPI::set_blocking(5, c.blocking);
        EXPECT_EQ(calls.made, Calls({"fcntl(" + std::to_string(F_GETFL) + ")",
                                     "fcntl(" + std::to_string(F_SETFL) + ", " +
                                         std::to_string(c.after) + ")"}));
    }
}

TEST(FileCalls, PollTakesInterruptionsAsRequested) {
    for (const bool interruptible : {false, true}) {
        SystemCalls calls;
        calls.fail("poll", EINTR, 1);
        calls.fail("poll", EINTR, 2);
        calls.answer("poll", 3, 2, 0);
        EXPECT_EQ(OSAPI::poll(nullptr, 3, 50, interruptible), interruptible ? -1 : 2);
        EXPECT_EQ(calls.made, interruptible ? Calls({"poll(3, 50)"})
                                            : Calls({"poll(3, 50)", "poll(3, 50)", "poll(3, 50)"}))
            << "each time with the whole time";
    }
}

TEST(FileCalls, GetMtimeIfexistForgivesAMissingFileOnly) {
    SystemCalls calls;
    calls.fail("stat", ENOENT);
    EXPECT_EQ(OSAPI::get_mtime_ifexist("p"), 0);
    calls.fail("stat", ENOTDIR);
    EXPECT_THROW(OSAPI::get_mtime_ifexist("p"), StrXception);
}

// ---- Glob ------------------------------------------------------------------------------------

TEST(Glob, ReportsTheSystemsCodeAndNotErrno) {
    for (const int code : {GLOB_NOSPACE, GLOB_ABORTED, 77}) {
        SystemCalls calls;
        calls.answer("glob", 1, code, EIO);
        EXPECT_EQ(message_without_line_of([] { OSAPI::Glob glob("100%d*"); }),
                  "glob(100%d*): " + std::to_string(code) + in("OSAPI::Glob::Glob(const char*)"));
        EXPECT_EQ(calls.made, Calls({"glob(100%d*, 0)"}));
    }
}

// ---- Two failures at once --------------------------------------------------------------------

// In a child, which two exceptions at once would end.
TEST(FileCallFailure, IsTheFirstOneWhenTheCleanUpFailsToo) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes"), dir = folder.path();
    const struct {
        std::vector<const char*> failing;
        std::function<void()> action;
        std::string text;
    } cases[] = {
        {{"unlink"},
         [&] {
             const OSAPI::Remover remover(path.c_str());
             throw StrXception("f", "g", 1, "the first");
         },
         "the first"},
        {{"unlink"},
         [&] {
             OSAPI::UNIXServerSocket server(folder.file("socket").c_str());
             throw StrXception("f", "g", 1, "the first");
         },
         "the first"},
        {{"close"},
         [&] {
             OSAPI::UNIXServerSocket server(folder.file("other").c_str());
             throw StrXception("f", "g", 1, "the first");
         },
         "the first"},
        {{"write", "close"},
         [&] {
             OSAPI::BufferedFileOutput out(OSAPI::open(path.c_str(), OPEN_WRITE), 8, true);
             out.buffered.write("abc", 3);
         },
         "write: Input/output error"},
        {{"write", "close"},
         [&] {
             OSAPI::BufferedFileOutput out(OSAPI::open(path.c_str(), OPEN_WRITE), 8, true);
             out.buffered.write("abc", 3);
             throw StrXception("f", "g", 1, "the first");
         },
         "the first"},
        {{"readdir", "closedir"},
         [&] {
             Array<String> listed;
             OSAPI::lsdir(dir.c_str(), listed);
         },
         "readdir(\"" + dir + "\"): Input/output error"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(status_of_child([&] {
                      const int before = open_descriptors();
                      SystemCalls calls;
                      for (const char* call : c.failing)
                          for (int nth = 1; nth <= 5; nth++)
                              calls.fail(call, EIO, nth);
                      return message_without_place_of(c.action) == c.text &&
                             open_descriptors() == before;
                  }),
                  0)
            << c.failing[0] << ' ' << c.text;
}

// A failed flush is tried once more by the buffered layer's own destructor.
TEST(BufferedFileOutput, TriesTwiceToWriteWhatItHolds) {
    const ScratchFolder folder;
    const std::string path = folder.file("file");
    SystemCalls calls;
    calls.fail("write", EIO, 1);
    EXPECT_EQ(message_without_place_of([&] {
                  OSAPI::BufferedFileOutput out(OSAPI::open(path.c_str(), OPEN_WRITE), 8, false);
                  out.buffered.write("abc", 3);
              }),
              "write: Input/output error");
    EXPECT_EQ(calls.names(), "open fcntl fcntl write write close ");
    EXPECT_EQ(bytes_of(path), "abc");
}

TEST(BufferedFileOutput, FlushesThenCloses) {
    const ScratchFolder folder;
    for (const bool close_when_done : {true, false}) {
        const FileDescriptor owner(OSAPI::open(folder.file("file").c_str(), OPEN_WRITE));
        SystemCalls calls;
        {
            const fd_t fd = close_when_done ? ::dup(owner.fd) : owner.fd;
            OSAPI::BufferedFileOutput out(fd, 8, close_when_done);
            out.buffered.write("abc", 3);
        }
        EXPECT_EQ(calls.names(), close_when_done ? "dup write close " : "write ");
    }
}

} // namespace
