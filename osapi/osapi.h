// SPDX-License-Identifier: BSD-3-Clause

// The door to the operating system.
//
//     Types                              OSAPI_pid_t, fd_t, FileTime, pollfd
//     Open modes                         OPEN_READ, OPEN_WRITE, OPEN_DIRECT, OPEN_EXCL, OPEN_NOWAIT
//     Failures                           error_text
//     Names of paths                     basename, dirname, extension
//     Time                               Date, microsecs, sleep, pause, yield, get_date
//     Descriptors                        open, close, dup, read, write, lseek, sync, poll, …,
//                                        FileDescriptor, Pipe
//     Files and folders by path          file_exists, mkdir, get_mtime, rm, rename, get_stamp, …,
//                                        FileStamp, Remover
//     The working directory, listings    chdir, getcwd, ScopedChdir, lsdir, Glob
//     Open files and streams over them   DiskFile, FileInput, FileOutput, BufferedFileOutput
//     Files that appear whole            AtomicFileWrite
//     Memory mappings                    get_page_size, MemoryMapping, AnonMapping, FileMapping,
//                                        copy_can_fail, LockMemory, gather_into_large_pages
//     Processes                          getpid, fork, exit, exec, kill, wait_until_dead, …,
//                                        ChildEnd, running_as_root, stdin_is_console, …,
//                                        ChildProcess
//     Signals                            Signal, SignalIgnore, SignalDefault, SignalHandler
//     Sockets                            gethostname, connect_tcp, UNIXServerSocket,
//                                        TCPServerSocket
//     Diagnostics and stdio              Profiler, print_statistics, ScopedFILE
//
// Errors:    every failing system call throws StrXception with the call's name, its argument where
//            it has one, and error_text(errno). What may fail without throwing says so in its name
//            (…_can_fail, …_ifexist, a leading underscore) or below.
// Ownership: objects release what they hold in their destructors and cannot be copied. A destructor
//            marked noexcept(false) throws when the release fails, except during unwinding: the
//            exception that is propagating stays the failure to report.
// Threads:   as safe as the system calls themselves, except for what is kept for the whole process
//            and says so; objects are not shared between threads.
// Source:    one per noun. This header exceeds the usual length so that the whole layer is declared
//            in one place.
#pragma once

#include "core/array.h"
#include "core/io.h"
#include "core/string.h"
#include "core/types.h"

#include <cstdio>
#include <sys/time.h>

// Declared by the system's own headers, <poll.h>, <csignal> and <sys/stat.h>.
struct pollfd;
struct sigaction;
struct stat;

typedef s32 OSAPI_pid_t; // a process

namespace OSAPI {

// ---- Types -----------------------------------------------------------------------------------

using ::OSAPI_pid_t;
using ::pollfd;

typedef s32 fd_t;     // a POSIX descriptor; -1 is none
typedef s64 FileTime; // seconds since 1970 began, UTC

// ---- Open modes ------------------------------------------------------------------------------

// A bit set. The two low bits are also the memory protection of a mapping.
enum {
    OPEN_READ = 1,
    OPEN_WRITE = 2,  // creates (mode 0664) and truncates
    OPEN_DIRECT = 4, // adds O_DIRECT
    OPEN_EXCL = 8,   // adds O_EXCL
    OPEN_NOWAIT = 16 // adds O_NONBLOCK: opening a pipe or a device does not wait for the other end
};

// ---- Failures --------------------------------------------------------------------------------

// The system's text for a value of errno, such as "No such file or directory". Valid until the
// calling thread's next call.
const char* error_text(int error);

// ---- Names of paths --------------------------------------------------------------------------

// These examine the text alone, not the file system.

// The text after the last slash: empty when the path ends in one, the whole path without one.
//
// <libgen.h>, included before this or after it, makes `basename` a macro for another function's
// name. A function of that name forwards to this one, so OSAPI::basename means the same either way.
#pragma push_macro("basename")
#undef basename
String basename(const char* path);
inline String __xpg_basename(const char* path) {
    return basename(path);
}
#pragma pop_macro("basename")

// The text before the last slash: "a" for "a/b" and "/" for "/a", but "a/b" for "a/b/", as a
// trailing slash is not dropped first. "." without a slash, empty for an empty path.
String dirname(const char* path);

// The text after the last dot, even one in a folder's name: "d/file" for "dir.d/file". Empty
// without a dot. A path longer than 14 characters that ends in ".inprogress" (upper or lower case,
// in any locale) gives the extension before that: "ab.c.inprogress" gives "c", but
// "a.b.inprogress", which has 14, "inprogress".
String extension(const char* path);

// ---- Time ------------------------------------------------------------------------------------

struct Date {
    s32 year;  // all four digits
    s32 month; // from 1
    s32 day;   // of the month, from 1
};

// Microseconds since 1970 began, by the system's clock, which may be set.
u64 microsecs();

// Waits, until a signal if one arrives. Returns the seconds that were left.
unsigned sleep(unsigned seconds);

// Waits for a signal whose handler returns.
void pause();

// Lets other threads run.
void yield();

// Today's date in local time. Throws "time(): …".
Date get_date();

// ---- Descriptors -----------------------------------------------------------------------------

// Marks `fd` to be closed when another program is started. Throws "fcntl: …".
void close_on_exec(fd_t fd);

// Opens `path`, close-on-exec; -1 with errno set when the system refuses. Throws "fcntl: …" when
// the opened descriptor cannot be marked; a file that was created then stays.
fd_t open_can_fail(const char* path, int flags);

// As open_can_fail, but throws `opening file "path": …`.
fd_t open(const char* path, int flags);

// With `blocking` false, sets O_NONBLOCK: calls on `fd` no longer wait. With `blocking` true,
// O_NONBLOCK is toggled, not cleared: a blocking descriptor becomes non-blocking, so call that only
// for one that is known to be non-blocking. Throws "fcntl: …".
void set_blocking(fd_t fd, bool blocking);

// A second descriptor of the same open file; not close-on-exec. Throws "dup: …".
fd_t dup(fd_t fd);

// Makes `to`, closed first if it is open, a descriptor of the open file of `from`; not
// close-on-exec. Does nothing when both are the same number, open or not. Throws "dup2: …".
void dup2(fd_t from, fd_t to);

// Throws "close: …".
void close(fd_t fd);

// Reads exactly `n` bytes and returns `n`; makes no call when `n` is 0. Retries at once on EINTR
// and EAGAIN, so on a non-blocking descriptor it waits busily. Throws "read: …", and "unexpected
// EOF" when the file ends before that; the bytes before its end have then been read.
sword read(int fd, char* buf, uword n);
sword pread(int fd, char* buf, uword n, u64 offset);

// Reads once, up to `n` bytes; returns how many: 0 at the end, and also when a non-blocking
// descriptor has none yet. Retries on EINTR. Throws "read: …".
sword read_short(int fd, char* buf, uword n);

// As read_short, but -1 with errno set when the system refuses, EAGAIN among the reasons: 0 is the
// end and nothing else.
sword read_can_fail(fd_t fd, char* buf, uword n);

// Writes all `n` bytes and returns `n`; makes no call when `n` is 0. Retries at once on EINTR and
// EAGAIN, as read does, and also when the system takes no byte. Throws "write: …".
sword write(int fd, const char* buf, uword n);
sword pwrite(int fd, const char* buf, uword n, u64 offset);

// Writes all `n` bytes, waiting without a busy loop when the reader of a non-blocking pipe is slow;
// false with errno set when the system refuses. Allocates nothing.
bool write_can_fail(fd_t fd, const char* buf, uword n);

// Moves the file position; returns the new one, counted from the start. Throws "lseek: …".
s64 lseek(fd_t fd, s64 offset, int whence);

// The size in bytes of the open file. Throws "fstat: …".
u64 getsize(fd_t fd);

// The size in bytes of the file at `path`. Throws "stat: …", which does not name the file.
u64 getsize(const char* path);

// Cuts the file, or lengthens it with zeros, to `length` bytes. Throws "ftruncate: …".
void truncate(fd_t fd, s64 length);

// Wait until the file's bytes are on the storage device; datasync does not wait for its timestamps.
// Throw "fsync: …", "fdatasync: …".
void sync(fd_t fd);
void datasync(fd_t fd);

// Starts writing every modified file of the whole system to storage.
void sync();

// Waits until one of `n` descriptors is ready, at most `timeout_ms` milliseconds; a negative
// timeout is no limit. Returns how many are ready. On a signal it returns -1 when `interruptible`,
// and otherwise starts over with the full timeout. Throws "poll: …".
int poll(pollfd* fds, unsigned n, int timeout_ms, bool interruptible);

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

    // Takes ownership of `opened`; asserts "!is_open()".
    void init(fd_t opened);

    // Closes if open; the object is closed afterwards even when "close: …" is thrown.
    void close();

    // Calls the system's ioctl and returns its result. Throws "ioctl: …".
    int ioctl(int request, char* arg);
};

// The two ends of a pipe; both closed at first.
class Pipe {
public:
    FileDescriptor read_end;
    FileDescriptor write_end;

    // Asserts "!is_open()" for both ends. Neither is close-on-exec: programs started later inherit
    // them. Throws "pipe: …".
    void open();
};

// ---- Files and folders by path ---------------------------------------------------------------

// Whether `path` may be read, written (OPEN_READ, OPEN_WRITE in `flags`) or, with neither, exists.
// Never throws.
bool file_exists(const char* path, int flags);

// Throws "stat(path): …", also for a missing path.
bool is_directory(const char* path);

// Mode 0777 less the process's umask. Throws "mkdir(path): …".
void mkdir(const char* path);

// Mode 0664 less the process's umask. Throws "mknod(path): …".
void make_named_pipe(const char* path);

// The time of the file's last modification; 0 when there is no such file. Throws "stat(path): …".
FileTime get_mtime_ifexist(const char* path);

// As get_mtime_ifexist, but throws "stat(path): …" also when there is no such file. A time of
// exactly 0 throws too; the reason is then whatever errno happens to hold.
FileTime get_mtime(const char* path);

// Sets the times of the last modification and the last access. Throws "utime(path): …".
void set_mtime(const char* path, FileTime t);

// Remove a file; rm_ifexist accepts that there is none. Throw "unlink(path): …".
void rm(const char* path);
void rm_ifexist(const char* path);

// Throws "rename(from,to): …".
void rename(const char* from, const char* to);

// The identity of a file, and of its contents as far as size and time identify them.
struct FileStamp {
    u64 device, inode; // together they name one file
    u64 size;          // bytes
    s64 seconds;       // of the last modification, since 1970 began, UTC
    s64 nanoseconds;   // of that second
    bool is_regular;   // not a folder, pipe, device or socket

    bool is_same_file(const FileStamp& other) const {
        return device == other.device && inode == other.inode;
    }
    bool operator==(const FileStamp& other) const {
        return is_same_file(other) && size == other.size && seconds == other.seconds &&
               nanoseconds == other.nanoseconds && is_regular == other.is_regular;
    }
    bool operator!=(const FileStamp& other) const { return !(*this == other); }
};

// Throws "fstat: …".
FileStamp get_stamp(fd_t fd);

// Sets `stamp` to that of the file at `path`; when the system refuses, returns false with errno set
// and leaves `stamp` unchanged.
bool get_stamp_can_fail(const char* path, FileStamp& stamp);

// Removes a file, if it exists, in its destructor.
class Remover {
public:
    String path;

    explicit Remover(const String& path) : path(path) {}
    explicit Remover(const char* path) : path(path) {}
    Remover(const Remover&) = delete;
    Remover& operator=(const Remover&) = delete;
    ~Remover() noexcept(false); // throws as rm_ifexist does
};

// ---- The working directory, listings ---------------------------------------------------------

// Does nothing for ".". Throws "chdir(path): …".
void chdir(const char* path);

// Throws "getcwd: …".
String getcwd();

// Changes the working directory, which is the whole process's, for its own lifetime.
class ScopedChdir {
public:
    String previous;
    bool changed;

    // An empty `dir` changes nothing. Throws as getcwd and chdir do.
    explicit ScopedChdir(const char* dir);
    ScopedChdir(const ScopedChdir&) = delete;
    ScopedChdir& operator=(const ScopedChdir&) = delete;
    ~ScopedChdir() noexcept(false); // throws as chdir does when `previous` is gone
};

// Appends the names of a folder's entries to `out`, "." and ".." among them, in the system's order.
// Throws `opendir("path"): …`, `readdir("path"): …`, `closedir("path"): …`.
void lsdir(const char* path, Array<String>& out);

// The paths that a shell pattern matches, sorted.
class Glob {
public:
    // No match is not a failure. Throws "glob(pattern): code" with the code that glob returned.
    explicit Glob(const char* pattern);
    Glob(const Glob&) = delete;
    Glob& operator=(const Glob&) = delete;
    ~Glob();

    // The next path, valid while this object lives; null after the last. REQUIRES: it has not
    // returned null yet, unless nothing matched at all.
    const char* next();

private:
    struct State;
    State* state; // owned
};

// ---- Open files and streams over them --------------------------------------------------------

// The descriptor of a regular file.
class DiskFile : public FileDescriptor {
public:
    using FileDescriptor::FileDescriptor;

    // Throw "fstat: …".
    void stat(struct ::stat* status) const;
    FileTime get_mtime() const;
};

// Streams over a file, which must outlive them.
//
// Position:  counts from 0 at the file position when the stream was made; after a seek it is the
//            file position. Moving the descriptor by other means invalidates it.
// Errors:    reading throws as read_short does, and returns 0 when a non-blocking descriptor has no
//            bytes yet; writing throws as write does, and writes everything; seeking throws as
//            lseek does, and makes no call when the position would not change.
class FileInput : public Input {
public:
    explicit FileInput(DiskFile& file) : pos(0), file(file) {}
    FileInput(const FileInput&) = delete;
    FileInput& operator=(const FileInput&) = delete;

    s64 curpos() const override { return pos; }
    int read(char* buf, int n) override;
    s64 seek_from_start(s64 target) override;
    s64 seek_from_curpos(s64 delta) override;

    s64 pos;

private:
    DiskFile& file;
};

class FileOutput : public Output {
public:
    explicit FileOutput(DiskFile& file) : pos(0), file(file) {}
    FileOutput(const FileOutput&) = delete;
    FileOutput& operator=(const FileOutput&) = delete;

    s64 curpos() const override { return pos; }
    int write(const char* buf, int n) override;
    s64 seek_from_start(s64 target) override;
    s64 seek_from_curpos(s64 delta) override;

    s64 pos;

private:
    DiskFile& file;
};

// A file that is written through a buffer: write to `buffered`.
class BufferedFileOutput {
public:
    DiskFile file;
    FileOutput output;
    BufferedOutput buffered;
    bool close_when_done;

    // Writes from the current position of `fd`. With `close_when_done`, this object owns `fd` and
    // closes it, even when the constructor throws.
    BufferedFileOutput(fd_t fd, int bufsize, bool close_when_done);
    BufferedFileOutput(const BufferedFileOutput&) = delete;
    BufferedFileOutput& operator=(const BufferedFileOutput&) = delete;

    // Flushes, then closes if `close_when_done`; throws as those do. When the flush fails, the
    // descriptor is closed in any case: the file is incomplete, and must not be written further.
    ~BufferedFileOutput() noexcept(false);
};

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

    // Starts a write of `path`, owned by the caller; null with errno set when another writer's
    // temporary file exists (EEXIST) or it cannot be created. On std::bad_alloc no file is left.
    static AtomicFileWrite* exclusive(const char* path);

    void complete();        // syncs the file to storage, then complete_nosync
    void complete_nosync(); // renames the temporary file
    void abort();           // removes the temporary file

private:
    AtomicFileWrite(const char* path, const String& temp_path, fd_t fd);
};

// ---- Memory mappings -------------------------------------------------------------------------

// System page size in bytes.
int get_page_size();

// An owned mapped range. The destructor unmaps it, and throws "munmap: …".
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

// The first `len` bytes of a file, shared: changes that others make to the file are visible.
// `flags` & 3 is the protection. The descriptor may be closed once the mapping is made.
class FileMapping : public MemoryMapping {
public:
    FileMapping(fd_t fd, uword len, int flags);

    // Maps the whole file. Throws as open, getsize, map and close do; for an empty file "mmap(file):
    // Invalid argument", and so with OPEN_WRITE, which empties the file, always.
    FileMapping(const char* path, int flags);

    // REQUIRES: nothing is mapped yet. When "mmap(file): …" is thrown, nothing is mapped still.
    void map(fd_t fd, uword len, int flags);
};

// Copies `n` bytes from memory that may vanish at any moment, as a mapping's pages do when another
// process shortens the file. Reading them directly would end the process with SIGBUS; a system call
// that meets a lost page only fails. Returns how many bytes were copied: fewer than `n` when memory
// is lost, and then up to a page less than was still there. Where process_vm_readv is forbidden, as
// in some sandboxes, the bytes go through a pipe, which takes about twice the time. Throws
// "pipe: …", "fcntl: …", "write: …", "read: …" and "close: …", all about that pipe.
uword copy_can_fail(void* to, const void* from, uword n);

// Locks a range in physical memory for its own lifetime. Throws "mlock: …".
class LockMemory {
public:
    void* addr;
    uword len; // bytes

    LockMemory(void* addr, uword len);
    LockMemory(const LockMemory&) = delete;
    LockMemory& operator=(const LockMemory&) = delete;
    ~LockMemory();
};

// Moves the range [addr, addr + len) of writable private memory into large pages (2 MiB), contents
// unchanged, as far as whole ones fit in it and the system supports it (Linux from 6.1). It is done
// at once and leaves no advice on the range, so the memory may be returned to any heap. A hint for
// speed alone: it never fails, and keeps errno.
void gather_into_large_pages(void* addr, uword len);

// ---- Processes -------------------------------------------------------------------------------

OSAPI_pid_t getpid();

// 0 in the child, the child's process in the parent. Throws "fork: …".
OSAPI_pid_t fork();

// As fork, but -1 with errno set when the system refuses.
OSAPI_pid_t fork_can_fail();

// Has the system send SIGTERM to this process, a child of `parent`, when that ends; false when it
// has ended already, which is then too late. It is the thread that called fork whose end counts.
bool end_with_parent(OSAPI_pid_t parent);

// End the process; exit runs the exit handlers, exit_now does not.
[[noreturn]] void exit(int status);
[[noreturn]] void exit_now(int status);

// Replaces this process by the program `file`, searched for along PATH. `argv` starts with the
// program's name and ends with null; a null `argv` passes the name alone. Returns only by throwing
// "exec(file): …".
[[noreturn]] void exec(const char* file, const char* const* argv);

// Sends a signal; returns the system's result, -1 with errno set on failure.
int _kill(OSAPI_pid_t pid, int sig);

// Sends a signal. Throws "kill(pid,sig): …".
void kill(OSAPI_pid_t pid, int sig);

// Waits for the end of a child or, with `nohang`, only checks for it; `pid` -1 is any child.
//
//     returns                                             *out, unless `out` is null
//     the exit code, or the signal that killed the        the process
//     child: the two cannot be told apart
//     -1 with `nohang`: the child is still running        unchanged
//     15: there is no such child                          unchanged
//     0: a signal interrupted the wait, and the child     -1
//     may still be running
//
// So callers that handle signals without SA_RESTART must check `*out`.
//
// Throws "waitpid: …", and "unexpected return value from waitpid()" when `pid` is that of a process
// group, which is not supported.
int _wait_until_dead(OSAPI_pid_t pid, OSAPI_pid_t* out, bool nohang);

// Waits for a child that must end with exit code 0; any other result of _wait_until_dead throws
// "child process returned non-zero exit code". An interrupted wait counts as exit code 0.
void wait_until_dead(OSAPI_pid_t pid);

// How a child ended.
struct ChildEnd {
    OSAPI_pid_t pid;
    int exit_code; // -1 when a signal killed it
    int signal;    // 0 when it exited
};

// Waits for the end of any child, also when signals interrupt that. Throws "waitpid: …", with
// error_text(ECHILD) when there is no child.
ChildEnd wait_for_any_child();

bool running_as_root(); // by the effective user

bool stdin_is_console();
bool stdout_is_console();
bool stderr_is_console();

// A function that runs in a process of its own. Destruction leaves a running child alone.
class ChildProcess {
public:
    OSAPI_pid_t pid; // -1 without a child

    ChildProcess() : pid(-1) {}
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Starts `fn` and returns its process, which exits with what `fn` returns; an exception that
    // `fn` throws ends the child by std::terminate. Throws "fork: …".
    OSAPI_pid_t start(int (*fn)());

    // Waits for the child's end, if there is a child; sends it no signal. Throws as wait_until_dead
    // does, and then keeps `pid`.
    void stop();
};

// ---- Signals ---------------------------------------------------------------------------------

// Changes the disposition of a signal, for the whole process, and restores it in its destructor.
// Objects for the same signal must be destroyed in the reverse order of their construction.
class Signal {
public:
    struct ::sigaction* old_action; // the disposition before install(); owned
    int signum;

    // Installs nothing; without install() the destructor restores nothing.
    explicit Signal(int signum);
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;
    ~Signal();

    // Call once. Throws "sigaction(signum): …".
    void install(const struct ::sigaction* action);
};

// While the action runs, the signal itself is blocked and no other. System calls that it interrupts
// are resumed where the system can (SA_RESTART); with a handler, only when `restart`.
class SignalIgnore : public Signal {
public:
    explicit SignalIgnore(int signum);
};

class SignalDefault : public Signal {
public:
    explicit SignalDefault(int signum);
};

class SignalHandler : public Signal {
public:
    SignalHandler(int signum, void (*handler)(int), bool restart);
};

// ---- Sockets ---------------------------------------------------------------------------------

// The machine's name; the first call's result is kept for the whole process. One thread at a time.
// Throws "gethostname: …".
String gethostname();

// Connects to the first IPv4 address of `host`; the descriptor is not close-on-exec. The resolver's
// state is the whole process's: one thread at a time. Asserts "port > 0 && port <= 65535" and, of
// the resolver's answer, "h->h_addrtype == AF_INET". Throws `gethostbyname("host"): …`, "socket: …"
// and `connect("host:port"): …`. A failed connect leaks the socket, so retries must be limited.
fd_t connect_tcp(const char* host, int port);

// A listening socket for processes of this machine, with a name in the file system.
class UNIXServerSocket {
public:
    fd_t fd;     // -1 when closed
    String path; // empty when closed

    UNIXServerSocket() : fd(-1) {}
    explicit UNIXServerSocket(const char* path);
    UNIXServerSocket(const UNIXServerSocket&) = delete;
    UNIXServerSocket& operator=(const UNIXServerSocket&) = delete;
    ~UNIXServerSocket() noexcept(false); // throws as close does

    // Listens at `mypath`, close-on-exec; nothing may exist there yet. A socket open in this object
    // is closed first. Asserts "mypath[0] != 0" and "strlen(mypath) < sizeof(addr.sun_path)-1": at
    // most 106 characters. Throws "socket: …", "bind: …", "listen: …", "fcntl: …"; the last
    // two leave the socket's file.
    void open(const char* mypath);

    // Waits for a connection and returns it, close-on-exec. On a signal it returns -1 when
    // `interruptible`, and otherwise continues to wait. Throws "accept: …".
    fd_t accept(bool interruptible);

    // If open, closes the socket and removes its file. Both are attempted, the object is closed
    // afterwards in any case, and the first failure is thrown, as by close and rm_ifexist.
    void close();
};

// A listening TCP socket on every IPv4 address of this machine.
class TCPServerSocket {
public:
    fd_t fd; // -1 when closed

    TCPServerSocket() : fd(-1) {}
    explicit TCPServerSocket(int port);
    TCPServerSocket(const TCPServerSocket&) = delete;
    TCPServerSocket& operator=(const TCPServerSocket&) = delete;
    ~TCPServerSocket() noexcept(false); // throws as close does

    // Listens at `port`, close-on-exec; a socket open in this object is closed first. Asserts
    // "port > 0 && port <= 65535". Throws "socket: …", "setsockopt(SO_REUSEADDR): …", "bind: …",
    // "listen: …", "fcntl: …".
    void open(int port);

    fd_t accept(bool interruptible); // as UNIXServerSocket's

    void close(); // if open
};

// ---- Diagnostics and stdio -------------------------------------------------------------------

// Prints on standard output how long it lived, indented by the number of profilers around it. The
// indent is the whole process's: one thread at a time.
class Profiler {
public:
    const char* name; // not copied
    ::timeval start, end;

    static int indent; // profilers alive

    explicit Profiler(const char* name);
    Profiler(const Profiler&) = delete;
    Profiler& operator=(const Profiler&) = delete;
    ~Profiler();
};

// Prints on standard output how much memory this process takes. Bytes and pages are kept modulo
// 2^32: 5 GB are printed as 1 GB. Throws as open and read_short do, and "error reading
// /proc/self/stat", also for a program with a space in its name.
void print_statistics();

// A stdio stream over a descriptor, which it owns from then on.
class ScopedFILE {
public:
    FILE* file;

    // Throws `fdopen("name", "mode")`, and then `fd` is still the caller's; `name` is used for
    // nothing else.
    ScopedFILE(fd_t fd, const char* name, const char* mode);
    ScopedFILE(const ScopedFILE&) = delete;
    ScopedFILE& operator=(const ScopedFILE&) = delete;

    // Closes; bytes that cannot be written are silently lost. Call fflush() first to see errors.
    ~ScopedFILE();
};

static_assert(sizeof(FileDescriptor) == sizeof(fd_t), "a descriptor and nothing else");
static_assert(sizeof(DiskFile) == sizeof(fd_t), "a descriptor and nothing else");
static_assert(sizeof(Pipe) == 2 * sizeof(fd_t), "two descriptors and nothing else");
static_assert(sizeof(Date) == 3 * sizeof(s32), "year, month, day and nothing else");
static_assert(sizeof(FileMapping) == sizeof(void*) + sizeof(uword), "a range and nothing else");
static_assert(sizeof(LockMemory) == sizeof(void*) + sizeof(uword), "a range and nothing else");
static_assert(sizeof(ChildProcess) == sizeof(OSAPI_pid_t), "a process and nothing else");
static_assert(sizeof(Glob) == sizeof(void*), "a pointer to its state and nothing else");
static_assert(sizeof(ScopedFILE) == sizeof(FILE*), "a stream and nothing else");

} // namespace OSAPI
