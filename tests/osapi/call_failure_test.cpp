// SPDX-License-Identifier: BSD-3-Clause

// Every system call of the OS layer made to fail: the whole message, and nothing left open or
// mapped.

#include "osapi/osapi.h"

#include "tests/message_of.h"
#include "tests/osapi/failing_call.h"
#include "tests/osapi/files.h"
#include "tests/osapi/system_calls.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using OSAPI::AnonMapping;
using OSAPI::AtomicFileWrite;
using OSAPI::FileDescriptor;
using OSAPI::FileMapping;
using OSAPI::LockMemory;
using OSAPI::OPEN_DIRECT;
using OSAPI::OPEN_EXCL;
using OSAPI::OPEN_READ;
using OSAPI::OPEN_WRITE;

namespace {

typedef std::vector<std::string> Calls;
typedef std::vector<std::string> Names;

const char tail[] = "> (osapi-unix:LINE)";
const std::string in_close_on_exec = std::string(" in <void OSAPI::close_on_exec(fd_t)") + tail;
const std::string in_open = std::string(" in <OSAPI::fd_t OSAPI::open(const char*, int)") + tail;
const std::string in_close = std::string(" in <void OSAPI::close(fd_t)") + tail;
const std::string in_write = std::string(" in <sword OSAPI::write(int, const char*, uword)") + tail;
const std::string in_getsize = std::string(" in <u64 OSAPI::getsize(fd_t)") + tail;
const std::string in_sync = std::string(" in <void OSAPI::sync(fd_t)") + tail;
const std::string in_is_directory =
    std::string(" in <bool OSAPI::is_directory(const char*)") + tail;
const std::string in_rm_ifexist = std::string(" in <void OSAPI::rm_ifexist(const char*)") + tail;
const std::string in_rename =
    std::string(" in <void OSAPI::rename(const char*, const char*)") + tail;
const std::string in_anon = std::string(" in <OSAPI::AnonMapping::AnonMapping(uword, bool)") + tail;
const std::string in_map =
    std::string(" in <void OSAPI::FileMapping::map(OSAPI::fd_t, uword, int)") + tail;
const std::string in_unmap = std::string(" in <OSAPI::MemoryMapping::~MemoryMapping()") + tail;
const std::string in_lock = std::string(" in <OSAPI::LockMemory::LockMemory(void*, uword)") + tail;

// ---- One failing call each -------------------------------------------------------------------

TEST(CallFailure, IsReportedInFullAndLeavesNothing) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes"), to = folder.file("to");
    const std::string temp = folder.file("out.inprogress"), out = folder.file("out");
    const char* const name = path.c_str();
    char memory[16];
    expect_reported({
        {"open", 1, EMFILE, [=] { OSAPI::open(name, OPEN_READ); },
         "opening file \"" + path + "\": Too many open files" + in_open},
        {"open", 1, EINTR, [=] { OSAPI::open(name, OPEN_READ | OPEN_WRITE); },
         "opening file \"" + path + "\": Interrupted system call" + in_open},
        {"fcntl", 1, EIO, [=] { OSAPI::open(name, OPEN_READ); },
         "fcntl: Input/output error" + in_close_on_exec},
        {"fcntl", 2, EPERM, [=] { OSAPI::open(name, OPEN_READ); },
         "fcntl: Operation not permitted" + in_close_on_exec},
        {"fcntl", 2, EPERM, [=] { OSAPI::open_can_fail(name, OPEN_READ); },
         "fcntl: Operation not permitted" + in_close_on_exec},
        {"fcntl", 1, EINVAL, [=] { OSAPI::close_on_exec(0); },
         "fcntl: Invalid argument" + in_close_on_exec},
        {"close", 1, EIO, [=] { OSAPI::close(OSAPI::open(name, OPEN_READ)); },
         "close: Input/output error" + in_close},
        {"close", 1, EIO, [=] { FileDescriptor fd(OSAPI::open(name, OPEN_READ)); },
         "close: Input/output error" + in_close},
        {"write", 1, EFBIG, [=] { OSAPI::write(1, "abc", 3); }, "write: File too large" + in_write},
        {"fstat", 1, EOVERFLOW, [=] { OSAPI::getsize(0); },
         "fstat: Value too large for defined data type" + in_getsize},
        {"fstat", 1, EIO, [=] { OSAPI::get_stamp(0); },
         std::string("fstat: Input/output error in <OSAPI::FileStamp OSAPI::get_stamp(fd_t)") +
             tail},
        {"fsync", 1, EIO, [=] { OSAPI::sync(0); }, "fsync: Input/output error" + in_sync},
        {"stat", 1, EACCES, [=] { OSAPI::is_directory(name); },
         "stat(" + path + "): Permission denied" + in_is_directory},
        {"unlink", 1, EBUSY, [=] { OSAPI::rm_ifexist(name); },
         "unlink(" + path + "): Device or resource busy" + in_rm_ifexist},
        {"rename", 1, EXDEV, [=] { OSAPI::rename(name, to.c_str()); },
         "rename(" + path + "," + to + "): Invalid cross-device link" + in_rename},
        {"mmap", 1, ENOMEM, [=] { AnonMapping mapping(4096, true); },
         "mmap(anonymous): Cannot allocate memory" + in_anon},
        {"mmap", 1, EAGAIN, [=] { FileMapping mapping(0, 4096, OPEN_READ); },
         "mmap(file): Resource temporarily unavailable" + in_map},
        {"mlock", 1, EPERM, [&] { LockMemory lock(memory, sizeof memory); },
         "mlock: Operation not permitted" + in_lock},

        // The steps of mapping a path.
        {"open", 1, ENFILE, [=] { FileMapping mapping(name, OPEN_READ); },
         "opening file \"" + path + "\": Too many open files in system" + in_open},
        {"fcntl", 1, EIO, [=] { FileMapping mapping(name, OPEN_READ); },
         "fcntl: Input/output error" + in_close_on_exec},
        {"fstat", 1, EIO, [=] { FileMapping mapping(name, OPEN_READ); },
         "fstat: Input/output error" + in_getsize},
        {"mmap", 1, ENODEV, [=] { FileMapping mapping(name, OPEN_READ); },
         "mmap(file): No such device" + in_map},
        {"close", 1, EIO, [=] { FileMapping mapping(name, OPEN_READ); },
         "close: Input/output error" + in_close},

        // The steps of an atomic write.
        {"open", 1, EROFS, [=] { AtomicFileWrite file(out.c_str(), OPEN_WRITE); },
         "opening file \"" + temp + "\": Read-only file system" + in_open},
        {"fcntl", 1, EIO,
         [=] {
             const OSAPI::Remover created(temp.c_str());
             AtomicFileWrite file(out.c_str(), OPEN_WRITE);
         },
         "fcntl: Input/output error" + in_close_on_exec},
        {"fcntl", 1, EIO,
         [=] {
             const OSAPI::Remover created(temp.c_str());
             AtomicFileWrite::exclusive(out.c_str());
         },
         "fcntl: Input/output error" + in_close_on_exec},
    });
    EXPECT_EQ(bytes_of(path), "bytes");
}

// ---- Opening ---------------------------------------------------------------------------------

TEST(SystemCall, OpenGetsTheseModes) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    struct {
        int flags, system_flags, mode;
    } const cases[] = {
        {0, O_RDONLY, 0},
        {OPEN_READ, O_RDONLY, 0},
        {OPEN_WRITE, O_WRONLY | O_CREAT | O_TRUNC, 0664},
        {OPEN_READ | OPEN_WRITE, O_RDWR | O_CREAT | O_TRUNC, 0664},
        {OPEN_DIRECT, O_RDONLY | O_DIRECT, 0},
        {OPEN_READ | OPEN_DIRECT, O_RDONLY | O_DIRECT, 0},
        {OPEN_READ | OPEN_EXCL, O_RDONLY | O_EXCL, 0},
        {OPEN_WRITE | OPEN_EXCL, O_WRONLY | O_CREAT | O_TRUNC | O_EXCL, 0664},
        {15, O_RDWR | O_CREAT | O_TRUNC | O_DIRECT | O_EXCL, 0664},
    };
    for (const auto& c : cases) {
        SystemCalls calls;
        calls.fail("open", EACCES);
        EXPECT_EQ(OSAPI::open_can_fail(path.c_str(), c.flags), -1);
        EXPECT_EQ(errno, EACCES);
        char expected[100];
        snprintf(expected, sizeof expected, "open(%#o, %#o)", unsigned(c.system_flags),
                 unsigned(c.mode));
        EXPECT_EQ(calls.made, Calls({expected})) << c.flags;
    }
}

TEST(SystemCall, CloseOnExecKeepsTheOtherFlags) {
    SystemCalls calls;
    calls.answer("fcntl", 1, 0x40, 0); // a flag of some later system
    calls.answer("fcntl", 2, 0, 0);
    OSAPI::close_on_exec(5);
    EXPECT_EQ(calls.made, Calls({"fcntl(" + std::to_string(F_GETFD) + ")",
                                 "fcntl(" + std::to_string(F_SETFD) + ", " +
                                     std::to_string(0x40 | FD_CLOEXEC) + ")"}));
}

TEST(SystemCall, AFailedOpenSetsNothingElse) {
    SystemCalls calls;
    calls.fail("open", ENOENT);
    EXPECT_EQ(OSAPI::open_can_fail("x", OPEN_READ), -1);
    EXPECT_EQ(calls.count("fcntl"), 0);
}

TEST(SystemCall, FileExistsAsksForThesePermissions) {
    struct {
        int flags, mode;
    } const cases[] = {
        {0, F_OK}, {1, R_OK}, {2, W_OK}, {3, R_OK | W_OK}, {4, F_OK}, {8, F_OK}, {15, R_OK | W_OK},
    };
    for (const auto& c : cases) {
        SystemCalls calls;
        calls.answer("access", 1, c.flags % 2 ? 0 : -1, EIO);
        EXPECT_EQ(OSAPI::file_exists("some path", c.flags), c.flags % 2 == 1);
        EXPECT_EQ(calls.made, Calls({"access(some path, " + std::to_string(c.mode) + ")"}));
    }
}

// ---- Writing ---------------------------------------------------------------------------------

TEST(SystemCall, WriteGoesOnUntilEveryByteIsWritten) {
    const ScratchFolder folder;
    const std::string path = folder.file("file");
    const FileDescriptor fd(OSAPI::open(path.c_str(), OPEN_WRITE));
    SystemCalls calls;
    calls.answer("write", 1, -1, EINTR);
    calls.answer("write", 2, -1, EAGAIN);
    calls.answer("write", 3, 2, 0); // says it wrote two, and does not
    calls.answer("write", 4, 0, 0); // wrote none: asked again
    calls.answer("write", 5, -1, EINTR);
    EXPECT_EQ(OSAPI::write(fd.fd, "abcdef", 6), 6);
    EXPECT_EQ(calls.made,
              Calls({"write(6)", "write(6)", "write(6)", "write(4)", "write(4)", "write(4)"}));
    EXPECT_EQ(bytes_of(path), "cdef");
}

TEST(SystemCall, WriteThrowsWhenItFailsInTheMiddle) {
    SystemCalls calls;
    calls.answer("write", 1, 2, 0);
    calls.answer("write", 2, -1, ENOSPC);
    EXPECT_EQ(message_without_line_of([] { OSAPI::write(1, "abcdef", 6); }),
              "write: No space left on device" + in_write);
    EXPECT_EQ(calls.made, Calls({"write(6)", "write(4)"}));
}

// ---- Mapping ---------------------------------------------------------------------------------

TEST(SystemCall, MmapGetsTheseArguments) {
    char expected[100];
    const auto call = [&](uword bytes, int protection, int flags, int fd) {
        snprintf(expected, sizeof expected, "mmap(%lu, %d, %#x, %d, 0)", bytes, protection,
                 unsigned(flags), fd);
        return Calls({expected});
    };
    for (bool shared : {false, true}) {
        SystemCalls calls;
        calls.fail("mmap", ENOMEM);
        EXPECT_THROW(AnonMapping(1234, shared), StrXception);
        EXPECT_EQ(calls.made, call(1234, PROT_READ | PROT_WRITE,
                                   (shared ? MAP_SHARED : MAP_PRIVATE) | MAP_ANONYMOUS, -1));
    }
    for (int flags : {0, 1, 2, 3, 13}) {
        SystemCalls calls;
        calls.fail("mmap", ENOMEM);
        EXPECT_THROW(FileMapping(0, 1234, flags), StrXception);
        EXPECT_EQ(calls.made, call(1234, flags & 3, MAP_SHARED, 0));
    }
}

TEST(SystemCall, MappingAPathTakesTheseSteps) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    Calls made;
    {
        SystemCalls calls;
        {
            const FileMapping mapping(path.c_str(), OPEN_READ);
            EXPECT_EQ(calls.mappings, 1);
        }
        EXPECT_EQ(calls.mappings, 0);
        made = calls.made;
    }
    ASSERT_EQ(made.size(), 7u);
    const char* const names[] = {"open(", "fcntl(", "fcntl(", "fstat(", "mmap(5, ", "close("};
    for (std::size_t i = 0; i < 6; i++)
        EXPECT_EQ(made[i].find(names[i]), 0u) << made[i];
    EXPECT_EQ(made[6], "munmap(5)");
}

TEST(SystemCall, AFailedUnmapThrowsFromTheDestructor) {
    void* data = nullptr;
    {
        SystemCalls calls;
        calls.fail("munmap", ENOMEM);
        EXPECT_EQ(message_without_line_of([&] {
                      AnonMapping mapping(4096, false);
                      data = mapping.data;
                  }),
                  "munmap: Cannot allocate memory" + in_unmap);
        EXPECT_EQ(calls.count("munmap"), 1);
    }
    EXPECT_EQ(munmap(data, 4096), 0);
}

TEST(SystemCall, AMappingThatFailedIsNotUnmapped) {
    SystemCalls calls;
    calls.fail("mmap", ENOMEM);
    EXPECT_THROW(AnonMapping(4096, false), StrXception);
    EXPECT_EQ(calls.count("munmap"), 0);
}

// The temporary descriptor's close fails after the mapping is made: it is released again.
TEST(SystemCall, AMappingWhoseDescriptorCannotBeClosedIsUnmapped) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    SystemCalls calls;
    calls.fail("close", EIO);
    EXPECT_THROW(FileMapping(path.c_str(), OPEN_READ), StrXception);
    EXPECT_EQ(calls.count("munmap"), 1);
    EXPECT_EQ(calls.mappings, 0);
}

// Closing on the way out must not end the program: in a child, which would die of it.
TEST(SystemCall, TheFirstFailureIsReportedWhenClosingFailsToo) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "bytes");
    const struct {
        const char* call;
        int nth;
        std::function<void()> action;
        std::string message;
    } cases[] = {
        {"fcntl", 2, [=] { OSAPI::open(path.c_str(), OPEN_READ); },
         "fcntl: Input/output error" + in_close_on_exec},
        {"fstat", 1, [=] { FileMapping mapping(path.c_str(), OPEN_READ); },
         "fstat: Input/output error" + in_getsize},
        {"mmap", 1, [=] { FileMapping mapping(path.c_str(), OPEN_READ); },
         "mmap(file): Input/output error" + in_map},
    };
    for (const auto& c : cases)
        EXPECT_EQ(status_of_child([&] {
                      SystemCalls calls;
                      calls.fail(c.call, EIO, c.nth);
                      calls.fail("close", EIO);
                      return message_without_line_of(c.action) == c.message;
                  }),
                  0)
            << c.call;
}

// ---- Memory that may be lost -------------------------------------------------------------------

// A mapping of a file of 40 pages that has been cut to `left` bytes since.
struct Mapped {
    const ScratchFolder folder;
    const std::string path;
    const FileMapping mapping;

    explicit Mapped(off_t left)
        : path(folder.write("file", std::string(40 * 4096, 'x'))),
          mapping(path.c_str(), OPEN_READ) {
        EXPECT_EQ(::truncate(path.c_str(), left), 0);
    }
};

TEST(SystemCall, CopyingTakesOne) {
    const Mapped file(40 * 4096);
    std::string copy(8000, '#');
    SystemCalls calls;
    EXPECT_EQ(OSAPI::copy_can_fail(&copy[0], file.mapping.data, 8000), 8000u);
    EXPECT_EQ(calls.made, Calls{"process_vm_readv(8000)"});
}

// A sandbox may refuse the call in any way; a pipe may take any number of bytes at a time.
TEST(SystemCall, CopyingGoesThroughAPipeWhereItIsForbidden) {
    const Mapped whole(40 * 4096), cut(20 * 4096), gone(0);
    const struct {
        const Mapped& file;
        uword copied;
    } cases[] = {{whole, 40 * 4096}, {cut, 20 * 4096}, {gone, 0}};
    for (const int error : {EPERM, ENOSYS, EACCES, ENOMEM})
        for (const auto& c : cases)
            for (const std::size_t most : {std::size_t(1) << 20, std::size_t(1024)}) {
                std::string copy(40 * 4096, '#');
                const int before = open_descriptors();
                SystemCalls calls;
                calls.fail("process_vm_readv", error);
                calls.fail("write", EINTR, 2);
                calls.shorten("write", most);
                calls.shorten("read", 700);
                EXPECT_EQ(OSAPI::copy_can_fail(&copy[0], c.file.mapping.data, copy.size()),
                          c.copied);
                EXPECT_EQ(copy,
                          std::string(c.copied, 'x') + std::string(copy.size() - c.copied, '#'));
                EXPECT_EQ(open_descriptors(), before);
            }
}

TEST(SystemCall, CopyingThroughAPipeThatFailsIsReported) {
    const Mapped file(40 * 4096);
    const std::string in_copy =
        std::string(" in <uword OSAPI::copy_through_pipe(char*, const char*, uword)") + tail;
    const struct {
        const char* call;
        int error;
        std::string message;
    } cases[] = {
        {"pipe", EMFILE,
         std::string("pipe: Too many open files in <void OSAPI::Pipe::open()") + tail},
        {"fcntl", EIO, "fcntl: Input/output error" + in_close_on_exec},
        {"write", EIO, "write: Input/output error" + in_copy},
        {"read", EIO,
         std::string("read: Input/output error in <sword OSAPI::read(int, char*, uword)") + tail},
        {"close", EIO, "close: Input/output error" + in_close},
    };
    for (const auto& c : cases) {
        const int before = open_descriptors();
        char copy[100];
        SystemCalls calls;
        calls.fail("process_vm_readv", EPERM);
        calls.fail(c.call, c.error);
        EXPECT_EQ(message_without_line_of(
                      [&] { OSAPI::copy_can_fail(copy, file.mapping.data, sizeof copy); }),
                  c.message);
        EXPECT_EQ(open_descriptors(), before) << c.call;
    }
}

// ---- Locked memory ---------------------------------------------------------------------------

TEST(LockMemory, LocksItsRangeAndUnlocksItWhenItGoes) {
    alignas(4096) static char memory[4096];
    char range[100];
    snprintf(range, sizeof range, "(%p, 4096)", static_cast<void*>(memory));
    SystemCalls calls;
    calls.answer("mlock", 1, 0, 0);
    calls.answer("munlock", 1, 0, 0);
    {
        const LockMemory lock(memory, 4096);
        EXPECT_EQ(lock.addr, memory);
        EXPECT_EQ(lock.len, 4096u);
        EXPECT_EQ(calls.made, Calls({std::string("mlock") + range}));
    }
    EXPECT_EQ(calls.made, Calls({std::string("mlock") + range, std::string("munlock") + range}));
}

TEST(LockMemory, LocksMoreThan32BitsCount) {
    SystemCalls calls;
    calls.answer("mlock", 1, 0, 0);
    calls.answer("munlock", 1, 0, 0);
    {
        const LockMemory lock(nullptr, 5000000000);
        EXPECT_EQ(lock.len, 5000000000u);
    }
    EXPECT_EQ(calls.made, Calls({"mlock((nil), 5000000000)", "munlock((nil), 5000000000)"}));
}

TEST(LockMemory, IgnoresAFailedUnlock) {
    char memory[16];
    SystemCalls calls;
    calls.answer("mlock", 1, 0, 0);
    calls.fail("munlock", EPERM);
    EXPECT_NO_THROW(LockMemory(memory, sizeof memory));
    EXPECT_EQ(calls.count("munlock"), 1);
}

TEST(LockMemory, ThatFailedUnlocksNothing) {
    char memory[16];
    SystemCalls calls;
    calls.fail("mlock", ENOMEM);
    EXPECT_EQ(message_without_line_of([&] { LockMemory lock(memory, sizeof memory); }),
              "mlock: Cannot allocate memory" + in_lock);
    EXPECT_EQ(calls.count("munlock"), 0);
}

// ---- Atomic writes ---------------------------------------------------------------------------

// What the folder of an atomic write holds when one call of its completion fails.
TEST(SystemCall, AFailedCompletionLeavesTheOldFile) {
    const ScratchFolder folder;
    const std::string path = folder.write("out", "old");
    const struct {
        const char* call;
        int error;
        std::string message;
    } cases[] = {
        {"fsync", EIO, "fsync: Input/output error" + in_sync},
        {"rename", EACCES,
         "rename(" + path + ".inprogress," + path + "): Permission denied" + in_rename},
    };
    for (const auto& c : cases) {
        FileDescriptor owner;
        {
            AtomicFileWrite file(path.c_str(), OPEN_WRITE);
            owner.init(file.fd);
            OSAPI::write(file.fd, "new", 3);
            SystemCalls calls;
            calls.fail(c.call, c.error);
            EXPECT_EQ(message_without_line_of([&] { file.complete(); }), c.message);
            EXPECT_FALSE(file.done);
            EXPECT_EQ(bytes_of(path), "old");
            EXPECT_EQ(bytes_of(path + ".inprogress"), "new");
        }
        EXPECT_EQ(folder.names(), Names({"out"})) << c.call;
        EXPECT_EQ(bytes_of(path), "old");
    }
}

TEST(SystemCall, CompletionSyncsBeforeItRenames) {
    const ScratchFolder folder;
    const std::string path = folder.file("out");
    const std::string renamed = "rename(" + path + ".inprogress, " + path + ")";
    for (bool sync : {true, false}) {
        AtomicFileWrite file(path.c_str(), OPEN_WRITE);
        const FileDescriptor owner(file.fd);
        SystemCalls calls;
        sync ? file.complete() : file.complete_nosync();
        EXPECT_EQ(calls.made, sync ? Calls({"fsync()", renamed}) : Calls({renamed}));
    }
}

TEST(SystemCall, AFailedUnlinkThrowsFromAbortAndFromTheDestructor) {
    const ScratchFolder folder;
    const std::string path = folder.file("out");
    const std::string message =
        "unlink(" + path + ".inprogress): Operation not permitted" + in_rm_ifexist;
    FileDescriptor owner;
    SystemCalls calls;
    calls.fail("unlink", EPERM, 1);
    calls.fail("unlink", EPERM, 2);
    EXPECT_EQ(message_without_line_of([&] {
                  AtomicFileWrite file(path.c_str(), OPEN_WRITE);
                  owner.init(file.fd);
                  EXPECT_EQ(message_without_line_of([&] { file.abort(); }), message);
                  EXPECT_FALSE(file.done);
              }),
              message);
    EXPECT_EQ(calls.count("unlink"), 2);
}

TEST(SystemCall, ExclusiveGivesNullForAnyRefusedOpen) {
    for (int error : {EEXIST, EACCES, EROFS, EMFILE}) {
        SystemCalls calls;
        calls.fail("open", error);
        errno = 0;
        EXPECT_EQ(AtomicFileWrite::exclusive("out"), nullptr);
        EXPECT_EQ(errno, error);
    }
}

} // namespace
