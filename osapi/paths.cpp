#define XSOURCE "osapi-unix"

#include "core/xception.h"
#include "osapi/osapi.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace OSAPI {

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
        XTHROW("stat(%s): %s", path, strerror(errno));
    return S_ISDIR(status.st_mode);
}

void rm_ifexist(const char* path) {
    if (unlink(path) == -1 && errno != ENOENT)
        XTHROW("unlink(%s): %s", path, strerror(errno));
}

void rename(const char* from, const char* to) {
    if (::rename(from, to) == -1)
        XTHROW("rename(%s,%s): %s", from, to, strerror(errno));
}

} // namespace OSAPI
