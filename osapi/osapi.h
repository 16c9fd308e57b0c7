// The door to the operating system.
//
//     Types, Open modes
//     Names of paths                     basename, dirname, extension
//     Time                               microsecs, sleep, pause, yield, get_date
//     Descriptors                        open, read, write, lseek, …, FileDescriptor, Pipe, poll
//     Files and folders by path          file_exists, mkdir, get_mtime, rm, get_stamp, …, Remover
//     The working directory, listings    chdir, getcwd, ScopedChdir, lsdir, Glob
//     Open files and streams over them   DiskFile, FileInput, FileOutput, BufferedFileOutput
//     Files that appear whole            AtomicFileWrite
//     Memory mappings                    AnonMapping, FileMapping, copy_can_fail, LockMemory,
//                                        large pages
//     Processes                          fork, exec, kill, wait_until_dead, ChildProcess
//     Signals                            SignalIgnore, SignalDefault, SignalHandler
//     Sockets                            gethostname, connect_tcp, UNIXServerSocket,
//     TCPServerSocket Diagnostics and stdio              Profiler, print_statistics, ScopedFILE
//
// Errors:    every failing system call throws StrXception with the call's name, its argument where
//            it has one, and strerror(errno). What may fail without throwing says so in its name
//            (…_can_fail, …_ifexist, a leading underscore) or below.
// Ownership: objects release what they hold in their destructors and cannot be copied. A destructor
//            whose release fails throws where it is marked so, but for one that runs because of
//            another exception: that one stays the failure to report.
// Threads:   as safe as the system calls beneath, but for what keeps something for the whole
//            process and says so; objects are not shared between threads.
// Source:    one per noun; this header is the whole of it in one piece, and longer for that.
#pragma once

#include "core/array.h"
#include "core/io.h"
#include "core/string.h"
#include "core/types.h"

#include <cstdio>
#include <sys/time.h>

// The system's, for those who include its headers.
struct pollfd;
struct sigaction;
struct stat;

typedef s32 OSAPI_pid_t; // a process

namespace OSAPI {

// ---- Types -----------------------------------------------------------------------------------

using ::OSAPI_pid_t;
using ::pollfd;

typedef s32 fd_t;     // a POSIX descriptor; -1 means none
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

// These look at the text alone.

// What stands behind the last slash, which is nothing when the path ends in one.
//
// <libgen.h>, included before this or after it, makes `basename` a macro for another function's name.
// That name leads to this function too, so OSAPI::basename means the same either way.
#pragma push_macro("basename")
#undef basename
String basename(const char* path);
inline String __xpg_basename(const char* path) {
    return basename(path);
}
#pragma pop_macro("basename")

// What stands before the last slash: "a" for "a/b" and "/" for "/a", but "a/b" for "a/b/", whose
// last slash is not dropped first. "." without a slash, and nothing of nothing.
String dirname(const char* path);

// What follows the last dot, wherever that is: "d/file" for "dir.d/file". A path that ends in
// ".inprogress" (upper or lower case, in any locale) gives the extension before that, but only if
// it is longer than 14 characters: "ab.c.inprogress" gives "c", "a.b.inprogress" "inprogress".
String extension(const char* path);

// ---- Time ------------------------------------------------------------------------------------

struct Date {
    s32 year;  // all four digits
    s32 month; // from 1
    s32 day;   // of the month, from 1
};

// Microseconds since 1970 began, by the system's clock, which may be set.
u64 microsecs();

// Waits; a signal ends that early. Gives the seconds that were left.
unsigned sleep(unsigned seconds);

// Waits for a signal whose handler returns.
void pause();

// Lets others run.
void yield();

// Today, where the machine's clock says it stands. Throws "time(): …".
Date get_date();

// ---- Descriptors -----------------------------------------------------------------------------

// Marks `fd` to be closed when another program is started. Throws "fcntl: …".
void close_on_exec(fd_t fd);

// Opens `path`, close-on-exec; -1 with errno set when the system refuses. Throws "fcntl: …" when
// the opened descriptor cannot be marked; a file that was created then stays.
fd_t open_can_fail(const char* path, int flags);

// As open_can_fail, but throws `opening file "path": …`.
fd_t open(const char* path, int flags);

// With `blocking` false, calls on `fd` no longer wait. With `blocking` true the mode is turned
// over, not set: a descriptor that waits already stops waiting. Call that only for one that is
// known not to wait. Throws "fcntl: …".
void set_blocking(fd_t fd, bool blocking);

// A second descriptor for what `fd` stands for; not close-on-exec. Throws "dup: …".
fd_t dup(fd_t fd);

// Makes `to` stand for what `from` does, closing it first; not close-on-exec. Nothing happens when
// they are the same, open or not. Throws "dup2: …".
void dup2(fd_t from, fd_t to);

// Throws "close: …".
void close(fd_t fd);

// Reads exactly `n` bytes, and returns `n`; makes no call for none. Retries at once on EINTR and
// EAGAIN, so it keeps the processor busy on a descriptor that does not wait. Throws "read: …", and
// "unexpected EOF" at an end before that, when what was there has been read.
sword read(int fd, char* buf, uword n);
sword pread(int fd, char* buf, uword n, u64 offset);

// Reads once, up to `n` bytes; returns how many, 0 at the end and also where nothing is there yet
// on a descriptor that does not wait. Retries on EINTR. Throws "read: …".
sword read_short(int fd, char* buf, uword n);

// Writes all `n` bytes and returns `n`; makes no call for none. Retries at once on EINTR and EAGAIN,
// as read does, and also when the system takes no byte. Throws "write: …".
sword write(int fd, const char* buf, uword n);
sword pwrite(int fd, const char* buf, uword n, u64 offset);

// Moves where the descriptor stands; returns where that is, from the start. Throws "lseek: …".
s64 lseek(fd_t fd, s64 offset, int whence);

// The size in bytes of the open file. Throws "fstat: …".
u64 getsize(fd_t fd);

// The same of the file at `path`. Throws "stat: …", which does not name it.
u64 getsize(const char* path);

// Cuts the file, or lengthens it with zeros, to `length` bytes. Throws "ftruncate: …".
void truncate(fd_t fd, s64 length);

// Wait until the file's bytes are on the medium, datasync without waiting for its times. Throw
// "fsync: …", "fdatasync: …".
void sync(fd_t fd);
void datasync(fd_t fd);

// Sends everything to the media, for the whole system.
void sync();

// Waits until one of `n` descriptors is ready, for `timeout_ms` milliseconds or, below 0, for ever.
// Returns how many are ready. A signal makes it return -1 when `interruptible`, and start over with
// the whole time otherwise. Throws "poll: …".
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

    // Takes `opened` over; asserts "!is_open()".
    void init(fd_t opened);

    // Closes if open; closed afterwards, also when "close: …" is thrown.
    void close();

    // The system's ioctl, and its result. Throws "ioctl: …".
    int ioctl(int request, char* arg);
};

// The two ends of a pipe; closed at first.
class Pipe {
public:
    FileDescriptor read_end;
    FileDescriptor write_end;

    // Asserts "!is_open()" for both ends. Neither is close-on-exec: a program that is started holds
    // them too. Throws "pipe: …".
    void open();
};

// ---- Files and folders by path ---------------------------------------------------------------

// Whether `path` may be read, written (by `flags`) or, with neither, is there. Never throws.
bool file_exists(const char* path, int flags);

// Throws "stat(path): …", for a missing path too.
bool is_directory(const char* path);

// Mode 0777, less the process's mask. Throws "mkdir(path): …".
void mkdir(const char* path);

// Mode 0664, less the process's mask. Throws "mknod(path): …".
void make_named_pipe(const char* path);

// When the file was last modified; 0 when it is not there. Throws "stat(path): …".
FileTime get_mtime_ifexist(const char* path);

// The same, but throws "stat(path): …" when the file is not there, and also when its time is
// exactly 0: the reason is then whatever errno happens to hold.
FileTime get_mtime(const char* path);

// Sets the times of last modification and of last access. Throws "utime(path): …".
void set_mtime(const char* path, FileTime t);

// Remove a file, rm_ifexist also one that is not there. Throw "unlink(path): …".
void rm(const char* path);
void rm_ifexist(const char* path);

// Throws "rename(from,to): …".
void rename(const char* from, const char* to);

// Which file it is, and its contents as far as size and time identify them.
struct FileStamp {
    u64 device, inode; // together they name one file
    u64 size;          // bytes
    s64 seconds;       // of the last modification, since 1970 began, UTC
    s64 nanoseconds;   // of that second
    bool is_regular;   // neither a folder nor a pipe, device or socket

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

// The same of the file at `path`; false with errno set, and `stamp` unchanged, when the system
// refuses.
bool get_stamp_can_fail(const char* path, FileStamp& stamp);

// Removes a file, if it is there, when it goes itself.
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

// Makes no call for ".". Throws "chdir(path): …".
void chdir(const char* path);

// Throws "getcwd: …".
String getcwd();

// Another working directory while it lives, for the whole process.
class ScopedChdir {
public:
    String previous;
    bool changed;

    // Nothing changes for an empty `dir`. Throws as getcwd and chdir do.
    explicit ScopedChdir(const char* dir);
    ScopedChdir(const ScopedChdir&) = delete;
    ScopedChdir& operator=(const ScopedChdir&) = delete;
    ~ScopedChdir() noexcept(false); // throws as chdir does, if the way back is gone
};

// Adds the names of a folder's entries to what `out` holds, "." and ".." among them, in the order
// in which the system has them. Throws `opendir("path"): …`, `readdir("path"): …`,
// `closedir("path"): …`.
void lsdir(const char* path, Array<String>& out);

// The paths that a shell pattern matches, sorted.
class Glob {
public:
    // Finding none is no failure. Throws "glob(pattern): code" with the system's code.
    explicit Glob(const char* pattern);
    Glob(const Glob&) = delete;
    Glob& operator=(const Glob&) = delete;
    ~Glob();

    // The next path, which lives as long as this; null behind the last. It must not be asked again
    // after that null, unless nothing matched at all.
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

// Streams of a file, which must outlive them. Their position counts from 0 where the descriptor
// stood when they were made, until they seek; then it is that of the file. Who moves the descriptor
// otherwise makes it wrong.
//
// Reading throws as read_short does, and gives 0 where nothing is there yet; writing throws as
// write does and takes everything; seeking throws as lseek does, and makes no call when it leads
// nowhere.
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

    // Writes from where `fd` stands. `fd` is closed in the end, also by a constructor that throws,
    // when `close_when_done`.
    BufferedFileOutput(fd_t fd, int bufsize, bool close_when_done);
    BufferedFileOutput(const BufferedFileOutput&) = delete;
    BufferedFileOutput& operator=(const BufferedFileOutput&) = delete;

    // Flushes and closes; throws as those do. When it cannot flush, the descriptor is closed in any
    // case, `close_when_done` or not: half a file is nobody's to go on with.
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

    // A write of `path`, owned by the caller, or null with errno set when another writer's
    // temporary file is there or it cannot be made. Throws std::bad_alloc, and leaves no file.
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

    // Maps the whole file. Throws as open, getsize, map and close do; an empty file cannot be
    // mapped ("mmap(file): Invalid argument"), and OPEN_WRITE empties it first.
    FileMapping(const char* path, int flags);

    // For an object that maps nothing yet, and that still maps nothing when "mmap(file): …" is
    // thrown.
    void map(fd_t fd, uword len, int flags);
};

// Copies `n` bytes from memory that may be lost at any moment, as a mapping's pages are when somebody
// shortens the file. Reading them directly would end the process with SIGBUS; a system call that
// meets a lost page only fails. Returns how many bytes were copied: fewer than `n` where memory is
// lost, and then up to a page short of it. Needs no privilege: where process_vm_readv is forbidden, as in some sandboxes, the bytes go
// through a pipe, at about twice the time. Throws "pipe: …", "fcntl: …", "write: …", "read: …" and
// "close: …", all of the pipe.
uword copy_can_fail(void* to, const void* from, uword n);

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

// Moves what lies in [addr, addr + len) of writable private memory, contents kept, into large pages
// (2 MiB), as far as whole ones fit and the system has them; Linux before 6.1 has not. It is done
// at once and leaves no advice on the range, so the memory may go back to any heap. Only speed
// depends on it: it never fails, and keeps errno.
void gather_into_large_pages(void* addr, uword len);

// ---- Processes -------------------------------------------------------------------------------

OSAPI_pid_t getpid();

// 0 in the child, the child's process in the parent. Throws "fork: …".
OSAPI_pid_t fork();

// Ends the process with what was registered for that, and without.
[[noreturn]] void exit(int status);
[[noreturn]] void exit_now(int status);

// Becomes the program `file`, looked for where the shell would. `argv` starts with the program's
// name and ends in null; without it the name is all that the program is given. Returns only by
// throwing "exec(file): …".
[[noreturn]] void exec(const char* file, const char* const* argv);

// Sends a signal; the system's result, -1 with errno set on failure.
int _kill(OSAPI_pid_t pid, int sig);

// Sends a signal. Throws "kill(pid,sig): …".
void kill(OSAPI_pid_t pid, int sig);

// Waits for the end of a child, or, with `nohang`, only asks for it; `pid` -1 is any child. Returns
// the exit code, or the number of the signal that killed it, which look alike; -1 when `nohang` and
// it still runs; 15 when there is no such child. `*out`, where given, becomes the process, but not
// in the last two cases.
//
// A wait that a signal interrupts reports the end of a child that may well still run: it returns 0,
// with `*out` -1. Whoever handles signals without SA_RESTART must look at `*out`.
//
// Throws "waitpid: …", and "unexpected return value from waitpid()" when `pid` names a process
// group.
int _wait_until_dead(OSAPI_pid_t pid, OSAPI_pid_t* out, bool nohang);

// Waits for a child that must end with exit code 0; everything else throws "child process returned
// non-zero exit code", with no way to tell what it was. An interrupted wait counts as exit code 0.
void wait_until_dead(OSAPI_pid_t pid);

bool running_as_root(); // by the effective user

bool stdin_is_console();
bool stdout_is_console();
bool stderr_is_console();

// A function that runs in a process of its own. Nothing happens to a child that still runs when
// this goes.
class ChildProcess {
public:
    OSAPI_pid_t pid; // -1 without a child

    ChildProcess() : pid(-1) {}
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Starts `fn` and returns its process, which exits with what `fn` returns; an exception that
    // leaves `fn` ends it by std::terminate. Throws "fork: …".
    OSAPI_pid_t start(int (*fn)());

    // Waits for the child's end, if there is one; sends it no signal. Throws as wait_until_dead,
    // and then keeps `pid`.
    void stop();
};

// ---- Signals ---------------------------------------------------------------------------------

// Another disposition of a signal while it lives, for the whole process. Those of the same signal
// must go in the reverse order of their coming.
class Signal {
public:
    struct ::sigaction* old_action; // the disposition before install(); owned
    int signum;

    // Installs nothing yet, and the destructor then restores nothing.
    explicit Signal(int signum);
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;
    ~Signal();

    // To be called once. Throws "sigaction(signum): …".
    void install(const struct ::sigaction* action);
};

// Their actions block the signal itself and nothing else while they run. Calls that it interrupts
// go on afterwards (SA_RESTART), where the system can; under a handler, only when `restart`.
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

// The machine's name, as it was when it was first asked for. One thread at a time. Throws
// "gethostname: …".
String gethostname();

// A connection to the first IPv4 address of `host`; not close-on-exec. The resolver is the
// process's own: one thread at a time. Asserts "port > 0 && port <= 65535" and, for what the
// resolver found, "h->h_addrtype == AF_INET". Throws `gethostbyname("host"): …`, "socket: …" and
// `connect("host:port"): …`; the last one leaks the socket, so do not try again for ever.
fd_t connect_tcp(const char* host, int port);

// Where processes of this machine connect: a socket with a name in the file system.
class UNIXServerSocket {
public:
    fd_t fd;     // -1 when closed
    String path; // empty when closed

    UNIXServerSocket() : fd(-1) {}
    explicit UNIXServerSocket(const char* path);
    UNIXServerSocket(const UNIXServerSocket&) = delete;
    UNIXServerSocket& operator=(const UNIXServerSocket&) = delete;
    ~UNIXServerSocket() noexcept(false); // throws as close does

    // Listens at `mypath`, where nothing may be yet, close-on-exec; what was open here is closed
    // first. Asserts "mypath[0] != 0" and "strlen(mypath) < sizeof(addr.sun_path)-1", which is 106
    // characters at most. Throws "socket: …", "bind: …", "listen: …", "fcntl: …"; the last two
    // leave the socket's file.
    void open(const char* mypath);

    // Waits for a connection and returns it, close-on-exec. A signal makes it return -1 when
    // `interruptible`, and wait on otherwise. Throws "accept: …".
    fd_t accept(bool interruptible);

    // Closes and removes the socket's file, if open; both are tried, and the object is closed
    // afterwards in any case. Throws as close and rm_ifexist do, the first failure of the two.
    void close();
};

// Where everybody connects, on every IPv4 address of this machine.
class TCPServerSocket {
public:
    fd_t fd; // -1 when closed

    TCPServerSocket() : fd(-1) {}
    explicit TCPServerSocket(int port);
    TCPServerSocket(const TCPServerSocket&) = delete;
    TCPServerSocket& operator=(const TCPServerSocket&) = delete;
    ~TCPServerSocket() noexcept(false); // throws as close does

    // Listens at `port`, close-on-exec; what was open here is closed first. Asserts
    // "port > 0 && port <= 65535". Throws "socket: …", "setsockopt(SO_REUSEADDR): …", "bind: …",
    // "listen: …", "fcntl: …".
    void open(int port);

    fd_t accept(bool interruptible); // as UNIXServerSocket's

    void close(); // if open
};

// ---- Diagnostics and stdio -------------------------------------------------------------------

// Tells on standard output how long it lived, indented by how many others do. The indent is the
// process's: one thread at a time.
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

// Tells on standard output how large this process is. Sizes beyond 32 bits are told without what
// lies above: 5 GB are 1 GB, pages likewise. Throws as open and read_short do, and "error reading
// /proc/self/stat", also for a program with a space in its name.
void print_statistics();

// A stdio stream over a descriptor, which it owns from then on.
class ScopedFILE {
public:
    FILE* file;

    // `name` is for the message, `fdopen("name", "mode")`; `fd` then stays the caller's.
    ScopedFILE(fd_t fd, const char* name, const char* mode);
    ScopedFILE(const ScopedFILE&) = delete;
    ScopedFILE& operator=(const ScopedFILE&) = delete;

    // Closes; what cannot be written then is lost without a word. To be told, flush first.
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
