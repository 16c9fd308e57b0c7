// SPDX-License-Identifier: BSD-3-Clause

// The calls about files, descriptors, folders and mappings.
#include "tests/osapi/wrapped_calls.h"

#include <dirent.h>
#include <fcntl.h>
#include <glob.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <utime.h>

#include <cerrno>

// ---- By path ---------------------------------------------------------------------------------

WRAPPED(int, access, (const char* path, int mode), (path, mode), "%s, %d", path, mode)
WRAPPED_OUT(int, stat, (const char* path, struct stat* status), (path, status), status,
            sizeof *status, "%s", path)
WRAPPED_OUT(int, lstat, (const char* path, struct stat* status), (path, status), status,
            sizeof *status, "%s", path)
WRAPPED(int, mkdir, (const char* path, mode_t mode), (path, mode), "%s, %#o", path, mode)
WRAPPED(int, mknod, (const char* path, mode_t mode, dev_t device), (path, mode, device),
        "%s, %#o, %lu", path, mode, device)
WRAPPED(int, utime, (const char* path, const utimbuf* times), (path, times), "%s, %ld, %ld", path,
        times->actime, times->modtime)
WRAPPED(int, unlink, (const char* path), (path), "%s", path)
WRAPPED(int, rename, (const char* from, const char* to), (from, to), "%s, %s", from, to)
WRAPPED(int, chdir, (const char* path), (path), "%s", path)
WRAPPED_POINTER(char*, getcwd, (char* buffer, size_t size), (buffer, size), "%zu", size)
WRAPPED_POINTER(DIR*, opendir, (const char* path), (path), "%s", path)
WRAPPED_POINTER(dirent*, readdir, (DIR * folder), (folder), "%s", "")
typedef int (*GlobError)(const char*, int);
WRAPPED(int, glob, (const char* pattern, int flags, GlobError error, glob_t* found),
        (pattern, flags, error, found), "%s, %d", pattern, flags)

extern "C" int __real_open(const char* path, int flags, ...);

extern "C" int __wrap_open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if (flags & O_CREAT) {
        va_list args;
        va_start(args, flags);
        mode = va_arg(args, mode_t);
        va_end(args);
    }
    long result = 0;
    if (active_system_calls &&
        active_system_calls->answers("open", arguments_text("%#o, %#o", unsigned(flags), mode),
                                     result))
        return int(result);
    return __real_open(path, flags, mode);
}

// ---- By descriptor ---------------------------------------------------------------------------

WRAPPED_MOVE(read, (int fd, void* bytes, size_t n), (fd, bytes, n), bytes, "%zu", n)
WRAPPED_MOVE(pread, (int fd, void* bytes, size_t n, off_t offset), (fd, bytes, n, offset), bytes,
             "%zu, %ld", n, offset)
WRAPPED_MOVE(write, (int fd, const void* bytes, size_t n), (fd, bytes, n), nullptr, "%zu", n)
WRAPPED_MOVE(pwrite, (int fd, const void* bytes, size_t n, off_t offset), (fd, bytes, n, offset),
             nullptr, "%zu, %ld", n, offset)
WRAPPED(off_t, lseek, (int fd, off_t offset, int whence), (fd, offset, whence), "%ld, %d", offset,
        whence)
WRAPPED_OUT(int, fstat, (int fd, struct stat* status), (fd, status), status, sizeof *status, "%s",
            "")
WRAPPED(int, fchmod, (int fd, mode_t mode), (fd, mode), "%#o", mode)
WRAPPED(int, flock, (int fd, int operation), (fd, operation), "%d", operation)
WRAPPED(int, ftruncate, (int fd, off_t length), (fd, length), "%ld", length)
WRAPPED(int, fsync, (int fd), (fd), "%s", "")
WRAPPED(int, fdatasync, (int fd), (fd), "%s", "")
WRAPPED(int, dup, (int fd), (fd), "%s", "")
WRAPPED(int, dup2, (int from, int to), (from, to), "%d, %d", from, to)
WRAPPED(int, pipe, (int* ends), (ends), "%s", "")
WRAPPED(int, poll, (pollfd * fds, nfds_t n, int timeout), (fds, n, timeout), "%lu, %d", n, timeout)

extern "C" void __real_sync();

extern "C" void __wrap_sync() {
    long result = 0;
    if (!active_system_calls || !active_system_calls->answers("sync", "", result))
        __real_sync();
}

extern "C" int __real_ioctl(int fd, unsigned long request, ...);

extern "C" int __wrap_ioctl(int fd, unsigned long request, ...) {
    va_list args;
    va_start(args, request);
    void* const argument = va_arg(args, void*);
    va_end(args);
    long result = 0;
    if (active_system_calls &&
        active_system_calls->answers("ioctl", arguments_text("%#lx", request), result))
        return int(result);
    return __real_ioctl(fd, request, argument);
}

extern "C" int __real_fcntl(int fd, int command, ...);

extern "C" int __wrap_fcntl(int fd, int command, ...) {
    va_list args;
    va_start(args, command);
    const long argument = va_arg(args, long);
    va_end(args);
    const bool takes_none = command == F_GETFD || command == F_GETFL;
    long result = 0;
    if (active_system_calls &&
        active_system_calls->answers("fcntl",
                                     takes_none ? arguments_text("%d", command)
                                                : arguments_text("%d, %d", command, int(argument)),
                                     result))
        return int(result);
    return __real_fcntl(fd, command, argument);
}

// As the system does, a close that reports a failure has closed the descriptor all the same.
template <class Handle>
static int failed_close(int (*close)(Handle), Handle handle, long result) {
    const int error = errno;
    close(handle);
    errno = error;
    return int(result);
}

extern "C" int __real_close(int fd);
extern "C" int __real_closedir(DIR* folder);

extern "C" int __wrap_close(int fd) {
    long result = 0;
    if (active_system_calls && active_system_calls->answers("close", "", result))
        return failed_close(__real_close, fd, result);
    return __real_close(fd);
}

extern "C" int __wrap_closedir(DIR* folder) {
    long result = 0;
    if (active_system_calls && active_system_calls->answers("closedir", "", result))
        return failed_close(__real_closedir, folder, result);
    return __real_closedir(folder);
}

// ---- Memory ----------------------------------------------------------------------------------

WRAPPED(int, mlock, (const void* address, size_t bytes), (address, bytes), "%p, %zu", address,
        bytes)
WRAPPED(int, munlock, (const void* address, size_t bytes), (address, bytes), "%p, %zu", address,
        bytes)

WRAPPED(ssize_t, process_vm_readv,
        (pid_t pid, const iovec* to, unsigned long targets, const iovec* from,
         unsigned long sources, unsigned long flags),
        (pid, to, targets, from, sources, flags), "%zu", from->iov_len)

extern "C" void* __real_mmap(void*, size_t, int, int, int, off_t);
extern "C" int __real_munmap(void*, size_t);

extern "C" void* __wrap_mmap(void* address, size_t bytes, int protection, int flags, int fd,
                             off_t offset) {
    long result = 0;
    if (active_system_calls &&
        active_system_calls->answers("mmap",
                                     arguments_text("%zu, %d, %#x, %d, %ld", bytes, protection,
                                                    unsigned(flags), fd < 0 ? fd : 0, long(offset)),
                                     result))
        return MAP_FAILED;
    void* const data = __real_mmap(address, bytes, protection, flags, fd, offset);
    if (active_system_calls && data != MAP_FAILED)
        active_system_calls->mappings++;
    return data;
}

extern "C" int __wrap_munmap(void* address, size_t bytes) {
    long result = 0;
    if (active_system_calls &&
        active_system_calls->answers("munmap", arguments_text("%zu", bytes), result))
        return int(result);
    const int done = __real_munmap(address, bytes);
    if (active_system_calls && done == 0)
        active_system_calls->mappings--;
    return done;
}
