#define XSOURCE "osapi-unix"

#include "osapi/temporary_file.h"

#include "core/xception.h"
#include "osapi/failure.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace velmora {

// Rounds of creating the file and finding another's. Each that fails means that somebody else got
// on meanwhile.
static const int most_tries = 100;

static const char* const in_use = "is being written by another process";

// ---- What is there ---------------------------------------------------------------------------

static bool is_same_file(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Whether `name` is, itself, that file. A name that cannot be looked up is not.
static bool is_name_of(const std::string& name, const struct stat& file) {
    struct stat status;
    return lstat(name.c_str(), &status) == 0 && is_same_file(status, file);
}

// Why a file of that name is nothing that one of our writers left; null if it may be.
static const char* foreign_kind(const struct stat& status) {
    if (!S_ISREG(status.st_mode))
        return "is in the way, and is not a regular file";
    if (status.st_uid != geteuid())
        return "is in the way, and belongs to another user";
    return status.st_nlink > 1 ? "is in the way, and is a file with another name too" : nullptr;
}

std::string temporary_name_of(const std::string& path) {
    return path + ".inprogress";
}

std::string obstacle_to_temporary_of(const std::string& path) {
    struct stat status;
    if (lstat(temporary_name_of(path).c_str(), &status) == -1)
        return errno == ENOENT || errno == ENOTDIR ? "" : OSAPI::error_text(errno);
    const char* const kind = foreign_kind(status);
    return kind ? kind : "";
}

[[noreturn]] static void refuse(const std::string& name, const char* reason) {
    XTHROW("opening file \"%s\": %s", name.c_str(), reason);
}

// ---- Locks -----------------------------------------------------------------------------------

enum class Lock { ours, anothers, unsupported };

static Lock lock(OSAPI::fd_t fd) {
    while (flock(fd, LOCK_EX | LOCK_NB) == -1) {
        if (errno == EWOULDBLOCK)
            return Lock::anothers;
        if (errno == ENOLCK || errno == ENOSYS || errno == EOPNOTSUPP)
            return Lock::unsupported;
        if (errno != EINTR)
            XTHROW_ERRNO("flock");
    }
    return Lock::ours;
}

// ---- Coming to be ----------------------------------------------------------------------------

TemporaryFile::TemporaryFile(const std::string& path)
    : path(path), name(temporary_name_of(path)), identity() {}

// The members are made before: what throws here runs the destructor.
TemporaryFile::TemporaryFile(const std::string& path, mode_t mode) : TemporaryFile(path) {
    int tries = 0;
    while (!create(mode)) {
        if (++tries == most_tries)
            refuse(name, in_use);
        remove_leftover();
    }
    writing = fcntl(locked, F_DUPFD_CLOEXEC, 0);
    if (writing == -1)
        XTHROW_ERRNO("fcntl");
}

// False when there is a file of that name, or there was until a moment ago.
bool TemporaryFile::create(mode_t mode) {
    locked = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
    if (locked == -1) {
        if (errno == EEXIST)
            return false;
        refuse(name, OSAPI::error_text(errno));
    }
    if (fstat(locked, &identity) == -1) {
        const int error = errno;
        unlink(name.c_str());
        errno = error;
        XTHROW_ERRNO("fstat");
    }
    held = true;
    // Another may have taken the new file for one that was left, before it was locked.
    if (lock(locked) == Lock::anothers) {
        held = false;
        refuse(name, in_use);
    }
    if (is_name_of(name, identity))
        return true;
    held = false;
    release();
    return false;
}

void TemporaryFile::release() {
    if (locked != -1)
        ::close(locked);
    locked = -1;
}

namespace {

// A descriptor that is only looked at and locked: closing it has nothing to report.
struct Looking {
    const OSAPI::fd_t fd;

    explicit Looking(OSAPI::fd_t fd) : fd(fd) {}
    Looking(const Looking&) = delete;
    Looking& operator=(const Looking&) = delete;
    ~Looking() {
        if (fd != -1)
            ::close(fd);
    }
};

} // namespace

// For writing, as locks on NFS need it, unless the file's own mode forbids that.
static OSAPI::fd_t open_found(const std::string& name) {
    const int flags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const OSAPI::fd_t fd = open(name.c_str(), O_WRONLY | flags);
    return fd == -1 && errno == EACCES ? open(name.c_str(), O_RDONLY | flags) : fd;
}

// Removes the file of that name if it was left by a writer that is no more; returns without having
// done anything if it has gone or changed meanwhile.
void TemporaryFile::remove_leftover() const {
    const std::string obstacle = obstacle_to_temporary_of(path);
    if (!obstacle.empty())
        refuse(name, obstacle.c_str());
    const Looking found(open_found(name));
    if (found.fd == -1) {
        if (errno == ENOENT || errno == ELOOP || errno == ENXIO)
            return;
        refuse(name, OSAPI::error_text(errno));
    }
    switch (lock(found.fd)) {
    case Lock::anothers:
        refuse(name, in_use);
    case Lock::unsupported:
        refuse(name, "may be in use, as this file system has no locks");
    case Lock::ours:
        break;
    }
    struct stat status;
    if (fstat(found.fd, &status) == -1)
        XTHROW_ERRNO("fstat");
    if (is_name_of(name, status) && !foreign_kind(status))
        OSAPI::rm_ifexist(name.c_str());
}

// ---- The end ---------------------------------------------------------------------------------

void TemporaryFile::close() {
    const OSAPI::fd_t closing = writing;
    writing = -1; // a failed close has released it all the same
    OSAPI::close(closing);
}

void TemporaryFile::rename() {
    if (!is_name_of(name, identity)) {
        held = false;
        XTHROW("rename(%s,%s): the temporary file was replaced by another process", name.c_str(),
               path.c_str());
    }
    OSAPI::rename(name.c_str(), path.c_str());
    held = false;
    check_final_name();
}

// Somebody may have planted a file between the check and the renaming. That another writer's whole
// file has the name by now, or that ours was moved on, is no failure.
void TemporaryFile::check_final_name() const {
    struct stat status;
    if (lstat(path.c_str(), &status) == 0 && !is_same_file(status, identity) &&
        (!S_ISREG(status.st_mode) || status.st_uid != identity.st_uid))
        XTHROW("rename(%s,%s): the file was replaced by another user", name.c_str(), path.c_str());
}

TemporaryFile::~TemporaryFile() {
    if (held && is_name_of(name, identity))
        unlink(name.c_str());
    if (writing != -1)
        ::close(writing);
    release();
}

} // namespace velmora
