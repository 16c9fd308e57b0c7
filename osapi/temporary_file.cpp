// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "osapi-unix"

#include "osapi/temporary_file.h"

#include "core/xception.h"
#include "osapi/failure.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace velmora {

// Attempts to create the file. Each that fails means that another writer has made progress.
static const int most_tries = 100;

static const char* const in_use = "is being written by another process";

// ---- Files of that name ----------------------------------------------------------------------

static bool is_same_file(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Whether `name`, not followed if it is a link, is that file; false if it cannot be looked up.
static bool is_name_of(const std::string& name, const struct stat& file) {
    struct stat status;
    return lstat(name.c_str(), &status) == 0 && is_same_file(status, file);
}

// Why a file cannot have been left by one of our writers; null if it can.
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

// ---- Creating --------------------------------------------------------------------------------

TemporaryFile::TemporaryFile(const std::string& path)
    : path(path), name(temporary_name_of(path)), identity() {}

// As the delegated constructor has finished, the destructor runs if this one throws.
TemporaryFile::TemporaryFile(const std::string& path, mode_t mode) : TemporaryFile(path) {
    // Create the file, removing one that a killed writer left, until one attempt succeeds.
    int tries = 0;
    while (!create(mode)) {
        if (++tries == most_tries)
            refuse(name, in_use);
        remove_leftover();
    }

    // A second descriptor for the bytes, so that closing it keeps the lock.
    writing = fcntl(locked, F_DUPFD_CLOEXEC, 0);
    if (writing == -1)
        XTHROW_ERRNO("fcntl");
}

// False when there is a file of that name, or there was one a moment ago.
bool TemporaryFile::create(mode_t mode) {
    locked = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
    if (locked == -1) {
        if (errno == EEXIST)
            return false;
        refuse(name, OSAPI::error_text(errno));
    }

    // Remember which file it is: only under its identity is the name ever removed or renamed.
    if (fstat(locked, &identity) == -1) {
        const int error = errno;
        unlink(name.c_str());
        errno = error;
        XTHROW_ERRNO("fstat");
    }
    held = true;

    // Lock it. Another writer may have taken it for a file that was left, before it was locked.
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

// A descriptor that is only examined and locked: closing it has nothing to report.
struct Examined {
    const OSAPI::fd_t fd;

    explicit Examined(OSAPI::fd_t fd) : fd(fd) {}
    Examined(const Examined&) = delete;
    Examined& operator=(const Examined&) = delete;
    ~Examined() {
        if (fd != -1)
            ::close(fd);
    }
};

} // namespace

// For writing, as locks on NFS require it, unless the file's mode forbids that.
static OSAPI::fd_t open_found(const std::string& name) {
    const int flags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const OSAPI::fd_t fd = open(name.c_str(), O_WRONLY | flags);
    return fd == -1 && errno == EACCES ? open(name.c_str(), O_RDONLY | flags) : fd;
}

// Removes the file of that name if a writer that no longer runs left it; returns without doing
// anything if it has disappeared or changed meanwhile.
void TemporaryFile::remove_leftover() const {
    const std::string obstacle = obstacle_to_temporary_of(path);
    if (!obstacle.empty())
        refuse(name, obstacle.c_str());

    // Open it without following or waiting for anything.
    const Examined found(open_found(name));
    if (found.fd == -1) {
        if (errno == ENOENT || errno == ELOOP || errno == ENXIO)
            return;
        refuse(name, OSAPI::error_text(errno));
    }

    // Who gets the lock knows that no writer runs.
    switch (lock(found.fd)) {
    case Lock::anothers:
        refuse(name, in_use);
    case Lock::unsupported:
        refuse(name, "may be in use, as this file system has no locks");
    case Lock::ours:
        break;
    }

    // Remove it if, now that it is locked, the name still leads to this file.
    struct stat status;
    if (fstat(found.fd, &status) == -1)
        XTHROW_ERRNO("fstat");
    if (is_name_of(name, status) && !foreign_kind(status))
        OSAPI::rm_ifexist(name.c_str());
}

// ---- Finishing -------------------------------------------------------------------------------

void TemporaryFile::close() {
    const OSAPI::fd_t closing = writing;
    writing = -1; // a failed close has released it too
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

// Another user may have planted a file between the check and the renaming. It is not a failure that
// another writer's complete file has the name by now, or that ours was renamed again.
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
