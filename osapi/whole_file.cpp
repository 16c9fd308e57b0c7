// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/whole_file.h"

#include "osapi/failure.h"
#include "osapi/temporary_file.h"

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

namespace velmora {

static const mode_t new_mode = 0664;
static const mode_t permissions = 0777; // without the bits that change who runs a program

// The permissions of the regular file at `path`, which the new one is to have; none without one.
static std::optional<mode_t> mode_to_keep(const char* path) {
    struct stat status;
    if (lstat(path, &status) == 0)
        return S_ISREG(status.st_mode) ? std::make_optional(status.st_mode & permissions)
                                       : std::nullopt;
    if (errno != ENOENT && errno != ENOTDIR)
        XTHROW_ERRNO("lstat(%s)", path);
    return std::nullopt;
}

namespace {

// The folder of a file, opened in advance, to wait until a new name in it is on the storage device.
class Folder {
public:
    // Without permission to read the folder, which writing to it does not need, nothing is opened.
    explicit Folder(const std::string& path) {
        const std::size_t slash = path.rfind('/');
        const std::string name = slash == std::string::npos ? "." : path.substr(0, slash + 1);
        fd = open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd == -1 && errno != EACCES)
            XTHROW_ERRNO("opening folder \"%s\"", name.c_str());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
        if (fd != -1)
            ::close(fd);
    }

    // EINVAL is a file system that cannot do this for a folder.
    void sync() const {
        if (fd != -1 && fsync(fd) == -1 && errno != EINVAL)
            XTHROW_ERRNO("fsync");
    }

private:
    OSAPI::fd_t fd;
};

} // namespace

void write_whole_file(const char* path, const std::function<void(OSAPI::fd_t)>& write_bytes) {
    // Create the file. Until it is complete, nobody else may do more with it than with the old one.
    const std::optional<mode_t> kept = mode_to_keep(path);
    TemporaryFile file(path, kept ? S_IRUSR | S_IWUSR : new_mode);
    const Folder folder(path);

    // Fill it; bytes and permissions reach the storage before the name does.
    write_bytes(file.fd());
    if (kept && fchmod(file.fd(), *kept) == -1)
        XTHROW_ERRNO("fchmod");
    OSAPI::sync(file.fd());
    file.close();

    // Give it the name, and wait until that is stored too.
    file.rename();
    folder.sync();
}

} // namespace velmora
