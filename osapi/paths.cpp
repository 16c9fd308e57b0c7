// SPDX-License-Identifier: BSD-3-Clause
#include "core/unwinding.h"
#include "osapi/failure.h"
#include "osapi/osapi.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

namespace OSAPI {

// ---- Names -----------------------------------------------------------------------------------

String basename(const char* path) {
    const char* const slash = strrchr(path, '/');
    return slash ? slash + 1 : path;
}

String dirname(const char* path) {
    if (!*path)
        return "";
    const char* const slash = strrchr(path, '/');
    if (!slash)
        return ".";
    return slash == path ? String("/") : String(path, unsigned(slash - path));
}

// Compares without regard to the case of the letters A to Z. strcasecmp would depend on the
// process's locale, in some of which the lower-case form of I is not i.
static bool equal_ignoring_case(const char* a, const char* b) {
    const auto small = [](char ch) { return ch >= 'A' && ch <= 'Z' ? char(ch - 'A' + 'a') : ch; };
    while (*a && small(*a) == small(*b))
        a++, b++;
    return small(*a) == small(*b);
}

static const char temporary_suffix[] = ".inprogress";
static const uword suffix_length = sizeof temporary_suffix - 1;

// Up to this length, ".inprogress" is an extension like any other.
static const uword longest_unstripped = 14;

String extension(const char* path) {
    // After the last dot, unless that starts the suffix of a temporary file.
    const char* const dot = strrchr(path, '.');
    if (!dot)
        return "";
    const uword length = strlen(path);
    if (!equal_ignoring_case(dot, temporary_suffix) || length <= longest_unstripped)
        return dot + 1;

    // Then after the last dot of the name without the suffix.
    const String shortened(path, unsigned(length - suffix_length));
    const char* const inner = strrchr(shortened.str, '.');
    return inner ? inner + 1 : "";
}

// ---- Queries ---------------------------------------------------------------------------------

bool file_exists(const char* path, int flags) {
    int mode = F_OK;
    if (flags & OPEN_READ)
        mode |= R_OK;
    if (flags & OPEN_WRITE)
        mode |= W_OK;
    return access(path, mode) == 0;
}

bool is_directory(const char* path) {
    struct stat status;
    if (stat(path, &status) == -1)
        XTHROW_ERRNO("stat(%s)", path);
    return S_ISDIR(status.st_mode);
}

u64 getsize(const char* path) {
    struct stat status;
    if (stat(path, &status) == -1)
        XTHROW_ERRNO("stat");
    return u64(status.st_size);
}

static FileStamp stamp_of(const struct stat& status) {
    return {status.st_dev,         status.st_ino,          u64(status.st_size),
            status.st_mtim.tv_sec, status.st_mtim.tv_nsec, S_ISREG(status.st_mode)};
}

FileStamp get_stamp(fd_t fd) {
    struct stat status;
    if (fstat(fd, &status) == -1)
        XTHROW_ERRNO("fstat");
    return stamp_of(status);
}

bool get_stamp_can_fail(const char* path, FileStamp& stamp) {
    struct stat status;
    if (stat(path, &status) == -1)
        return false;
    stamp = stamp_of(status);
    return true;
}

FileTime get_mtime_ifexist(const char* path) {
    struct stat status;
    if (stat(path, &status) == 0)
        return status.st_mtime;
    if (errno != ENOENT)
        XTHROW_ERRNO("stat(%s)", path);
    return 0;
}

// A file from the very start of 1970 counts as missing too, whatever errno then says.
FileTime get_mtime(const char* path) {
    const FileTime time = get_mtime_ifexist(path);
    if (time == 0)
        XTHROW_ERRNO("stat(%s)", path);
    return time;
}

// ---- Changes ---------------------------------------------------------------------------------

void mkdir(const char* path) {
    if (::mkdir(path, 0777) == -1)
        XTHROW_ERRNO("mkdir(%s)", path);
}

void make_named_pipe(const char* path) {
    if (mknod(path, S_IFIFO | 0664, 0) == -1)
        XTHROW_ERRNO("mknod(%s)", path);
}

void set_mtime(const char* path, FileTime t) {
    utimbuf times;
    times.actime = t;
    times.modtime = t;
    if (utime(path, &times) == -1)
        XTHROW_ERRNO("utime(%s)", path);
}

void rm(const char* path) {
    if (unlink(path) == -1)
        XTHROW_ERRNO("unlink(%s)", path);
}

void rm_ifexist(const char* path) {
    if (unlink(path) == -1 && errno != ENOENT)
        XTHROW_ERRNO("unlink(%s)", path);
}

void rename(const char* from, const char* to) {
    if (::rename(from, to) == -1)
        XTHROW_ERRNO("rename(%s,%s)", from, to);
}

// During unwinding, a failed removal is ignored.
Remover::~Remover() noexcept(false) {
    const char* const name = velmora::text_of(path);
    if (velmora::unwinding())
        unlink(name);
    else
        rm_ifexist(name);
}

} // namespace OSAPI
