// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "osapi-unix"

#include "core/unwinding.h"
#include "core/xception.h"
#include "osapi/failure.h"
#include "osapi/osapi.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace OSAPI {

// ---- Opening and closing ---------------------------------------------------------------------

static const mode_t creation_mode = 0664;

void close_on_exec(fd_t fd) {
    const int flags = fcntl(fd, F_GETFD);
    if (flags == -1)
        XTHROW_ERRNO("fcntl");
    if (fcntl(fd, F_SETFD, flags | FD_CLOEXEC) == -1)
        XTHROW_ERRNO("fcntl");
}

// The system's flags for ours: the two low bits select the access, each other bit adds a flag.
static int system_open_flags(int flags) {
    int oflags = O_RDONLY;
    if ((flags & 3) == OPEN_WRITE)
        oflags = O_WRONLY | O_CREAT | O_TRUNC;
    if ((flags & 3) == (OPEN_READ | OPEN_WRITE))
        oflags = O_RDWR | O_CREAT | O_TRUNC;
    if (flags & OPEN_DIRECT)
        oflags |= O_DIRECT;
    if (flags & OPEN_EXCL)
        oflags |= O_EXCL;
    if (flags & OPEN_NOWAIT)
        oflags |= O_NONBLOCK;
    return oflags;
}

fd_t open_can_fail(const char* path, int flags) {
    const int oflags = system_open_flags(flags);
    const fd_t fd =
        !(oflags & O_CREAT) ? ::open(path, oflags) : ::open(path, oflags, creation_mode);
    if (fd == -1)
        return -1;
    // Closed again if it cannot be marked.
    FileDescriptor owner(fd);
    close_on_exec(owner.fd);
    owner.fd = -1;
    return fd;
}

fd_t open(const char* path, int flags) {
    const fd_t fd = open_can_fail(path, flags);
    if (fd == -1)
        XTHROW_ERRNO("opening file \"%s\"", path);
    return fd;
}

void close(fd_t fd) {
    if (::close(fd) == -1)
        XTHROW_ERRNO("close");
}

// ---- Modes and copies ------------------------------------------------------------------------

// Callers rely on O_NONBLOCK being toggled where one would expect it to be cleared.
void set_blocking(fd_t fd, bool blocking) {
    const int flags = fcntl(fd, F_GETFL);
    if (flags == -1)
        XTHROW_ERRNO("fcntl");
    if (fcntl(fd, F_SETFL, blocking ? flags ^ O_NONBLOCK : flags | O_NONBLOCK) == -1)
        XTHROW_ERRNO("fcntl");
}

fd_t dup(fd_t fd) {
    const fd_t copy = ::dup(fd);
    if (copy == -1)
        XTHROW_ERRNO("dup");
    return copy;
}

void dup2(fd_t from, fd_t to) {
    if (from != to && ::dup2(from, to) == -1)
        XTHROW_ERRNO("dup2");
}

// ---- Reading and writing ---------------------------------------------------------------------

// EAGAIN is retried without waiting: callers rely on transfers that are whole or throw.
static bool worth_another_try(int error) {
    return error == EAGAIN || error == EINTR;
}

sword read(int fd, char* buf, uword n) {
    uword got = 0;
    while (got < n) {
        const ssize_t count = ::read(fd, buf + got, n - got);
        if (count == 0)
            XTHROW("unexpected EOF");
        if (count > 0)
            got += uword(count);
        else if (!worth_another_try(errno))
            XTHROW_ERRNO("read");
    }
    return sword(got);
}

sword pread(int fd, char* buf, uword n, u64 offset) {
    uword got = 0;
    while (got < n) {
        const ssize_t count = ::pread(fd, buf + got, n - got, off_t(offset + got));
        if (count == 0)
            XTHROW("unexpected EOF");
        if (count > 0)
            got += uword(count);
        else if (!worth_another_try(errno))
            XTHROW_ERRNO("read");
    }
    return sword(got);
}

sword read_short(int fd, char* buf, uword n) {
    for (;;) {
        const ssize_t count = ::read(fd, buf, n);
        if (count >= 0)
            return count;
        if (errno == EAGAIN)
            return 0;
        if (errno != EINTR)
            XTHROW_ERRNO("read");
    }
}

sword read_can_fail(fd_t fd, char* buf, uword n) {
    ssize_t count;
    do
        count = ::read(fd, buf, n);
    while (count == -1 && errno == EINTR);
    return count;
}

sword write(int fd, const char* buf, uword n) {
    uword written = 0;
    while (written < n) {
        const ssize_t count = ::write(fd, buf + written, n - written);
        if (count >= 0)
            written += uword(count);
        else if (!worth_another_try(errno))
            XTHROW_ERRNO("write");
    }
    return sword(written);
}

sword pwrite(int fd, const char* buf, uword n, u64 offset) {
    uword written = 0;
    while (written < n) {
        const ssize_t count = ::pwrite(fd, buf + written, n - written, off_t(offset + written));
        if (count >= 0)
            written += uword(count);
        else if (!worth_another_try(errno))
            XTHROW_ERRNO("write");
    }
    return sword(written);
}

// Whether to retry a write that failed, having waited until a non-blocking pipe has room.
static bool can_go_on_writing(fd_t fd) {
    pollfd waiting = {fd, POLLOUT, 0};
    return errno == EINTR || (errno == EAGAIN && (::poll(&waiting, 1, -1) == 1 || errno == EINTR));
}

bool write_can_fail(fd_t fd, const char* buf, uword n) {
    while (n > 0) {
        const ssize_t count = ::write(fd, buf, n);
        if (count >= 0) {
            buf += count;
            n -= uword(count);
        } else if (!can_go_on_writing(fd)) {
            return false;
        }
    }
    return true;
}

s64 lseek(fd_t fd, s64 offset, int whence) {
    const off_t position = ::lseek(fd, offset, whence);
    if (position == -1)
        XTHROW_ERRNO("lseek");
    return position;
}

// ---- The open file ---------------------------------------------------------------------------

u64 getsize(fd_t fd) {
    struct stat status;
    if (fstat(fd, &status) == -1)
        XTHROW_ERRNO("fstat");
    return u64(status.st_size);
}

void truncate(fd_t fd, s64 length) {
    if (ftruncate(fd, length) == -1)
        XTHROW_ERRNO("ftruncate");
}

void sync(fd_t fd) {
    if (fsync(fd) == -1)
        XTHROW_ERRNO("fsync");
}

void datasync(fd_t fd) {
    if (fdatasync(fd) == -1)
        XTHROW_ERRNO("fdatasync");
}

void sync() {
    ::sync();
}

// ---- Waiting ---------------------------------------------------------------------------------

int poll(pollfd* fds, unsigned n, int timeout_ms, bool interruptible) {
    for (;;) {
        const int ready = ::poll(fds, n, timeout_ms);
        if (ready >= 0)
            return ready;
        // A signal ends the wait or restarts it with the full timeout; all else is a failure.
        if (errno != EINTR)
            XTHROW_ERRNO("poll");
        if (interruptible)
            return -1;
    }
}

// ---- Owners ----------------------------------------------------------------------------------

// During unwinding, a failed close is ignored.
FileDescriptor::~FileDescriptor() noexcept(false) {
    if (!is_open())
        return;
    if (velmora::unwinding())
        ::close(fd);
    else
        OSAPI::close(fd);
}

void FileDescriptor::init(fd_t opened) {
    XASSERT(!is_open());
    fd = opened;
}

void FileDescriptor::close() {
    if (!is_open())
        return;
    // A failed close has released the descriptor too: closing it again could close another file
    // that has got the same number.
    const fd_t closing = fd;
    fd = -1;
    OSAPI::close(closing);
}

int FileDescriptor::ioctl(int request, char* arg) {
    const int result = ::ioctl(fd, unsigned(request), arg);
    if (result == -1)
        XTHROW_ERRNO("ioctl");
    return result;
}

// If one of the ends is open already, its assertion fails and the new descriptors are closed.
void Pipe::open() {
    int ends[2];
    if (pipe(ends) == -1)
        XTHROW_ERRNO("pipe");
    FileDescriptor reading(ends[0]), writing(ends[1]);
    read_end.init(reading.fd);
    reading.fd = -1;
    write_end.init(writing.fd);
    writing.fd = -1;
}

} // namespace OSAPI
