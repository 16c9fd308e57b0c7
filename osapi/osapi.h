// The door to the operating system: files, descriptors and mappings.
//
// Errors:    every failing system call throws StrXception with the call's name, its argument where
//            it has one, and strerror(errno). What may fail without throwing says so in its name
//            (…_can_fail, …_ifexist) or below.
// Ownership: objects release what they hold in their destructors and cannot be copied. A destructor
//            whose release fails throws where it is marked so, but for one that runs because of
//            another exception: that one stays the failure to report.
// Threads:   as safe as the system calls beneath; objects are not shared between threads.
#pragma once

#include "core/string.h"
#include "core/types.h"

namespace OSAPI {

// ---- Open modes ------------------------------------------------------------------------------

// A bit set. The two low bits are also the memory protection of a mapping.
enum {
    OPEN_READ = 1,
    OPEN_WRITE = 2,  // creates (mode 0664) and truncates
    OPEN_DIRECT = 4, // adds O_DIRECT
    OPEN_EXCL = 8,   // adds O_EXCL
};

// ---- Descriptors -----------------------------------------------------------------------------

typedef s32 fd_t; // a POSIX descriptor; -1 means none

// Marks `fd` to be closed when another program is started. Throws "fcntl: …".
void close_on_exec(fd_t fd);

// Opens `path`, close-on-exec; -1 with errno set when the system refuses. Throws "fcntl: …" when the
// opened descriptor cannot be marked; a file that was created then stays.
fd_t open_can_fail(const char* path, int flags);

// As open_can_fail, but throws `opening file "path": …`.
fd_t open(const char* path, int flags);

// Throws "close: …".
void close(fd_t fd);

// Writes all `n` bytes, retrying on EINTR and EAGAIN, and returns `n`. Makes a call even for none.
// Throws "write: …".
sword write(int fd, const char* buf, uword n);

// The size in bytes of the open file. Throws "fstat: …".
u64 getsize(fd_t fd);

// Waits until the file's bytes are on the medium. Throws "fsync: …".
void sync(fd_t fd);

// One owned descriptor.
class FileDescriptor {
public:
    fd_t fd; // -1 when closed

    FileDescriptor() : fd(-1) {}
    explicit FileDescriptor(fd_t fd) : fd(fd) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() noexcept(false); // throws as close does

    bool is_open() const { return fd != -1; }

    // Takes `opened` over; asserts "!is_open()".
    void init(fd_t opened);

    // Closes if open; closed afterwards, also when "close: …" is thrown.
    void close();
};

// ---- Paths -----------------------------------------------------------------------------------

// Whether `path` may be read, written (by `flags`) or, with neither, is there. Never throws.
bool file_exists(const char* path, int flags);

// Throws "stat(path): …", for a missing path too.
bool is_directory(const char* path);

// Throws "unlink(path): …" but for a path that is not there.
void rm_ifexist(const char* path);

// Throws "rename(from,to): …".
void rename(const char* from, const char* to);

// ---- Files that appear whole or not at all ---------------------------------------------------

// Writes to `path` + ".inprogress" and renames that over `path` on completion. Never closes `fd`.
class AtomicFileWrite {
public:
    String path;      // the final name
    String temp_path; // where the bytes go until then
    fd_t fd;          // to be closed by the caller
    bool done;        // completed or aborted

    // `flags` are open modes with OPEN_WRITE. Throws `opening file "temp_path": …`.
    AtomicFileWrite(const char* path, int flags);
    AtomicFileWrite(const AtomicFileWrite&) = delete;
    AtomicFileWrite& operator=(const AtomicFileWrite&) = delete;

    // Aborts a write that is not done; may throw as rm_ifexist does.
    ~AtomicFileWrite() noexcept(false);

    // A write of `path`, owned by the caller, or null with errno set when another writer's
    // temporary file is there or it cannot be made.
    static AtomicFileWrite* exclusive(const char* path);

    void complete();        // sync, then complete_nosync
    void complete_nosync(); // renames
    void abort();           // removes the temporary file

private:
    AtomicFileWrite(const char* path, const String& temp_path, fd_t fd);
};

// ---- Memory mappings -------------------------------------------------------------------------

// System page size in bytes.
int get_page_size();

// A mapped range; unmaps it in its destructor, which throws "munmap: …".
class MemoryMapping {
public:
    void* data; // null when nothing is mapped
    uword size; // bytes

    MemoryMapping(const MemoryMapping&) = delete;
    MemoryMapping& operator=(const MemoryMapping&) = delete;
    ~MemoryMapping() noexcept(false);

protected:
    MemoryMapping() : data(nullptr), size(0) {}
};

// Readable and writable memory without a file, shared with child processes or private to this one.
// Throws "mmap(anonymous): …".
class AnonMapping : public MemoryMapping {
public:
    AnonMapping(uword len, bool shared);
};

// The first bytes of a file, shared with it: changes that others make show through. `flags` & 3 is
// the protection. The descriptor may be closed once the mapping stands.
class FileMapping : public MemoryMapping {
public:
    FileMapping(fd_t fd, uword len, int flags);

    // Maps the whole file. Throws as open, getsize, map and close do; an empty file cannot be mapped
    // ("mmap(file): Invalid argument"), and OPEN_WRITE empties it first.
    FileMapping(const char* path, int flags);

    // For an object that maps nothing yet, and that still maps nothing when "mmap(file): …" is thrown.
    void map(fd_t fd, uword len, int flags);
};

// Keeps a range in physical memory while it lives. Throws "mlock: …".
class LockMemory {
public:
    void* addr;
    uword len; // bytes

    LockMemory(void* addr, uword len);
    LockMemory(const LockMemory&) = delete;
    LockMemory& operator=(const LockMemory&) = delete;
    ~LockMemory();
};

static_assert(sizeof(FileDescriptor) == sizeof(fd_t), "a descriptor and nothing else");
static_assert(sizeof(FileMapping) == sizeof(void*) + sizeof(uword), "a range and nothing else");
static_assert(sizeof(LockMemory) == sizeof(void*) + sizeof(uword), "a range and nothing else");

} // namespace OSAPI
