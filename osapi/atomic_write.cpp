// SPDX-License-Identifier: BSD-3-Clause
#include "core/unwinding.h"
#include "osapi/osapi.h"

#include <unistd.h>

namespace OSAPI {

static String temporary_name(const char* path) {
    return String::fmt("%s.inprogress", path);
}

AtomicFileWrite::AtomicFileWrite(const char* path, int flags)
    : path(path), temp_path(temporary_name(path)), fd(open(temp_path.str, flags)), done(false) {}

AtomicFileWrite::AtomicFileWrite(const char* path, const String& temp_path, fd_t fd)
    : path(path), temp_path(temp_path), fd(fd), done(false) {}

// During unwinding, a failure to remove the temporary file is ignored.
AtomicFileWrite::~AtomicFileWrite() noexcept(false) {
    if (done)
        return;
    if (velmora::unwinding())
        unlink(temp_path.str);
    else
        abort();
}

AtomicFileWrite* AtomicFileWrite::exclusive(const char* path) {
    const String temp_path = temporary_name(path);
    const fd_t fd = open_can_fail(temp_path.str, OPEN_WRITE | OPEN_EXCL);
    if (fd == -1)
        return nullptr;
    try {
        return new AtomicFileWrite(path, temp_path, fd);
    } catch (...) {
        // A temporary file without a writer would keep every other exclusive writer out.
        unlink(temp_path.str);
        ::close(fd);
        throw;
    }
}

// The bytes reach the storage before the name does: after a crash the name never leads to less.
void AtomicFileWrite::complete() {
    sync(fd);
    complete_nosync();
}

void AtomicFileWrite::complete_nosync() {
    rename(temp_path.str, velmora::text_of(path));
    done = true;
}

void AtomicFileWrite::abort() {
    rm_ifexist(temp_path.str);
    done = true;
}

} // namespace OSAPI
