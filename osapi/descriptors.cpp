#define XSOURCE "osapi-unix"

#include "core/unwinding.h"
#include "core/xception.h"
#include "osapi/osapi.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace OSAPI {

static const mode_t creation_mode = 0664;

void close_on_exec(fd_t fd) {
    const int flags = fcntl(fd, F_GETFD);
    if (flags == -1)
        XTHROW("fcntl: %s", strerror(errno));
    if (fcntl(fd, F_SETFD, flags | FD_CLOEXEC) == -1)
        XTHROW("fcntl: %s", strerror(errno));
}

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
    return oflags;
}

fd_t open_can_fail(const char* path, int flags) {
    const int oflags = system_open_flags(flags);
    const fd_t fd = oflags == O_RDONLY ? ::open(path, oflags) : ::open(path, oflags, creation_mode);
    if (fd == -1)
        return -1;
    FileDescriptor owner(fd);
    close_on_exec(owner.fd);
    owner.fd = -1;
    return fd;
}

fd_t open(const char* path, int flags) {
    const fd_t fd = open_can_fail(path, flags);
    if (fd == -1)
        XTHROW("opening file \"%s\": %s", path, strerror(errno));
    return fd;
}

void close(fd_t fd) {
    if (::close(fd) == -1)
        XTHROW("close: %s", strerror(errno));
}

sword write(int fd, const char* buf, uword n) {
    uword written = 0;
    do {
        const ssize_t count = ::write(fd, buf + written, n - written);
        if (count >= 0)
            written += uword(count);
        else if (errno != EAGAIN && errno != EINTR)
            XTHROW("write: %s", strerror(errno));
    } while (written < n);
    return sword(written);
}

u64 getsize(fd_t fd) {
    struct stat status;
    if (fstat(fd, &status) == -1)
        XTHROW("fstat: %s", strerror(errno));
    return u64(status.st_size);
}

void sync(fd_t fd) {
    if (fsync(fd) == -1)
        XTHROW("fsync: %s", strerror(errno));
}

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
    // A failed close has released the descriptor all the same: trying again could hit another's.
    const fd_t closing = fd;
    fd = -1;
    OSAPI::close(closing);
}

} // namespace OSAPI
